#include "sefcommon.h"

#include <QDate>
#include <QDateTime>
#include <QLocale>
#include <QTime>

namespace SefCommon {

namespace {

bool isAsciiDigit(QChar c)
{
    return c.unicode() >= '0' && c.unicode() <= '9';
}

// Scans [begin, end) for the number grammar of isNumeric; text is already trimmed.
bool scanNumber(const QChar *p, const QChar *end)
{
    if (p != end && (*p == QLatin1Char('+') || *p == QLatin1Char('-')))
        ++p;
    int digits = 0;
    while (p != end && isAsciiDigit(*p)) {
        ++p;
        ++digits;
    }
    if (p != end && *p == QLatin1Char('.')) {
        ++p;
        while (p != end && isAsciiDigit(*p)) {
            ++p;
            ++digits;
        }
    }
    if (digits == 0)
        return false;
    if (p != end && (*p == QLatin1Char('e') || *p == QLatin1Char('E'))) {
        ++p;
        if (p != end && (*p == QLatin1Char('+') || *p == QLatin1Char('-')))
            ++p;
        int expDigits = 0;
        while (p != end && isAsciiDigit(*p)) {
            ++p;
            ++expDigits;
        }
        if (expDigits == 0)
            return false;
    }
    return p == end;
}

bool isSpace(QChar c)
{
    return c.isSpace();
}

// The trimmed range of text without copying it.
void trimmedRange(const QString &text, const QChar *&begin, const QChar *&end)
{
    begin = text.constData();
    end = begin + text.size();
    while (begin != end && isSpace(*begin))
        ++begin;
    while (end != begin && isSpace(*(end - 1)))
        --end;
}

} // namespace

bool isNumeric(const QString &text)
{
    const QChar *begin;
    const QChar *end;
    trimmedRange(text, begin, end);
    return begin != end && scanNumber(begin, end);
}

double strToFloatDef(const QString &text, double def)
{
    if (!isNumeric(text))
        return def;
    bool ok = false;
    const double value = QLocale::c().toDouble(text.trimmed(), &ok);
    if (ok)
        return value;
    // QLocale rejects a few forms the grammar allows ("5.", "1e+3" with a lone point).
    const QByteArray latin = text.trimmed().toLatin1();
    return std::strtod(latin.constData(), nullptr);
}

bool strToBoolDef(const QString &text, bool def)
{
    const QString t = text.trimmed().toLower();
    if (t == QLatin1String("true") || t == QLatin1String("yes") || t == QLatin1String("y")
        || t == QLatin1String("1") || t == QStringLiteral("是") || t == QStringLiteral("真"))
        return true;
    if (t == QLatin1String("false") || t == QLatin1String("no") || t == QLatin1String("n")
        || t == QLatin1String("0") || t == QStringLiteral("否") || t == QStringLiteral("假"))
        return false;
    if (isNumeric(t))
        return strToFloatDef(t, 0.0) != 0.0;
    return def;
}

bool strToBool(const QString &text)
{
    return strToBoolDef(text, false);
}

QString variantToString(const QVariant &value)
{
    if (!value.isValid() || value.isNull())
        return QString();
    switch (static_cast<QMetaType::Type>(value.userType())) {
    case QMetaType::Bool:
        return value.toBool() ? QStringLiteral("true") : QStringLiteral("false");
    case QMetaType::Int:
    case QMetaType::Short:
    case QMetaType::Long:
    case QMetaType::SChar:
        return QString::number(value.toInt());
    case QMetaType::UInt:
    case QMetaType::UShort:
    case QMetaType::ULong:
    case QMetaType::UChar:
        return QString::number(value.toUInt());
    case QMetaType::LongLong:
        return QString::number(value.toLongLong());
    case QMetaType::ULongLong:
        return QString::number(value.toULongLong());
    case QMetaType::Double:
        return QString::number(value.toDouble(), 'g', QLocale::FloatingPointShortest);
    case QMetaType::Float:
        return QString::number(value.toFloat(), 'g', QLocale::FloatingPointShortest);
    case QMetaType::QDateTime:
        return value.toDateTime().toString(Qt::ISODateWithMs);
    case QMetaType::QDate:
        return value.toDate().toString(Qt::ISODate);
    case QMetaType::QTime:
        return value.toTime().toString(Qt::ISODateWithMs);
    case QMetaType::QString:
        return value.toString();
    default:
        return value.toString();
    }
}

int pos(const QString &sub, const QString &text)
{
    if (sub.isEmpty())
        return 0;
    return text.indexOf(sub) + 1;
}

QString trim(const QString &text)
{
    return text.trimmed();
}

} // namespace SefCommon

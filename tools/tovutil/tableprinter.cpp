#include "tableprinter.h"

#include <rixmemfield.h>
#include <rixmemfields.h>
#include <rixmemrecord.h>
#include <rixmemtable.h>
#include <sefcommon.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTextStream>

#include <vector>

namespace TovTablePrinter {

namespace {

bool isWide(uint cp)
{
    return (cp >= 0x1100 && cp <= 0x115F) || (cp >= 0x2E80 && cp <= 0x303E) || (cp >= 0x3041 && cp <= 0x33FF)
        || (cp >= 0x3400 && cp <= 0x4DBF) || (cp >= 0x4E00 && cp <= 0x9FFF) || (cp >= 0xA000 && cp <= 0xA4CF)
        || (cp >= 0xAC00 && cp <= 0xD7A3) || (cp >= 0xF900 && cp <= 0xFAFF) || (cp >= 0xFE30 && cp <= 0xFE4F)
        || (cp >= 0xFF00 && cp <= 0xFF60) || (cp >= 0xFFE0 && cp <= 0xFFE6)
        || (cp >= 0x1F300 && cp <= 0x1F64F) || (cp >= 0x1F900 && cp <= 0x1F9FF)
        || (cp >= 0x20000 && cp <= 0x3FFFD);
}

bool isNumber(const QVariant &value)
{
    switch (value.userType()) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
    case QMetaType::Float:
        return true;
    default:
        return false;
    }
}

// One line per cell: control characters would break the alignment.
QString printable(QString text)
{
    for (QChar &c : text) {
        if (c.category() == QChar::Other_Control)
            c = QLatin1Char(' ');
    }
    return text;
}

QString pad(const QString &text, int width, bool right)
{
    const QString fill(qMax(0, width - displayWidth(text)), QLatin1Char(' '));
    return right ? fill + text : text + fill;
}

QString csvCell(const QString &text)
{
    if (!text.contains(QLatin1Char(',')) && !text.contains(QLatin1Char('"'))
        && !text.contains(QLatin1Char('\n')) && !text.contains(QLatin1Char('\r')))
        return text;
    QString quoted = text;
    quoted.replace(QLatin1Char('"'), QLatin1String("\"\""));
    return QLatin1Char('"') + quoted + QLatin1Char('"');
}

void printText(QTextStream &out, const RixMemTable &table, const Options &options)
{
    const RixMemFields *fields = table.fields();
    const int columnCount = fields->count() + (options.showIds ? 1 : 0);
    const int offset = options.showIds ? 1 : 0;
    std::vector<QStringList> rows;
    std::vector<std::vector<bool>> rightAligned;
    QStringList header;
    if (options.showIds)
        header << QStringLiteral("#");
    for (int f = 0; f < fields->count(); ++f) {
        const RixMemField *field = fields->items(f);
        header << (options.displayNames && !field->displayName().isEmpty() ? field->displayName()
                                                                           : field->fieldName());
    }
    for (int r = 0; r < table.recordCount(); ++r) {
        const RixMemRecord *record = table.items(r);
        const QVector<QVariant> stored = record->getValues();
        QStringList cells;
        std::vector<bool> right(size_t(columnCount), false);
        if (options.showIds) {
            cells << QString::number(record->iD());
            right[0] = true;
        }
        for (int f = 0; f < fields->count(); ++f) {
            const QVariant value = record->getVariant(f);
            QString text = printable(SefCommon::variantToString(value));
            if (options.markStored && record->refRecord() && f < stored.size() && !stored.at(f).isNull())
                text += QLatin1Char('*');
            cells << text;
            right[size_t(f + offset)] = isNumber(value);
        }
        rows.push_back(cells);
        rightAligned.push_back(right);
    }
    std::vector<int> widths(size_t(columnCount), 0);
    for (int c = 0; c < columnCount; ++c)
        widths[size_t(c)] = displayWidth(header.at(c));
    for (const QStringList &row : rows) {
        for (int c = 0; c < columnCount; ++c)
            widths[size_t(c)] = qMax(widths[size_t(c)], displayWidth(row.at(c)));
    }
    auto printLine = [&](const QStringList &cells, const std::vector<bool> *right) {
        QString line;
        for (int c = 0; c < columnCount; ++c) {
            if (c > 0)
                line += QLatin1String("  ");
            line += pad(cells.at(c), widths[size_t(c)], right && (*right)[size_t(c)]);
        }
        // No trailing blanks from the padding of the last column.
        while (line.endsWith(QLatin1Char(' ')))
            line.chop(1);
        out << line << '\n';
    };
    printLine(header, nullptr);
    QStringList rules;
    for (int c = 0; c < columnCount; ++c)
        rules << QString(widths[size_t(c)], QLatin1Char('-'));
    printLine(rules, nullptr);
    for (size_t r = 0; r < rows.size(); ++r)
        printLine(rows[r], &rightAligned[r]);
}

void printCsv(QTextStream &out, const RixMemTable &table)
{
    RixMemFields *fields = table.fields();
    QStringList header;
    for (const QString &name : fields->fieldNames())
        header << csvCell(name);
    out << header.join(QLatin1Char(',')) << '\n';
    for (int r = 0; r < table.recordCount(); ++r) {
        QStringList cells;
        for (int f = 0; f < fields->count(); ++f)
            cells << csvCell(SefCommon::variantToString(table.items(r)->getVariant(f)));
        out << cells.join(QLatin1Char(',')) << '\n';
    }
}

void printJson(QTextStream &out, const RixMemTable &table)
{
    const RixMemFields *fields = table.fields();
    QJsonArray array;
    for (int r = 0; r < table.recordCount(); ++r) {
        QJsonObject object;
        for (int f = 0; f < fields->count(); ++f) {
            const QVariant value = table.items(r)->getVariant(f);
            object.insert(fields->items(f)->fieldName(),
                value.isNull() ? QJsonValue(QJsonValue::Null) : QJsonValue::fromVariant(value));
        }
        array.append(object);
    }
    out << QString::fromUtf8(QJsonDocument(array).toJson(QJsonDocument::Indented));
}

} // namespace

bool parseFormat(const QString &text, Format &format)
{
    const QString lower = text.toLower();
    if (lower == QLatin1String("text"))
        format = Format::Text;
    else if (lower == QLatin1String("csv"))
        format = Format::Csv;
    else if (lower == QLatin1String("json"))
        format = Format::Json;
    else
        return false;
    return true;
}

int displayWidth(const QString &text)
{
    int width = 0;
    const QVector<uint> codePoints = text.toUcs4();
    for (uint cp : codePoints) {
        const QChar::Category category = QChar::category(cp);
        if (category == QChar::Mark_NonSpacing || category == QChar::Mark_Enclosing
            || category == QChar::Other_Format)
            continue;
        width += isWide(cp) ? 2 : 1;
    }
    return width;
}

void print(QTextStream &out, const RixMemTable &table, Format format, const Options &options)
{
    switch (format) {
    case Format::Text:
        printText(out, table, options);
        break;
    case Format::Csv:
        printCsv(out, table);
        break;
    case Format::Json:
        printJson(out, table);
        break;
    }
    out.flush();
}

} // namespace TovTablePrinter

#include "rukdata.h"

#include "rukparser_p.h"

#include <sefcommon.h>

#include <QCoreApplication>

#include <cmath>

RukData RukData::fromFloat(double value)
{
    RukData data;
    data.setFloat(value);
    return data;
}

RukData RukData::fromInteger(qint64 value)
{
    RukData data;
    data.setInteger(value);
    return data;
}

RukData RukData::fromString(const QString &value)
{
    RukData data;
    data.setString(value);
    return data;
}

RukData RukData::fromBoolean(bool value)
{
    RukData data;
    data.setBoolean(value);
    return data;
}

RukData RukData::fromVariant(const QVariant &value)
{
    RukData data;
    data.setVariant(value);
    return data;
}

void RukData::setVariant(const QVariant &value)
{
    if (!value.isValid() || value.isNull()) {
        clear();
        return;
    }
    switch (static_cast<QMetaType::Type>(value.userType())) {
    case QMetaType::Int:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::SChar:
    case QMetaType::UChar:
        setInteger(value.toInt());
        break;
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::ULong:
        setInteger(value.toLongLong());
        break;
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
        setInt64(value.toLongLong());
        break;
    case QMetaType::Double:
    case QMetaType::Float:
        setFloat(value.toDouble());
        break;
    case QMetaType::Bool:
        setBoolean(value.toBool());
        break;
    default:
        setString(SefCommon::variantToString(value));
        break;
    }
}

double RukData::asFloatSlow() const
{
    switch (m_type) {
    case Integer:
    case Int64:
        return double(m_v.i);
    case Boolean:
        return m_v.b ? 1.0 : 0.0;
    case String: {
        RukNumber num;
        return RukOps::readNumber(m_s, num) ? num.value() : 0.0;
    }
    default:
        return 0.0;
    }
}

qint64 RukData::asInteger() const
{
    double f = 0.0;
    switch (m_type) {
    case Integer:
    case Int64:
        return m_v.i;
    case Boolean:
        return m_v.b ? 1 : 0;
    case Float:
        f = m_v.f;
        break;
    case String: {
        RukNumber num;
        if (!RukOps::readNumber(m_s, num))
            return 0;
        if (num.isInt)
            return num.i;
        f = num.f;
        break;
    }
    default:
        return 0;
    }
    if (std::isnan(f))
        return 0;
    if (f >= 9.2233720368547758e18)
        return std::numeric_limits<qint64>::max();
    if (f <= -9.2233720368547758e18)
        return std::numeric_limits<qint64>::min();
    return std::llround(f);
}

QString RukData::asString() const
{
    switch (m_type) {
    case Integer:
    case Int64:
        return QString::number(m_v.i);
    case Float:
        return RukOps::floatText(m_v.f);
    case Boolean:
        return m_v.b ? QStringLiteral("true") : QStringLiteral("false");
    case String:
        return m_s;
    default:
        return QString();
    }
}

bool RukData::asBoolean() const
{
    switch (m_type) {
    case Integer:
    case Int64:
        return m_v.i != 0;
    case Float:
        return m_v.f != 0.0;
    case Boolean:
        return m_v.b;
    case String:
        return SefCommon::strToBool(m_s);
    default:
        return false;
    }
}

QVariant RukData::asVariant() const
{
    switch (m_type) {
    case Integer:
        return QVariant(int(m_v.i));
    case Int64:
        return QVariant(qlonglong(m_v.i));
    case Float:
        return QVariant(m_v.f);
    case Boolean:
        return QVariant(m_v.b);
    case String:
        return QVariant(m_s);
    default:
        return QVariant();
    }
}

QString RukData::typeName(int dataType)
{
    switch (dataType) {
    case Integer:
        return QCoreApplication::translate("RukEngine", "整数");
    case Float:
        return QCoreApplication::translate("RukEngine", "浮点数");
    case String:
        return QCoreApplication::translate("RukEngine", "字符串");
    case Boolean:
        return QCoreApplication::translate("RukEngine", "布尔值");
    case Int64:
        return QCoreApplication::translate("RukEngine", "长整数");
    default:
        return QCoreApplication::translate("RukEngine", "未知类型");
    }
}

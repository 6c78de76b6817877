#include "tovmemproperty.h"

#include "tovmemproperties.h"
#include "tovmempropertyexprcalcargs.h"

#include <sefcommon.h>
#include <sefexception.h>

#include <QJsonObject>

namespace {

const QLatin1Char itemSeparator(';');
const QLatin1Char cacheSeparator('|');
const QLatin1Char componentSeparator(',');

hln::CVector2d toVector2d(const QString &text)
{
    const QStringList parts = text.split(componentSeparator, Qt::KeepEmptyParts, Qt::CaseSensitive);
    if (parts.size() != 2)
        return hln::CVector2d();
    return hln::CVector2d(SefCommon::strToFloatDef(parts[0], 0.0), SefCommon::strToFloatDef(parts[1], 0.0));
}

} // namespace

TovMemProperty::TovMemProperty() = default;

TovMemProperty::~TovMemProperty() = default;

void TovMemProperty::setPropName(const std::wstring &name)
{
    m_propName = name;
}

void TovMemProperty::setAliasName(const std::wstring &name)
{
    m_aliasName = name;
}

void TovMemProperty::setIsExpr(bool isExpr)
{
    if (isExpr == m_isExpr)
        return;
    m_isExpr = isExpr;
    resetState();
}

void TovMemProperty::setState(TovMemPropertyExprState state)
{
    m_state = state;
}

void TovMemProperty::setValue(const QString &text)
{
    if (text == m_value)
        return;
    m_value = text;
    resetState();
}

void TovMemProperty::resetState()
{
    m_state = TovMemPropertyExprState::NotCalculated;
    m_errMsg.clear();
    m_cacheValue.clear();
}

void TovMemProperty::assign(const TovMemProperty &other)
{
    if (&other == this)
        return;
    m_propName = other.m_propName;
    m_aliasName = other.m_aliasName;
    m_value = other.m_value;
    m_cacheValue = other.m_cacheValue;
    m_isExpr = other.m_isExpr;
    m_errMsg = other.m_errMsg;
    m_state = other.m_state;
}

QStringList TovMemProperty::asStringList(const QString &args, QChar separator)
{
    if (!m_isExpr) {
        if (m_state == TovMemPropertyExprState::NotCalculated) {
            m_cacheValue = m_value.split(itemSeparator, Qt::KeepEmptyParts, Qt::CaseSensitive);
            m_state = TovMemPropertyExprState::Calculated;
        }
        return m_cacheValue;
    }
    if (m_state == TovMemPropertyExprState::Failed)
        throw SefException(m_errMsg, -1);
    if (m_state == TovMemPropertyExprState::Calculated && args.isEmpty())
        return m_cacheValue;

    m_cacheValue.clear();
    try {
        const QStringList items = m_value.split(itemSeparator, Qt::KeepEmptyParts, Qt::CaseSensitive);
        for (const QString &item : items) {
            TovMemPropertyExprCalcArgs calcArgs { item, args, separator };
            m_cacheValue.append(m_owner ? m_owner->calcExprVal(this, calcArgs) : item);
        }
    } catch (const SefException &e) {
        m_cacheValue.clear();
        m_state = TovMemPropertyExprState::Failed;
        m_errMsg = e.message();
        throw SefException(m_errMsg, -1);
    } catch (...) {
        // Not a calculation failure: leave no half-filled cache marked as valid.
        m_cacheValue.clear();
        m_state = TovMemPropertyExprState::NotCalculated;
        throw;
    }
    m_state = TovMemPropertyExprState::Calculated;
    return m_cacheValue;
}

QString TovMemProperty::asString(bool calculate, const QString &args, QChar separator)
{
    if (!m_isExpr || !calculate)
        return m_value;
    return asStringList(args, separator).join(itemSeparator);
}

double TovMemProperty::asDouble(const QString &args)
{
    return SefCommon::strToFloatDef(asString(true, args), 0.0);
}

int TovMemProperty::asInteger(const QString &args)
{
    bool ok = false;
    const int value = asString(true, args).toInt(&ok, 10);
    return ok ? value : 0;
}

bool TovMemProperty::asBoolean(const QString &args)
{
    return SefCommon::strToBoolDef(asString(true, args), false);
}

QVector<double> TovMemProperty::asDoubleArray(const QString &args)
{
    const QStringList items = asStringList(args);
    QVector<double> result;
    result.reserve(items.size());
    for (const QString &item : items)
        result.append(SefCommon::strToFloatDef(item, 0.0));
    return result;
}

hln::CVector2d TovMemProperty::asVector2d(const QString &args)
{
    return toVector2d(asString(true, args, componentSeparator));
}

QVector<hln::CVector2d> TovMemProperty::asVector2dArray(const QString &args)
{
    const QStringList items = asStringList(args, componentSeparator);
    QVector<hln::CVector2d> result;
    result.reserve(items.size());
    for (const QString &item : items)
        result.append(toVector2d(item));
    return result;
}

void TovMemProperty::loadFromFile(const QJsonObject &json)
{
    m_propName = json.value(QLatin1String("PropName")).toString().toStdWString();
    m_aliasName = json.value(QLatin1String("AliasName")).toString().toStdWString();
    m_value = json.value(QLatin1String("Value")).toString();
    m_cacheValue = json.value(QLatin1String("cacheValue"))
                       .toString()
                       .split(cacheSeparator, Qt::KeepEmptyParts, Qt::CaseSensitive);
    m_isExpr = json.value(QLatin1String("IsExpr")).toBool(false);
    m_errMsg = json.value(QLatin1String("ErrMsg")).toString();
    m_state = static_cast<TovMemPropertyExprState>(json.value(QLatin1String("ExprState")).toInt(0));
}

void TovMemProperty::saveToFile(QJsonObject &json) const
{
    json.insert(QLatin1String("PropName"), QString::fromStdWString(m_propName));
    json.insert(QLatin1String("AliasName"), QString::fromStdWString(m_aliasName));
    json.insert(QLatin1String("Value"), m_value);
    json.insert(QLatin1String("cacheValue"), m_cacheValue.join(cacheSeparator));
    json.insert(QLatin1String("IsExpr"), m_isExpr);
    json.insert(QLatin1String("ErrMsg"), m_errMsg);
    json.insert(QLatin1String("ExprState"), static_cast<int>(m_state));
}

#include "tovmemproperties.h"

#include "tovmemproperties_p.h"

#include <hlnglobals.h>
#include <sefcommon.h>
#include <sefdebugoutput.h>
#include <tovexception.h>

#include <QJsonArray>
#include <QJsonObject>

#include <cmath>
#include <cwctype>

namespace {

// The source marker line written before a failure is thrown.
void writeSourceLine(int line)
{
    SefDebugOutput::write(QStringLiteral("TovMemProperties:%1").arg(line));
}

bool isSameItem(const QString &a, const QString &b)
{
    if (a == b)
        return true;
    return SefCommon::isNumeric(a) && SefCommon::isNumeric(b)
        && std::fabs(SefCommon::strToFloatDef(a, 0.0) - SefCommon::strToFloatDef(b, 0.0))
        <= hln::g_DistEpsilon;
}

bool isSameValue(const QString &a, const QString &b)
{
    if (a == b)
        return true;
    const QStringList itemsA = a.split(QLatin1Char(';'), Qt::KeepEmptyParts, Qt::CaseSensitive);
    const QStringList itemsB = b.split(QLatin1Char(';'), Qt::KeepEmptyParts, Qt::CaseSensitive);
    if (itemsA.size() != itemsB.size())
        return false;
    for (int i = 0; i < itemsA.size(); ++i) {
        if (!isSameItem(itemsA[i], itemsB[i]))
            return false;
    }
    return true;
}

} // namespace

std::wstring TovMemPropertiesPrivate::lowerName(const std::wstring &name)
{
    std::wstring lower(name);
    for (wchar_t &c : lower)
        c = static_cast<wchar_t>(std::towlower(static_cast<std::wint_t>(c)));
    return lower;
}

TovMemProperties::TovMemProperties(QObject *parent)
    : QObject(parent)
    , d(new TovMemPropertiesPrivate)
{ }

TovMemProperties::~TovMemProperties()
{
    clear();
}

void TovMemProperties::add(TovMemProperty *property)
{
    property->m_owner = this;
    const int position = static_cast<int>(d->props.size());
    d->props.push_back(property);
    d->nameIndex[TovMemPropertiesPrivate::lowerName(property->propName())] = position;
    if (!property->aliasName().empty())
        d->nameIndex[TovMemPropertiesPrivate::lowerName(property->aliasName())] = position;
}

TovMemProperty *TovMemProperties::add(const std::wstring &name, const std::wstring &alias, int value)
{
    return add(name, alias, QString::number(value), false);
}

TovMemProperty *TovMemProperties::add(const std::wstring &name, const std::wstring &alias, double value)
{
    return add(name, alias, QString::number(value, 'g', QLocale::FloatingPointShortest), false);
}

TovMemProperty *TovMemProperties::add(
    const std::wstring &name, const std::wstring &alias, const QString &value, bool isExpr)
{
    auto *property = new TovMemProperty;
    property->setPropName(name);
    property->setAliasName(alias);
    property->setValue(value);
    property->setIsExpr(isExpr);
    add(property);
    return property;
}

TovMemProperty *TovMemProperties::add(const std::wstring &name, int value)
{
    return add(name, std::wstring(), value);
}

TovMemProperty *TovMemProperties::add(const std::wstring &name, double value)
{
    return add(name, std::wstring(), value);
}

TovMemProperty *TovMemProperties::add(const std::wstring &name, const QString &value, bool isExpr)
{
    return add(name, std::wstring(), value, isExpr);
}

int TovMemProperties::count() const
{
    return static_cast<int>(d->props.size());
}

TovMemProperty *TovMemProperties::props(int index) const
{
    return d->props[static_cast<size_t>(index)];
}

TovMemProperty *TovMemProperties::findPropByName(const std::wstring &name) const
{
    const auto it = d->nameIndex.find(TovMemPropertiesPrivate::lowerName(name));
    if (it == d->nameIndex.end())
        return nullptr;
    return d->props.at(static_cast<size_t>(it->second));
}

TovMemProperty *TovMemProperties::getPropByName(const std::wstring &name) const
{
    TovMemProperty *property = findPropByName(name);
    if (!property) {
        const QString message = tr("[%1]属性不存在").arg(QString::fromStdWString(name));
        writeSourceLine(__LINE__);
        throw TovException(message, -1);
    }
    return property;
}

bool TovMemProperties::hasProp(const std::wstring &name) const
{
    return findPropByName(name) != nullptr;
}

int TovMemProperties::indexOfProp(const std::wstring &name) const
{
    const auto it = d->nameIndex.find(TovMemPropertiesPrivate::lowerName(name));
    return it == d->nameIndex.end() ? -1 : it->second;
}

void TovMemProperties::clear()
{
    d->nameIndex.clear();
    for (TovMemProperty *property : d->props)
        deleteProp(property);
    d->props.clear();
}

void TovMemProperties::deleteProp(TovMemProperty *property)
{
    property->m_owner = nullptr;
    delete property;
}

void TovMemProperties::assign(const TovMemProperties &other)
{
    if (&other == this)
        return;
    clear();
    d->props.reserve(other.d->props.size());
    for (const TovMemProperty *source : other.d->props) {
        auto *property = new TovMemProperty;
        property->assign(*source);
        property->m_owner = this;
        d->props.push_back(property);
    }
    d->nameIndex = other.d->nameIndex;
}

bool TovMemProperties::isEqual(const TovMemProperties &other) const
{
    if (d->props.size() != other.d->props.size())
        return false;
    for (size_t i = 0; i < d->props.size(); ++i) {
        const TovMemProperty *a = d->props[i];
        const TovMemProperty *b = other.d->props[i];
        if (a->propName() != b->propName() || a->aliasName() != b->aliasName() || a->isExpr() != b->isExpr()
            || !isSameValue(a->value(), b->value()))
            return false;
    }
    return true;
}

void TovMemProperties::resetState()
{
    for (TovMemProperty *property : d->props)
        property->resetState();
}

QString TovMemProperties::calcExprVal(TovMemProperty *property, TovMemPropertyExprCalcArgs &args)
{
    QString result = args.expr;
    emit onCalcExprVal(property, args, result);
    return result;
}

QStringList TovMemProperties::asStringList(const std::wstring &name, const QString &args, QChar separator)
{
    return getPropByName(name)->asStringList(args, separator);
}

QString TovMemProperties::asString(
    const std::wstring &name, bool calculate, const QString &args, QChar separator)
{
    return getPropByName(name)->asString(calculate, args, separator);
}

double TovMemProperties::asDouble(const std::wstring &name, const QString &args)
{
    return getPropByName(name)->asDouble(args);
}

int TovMemProperties::asInteger(const std::wstring &name, const QString &args)
{
    return getPropByName(name)->asInteger(args);
}

bool TovMemProperties::asBoolean(const std::wstring &name, const QString &args)
{
    return getPropByName(name)->asBoolean(args);
}

QVector<double> TovMemProperties::asDoubleArray(const std::wstring &name, const QString &args)
{
    return getPropByName(name)->asDoubleArray(args);
}

hln::CVector2d TovMemProperties::asVector2d(const std::wstring &name, const QString &args)
{
    return getPropByName(name)->asVector2d(args);
}

QVector<hln::CVector2d> TovMemProperties::asVector2dArray(const std::wstring &name, const QString &args)
{
    return getPropByName(name)->asVector2dArray(args);
}

void TovMemProperties::loadFromFile(const QJsonObject &json)
{
    clear();
    const QJsonArray properties = json.value(QLatin1String("Property")).toArray();
    d->props.reserve(static_cast<size_t>(properties.size()));
    for (const QJsonValue &value : properties) {
        auto *property = new TovMemProperty;
        property->loadFromFile(value.toObject());
        property->m_owner = this;
        d->props.push_back(property);
    }
    const QJsonArray hash = json.value(QLatin1String("Hash")).toArray();
    for (const QJsonValue &value : hash) {
        const QJsonObject entry = value.toObject();
        d->nameIndex[entry.value(QLatin1String("Key")).toString().toStdWString()]
            = entry.value(QLatin1String("Value")).toInt();
    }
}

void TovMemProperties::saveToFile(QJsonObject &json) const
{
    QJsonArray properties;
    for (const TovMemProperty *property : d->props) {
        QJsonObject object;
        property->saveToFile(object);
        properties.append(object);
    }
    QJsonArray hash;
    for (const auto &entry : d->nameIndex) {
        QJsonObject object;
        object.insert(QLatin1String("Key"), QString::fromStdWString(entry.first));
        object.insert(QLatin1String("Value"), entry.second);
        hash.append(object);
    }
    json.insert(QLatin1String("Property"), properties);
    json.insert(QLatin1String("Hash"), hash);
}

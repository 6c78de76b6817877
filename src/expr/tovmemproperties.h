#pragma once

#include "tovgeneralutility_export.h"
#include "tovmemproperty.h"
#include "tovmempropertyexprcalcargs.h"

#include <QObject>

#include <memory>

class QJsonObject;
class TovMemPropertiesPrivate;

// An ordered set of owned properties, found by name or alias case-insensitively. Expression
// items are not evaluated here: calcExprVal asks the receiver of onCalcExprVal (connect it
// directly) for each item's value.
class TOVGENERALUTILITY_EXPORT TovMemProperties : public QObject
{
    Q_OBJECT

public:
    explicit TovMemProperties(QObject *parent = nullptr);
    ~TovMemProperties() override;

    // Takes ownership and indexes the lower-cased name and, when not empty, the alias; a name
    // already in the index then finds the newer property.
    void add(TovMemProperty *property);
    // Create, fill and add a plain (or, for the text forms, optionally expression) property.
    TovMemProperty *add(const std::wstring &name, const std::wstring &alias, int value);
    TovMemProperty *add(const std::wstring &name, const std::wstring &alias, double value);
    TovMemProperty *add(
        const std::wstring &name, const std::wstring &alias, const QString &value, bool isExpr);
    TovMemProperty *add(const std::wstring &name, int value);
    TovMemProperty *add(const std::wstring &name, double value);
    TovMemProperty *add(const std::wstring &name, const QString &value, bool isExpr);

    int count() const;
    // Unchecked: index must be in [0, count()).
    TovMemProperty *props(int index) const;
    // Null when no name or alias matches. Throws std::out_of_range when the index entry points
    // past the sequence (only a loaded "Hash" can do that).
    TovMemProperty *findPropByName(const std::wstring &name) const;
    // As findPropByName, but throws TovException "[name]属性不存在" (code -1) when not found.
    TovMemProperty *getPropByName(const std::wstring &name) const;
    bool hasProp(const std::wstring &name) const;
    // The indexed position, or -1.
    int indexOfProp(const std::wstring &name) const;
    // Destroys every property in sequence order, each with its owner cleared first.
    void clear();
    // Makes this set a replica of other: copies of its properties and its name index as is.
    void assign(const TovMemProperties &other);
    // Same count and, position by position, the same names, aliases and expression flags (exact
    // text) and values item by item, numbers within hln::g_DistEpsilon ("2.5" equals "2.50");
    // cached items and states are not compared.
    bool isEqual(const TovMemProperties &other) const;
    // Resets every property so that the next read recalculates.
    void resetState();
    // Emits onCalcExprVal with the result preset to the item's own text and returns the result
    // as the receiver left it.
    QString calcExprVal(TovMemProperty *property, TovMemPropertyExprCalcArgs &args);

    // The property's conversions after getPropByName(name); see TovMemProperty.
    QStringList asStringList(
        const std::wstring &name, const QString &args = QString(), QChar separator = QChar());
    QString asString(const std::wstring &name, bool calculate = true, const QString &args = QString(),
        QChar separator = QChar());
    double asDouble(const std::wstring &name, const QString &args = QString());
    int asInteger(const std::wstring &name, const QString &args = QString());
    bool asBoolean(const std::wstring &name, const QString &args = QString());
    QVector<double> asDoubleArray(const std::wstring &name, const QString &args = QString());
    hln::CVector2d asVector2d(const std::wstring &name, const QString &args = QString());
    QVector<hln::CVector2d> asVector2dArray(const std::wstring &name, const QString &args = QString());

    // Replaces the content: "Property" read in order, the name index taken from "Hash" as
    // stored (keys not lower-cased again).
    void loadFromFile(const QJsonObject &json);
    // Writes "Property" (in sequence order) and "Hash" ({"Key", "Value"} per index entry, in key order).
    void saveToFile(QJsonObject &json) const;

signals:
    // The receiver overwrites result with the value of args.expr.
    void onCalcExprVal(TovMemProperty *property, TovMemPropertyExprCalcArgs &args, QString &result);

protected:
    // Clears the owner and destroys the property; the sequence and the name index are left as
    // they are, so only for a property never added, or just before the containers are emptied.
    void deleteProp(TovMemProperty *property);

private:
    std::unique_ptr<TovMemPropertiesPrivate> const d;
};

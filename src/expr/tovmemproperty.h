#pragma once

#include "tovgeneralutility_export.h"
#include "tovmempropertyexprstate.h"

#include <cvector2d.h>

#include <QString>
#include <QStringList>
#include <QVector>

#include <string>

class QJsonObject;
class TovMemProperties;

// One named, text-valued property of a TovMemProperties set. The value holds one or more items
// separated by ";"; when isExpr() is true each item is an expression whose value the owning set
// asks for through its onCalcExprVal signal and caches until the state is reset.
class TOVGENERALUTILITY_EXPORT TovMemProperty
{
public:
    TovMemProperty();
    virtual ~TovMemProperty();
    TovMemProperty(const TovMemProperty &) = delete;
    TovMemProperty &operator=(const TovMemProperty &) = delete;

    // The set that holds this property, null until it is added to one.
    TovMemProperties *owner() const { return m_owner; }

    // Names are indexed when the property is added to a set: set them before adding.
    const std::wstring &propName() const { return m_propName; }
    void setPropName(const std::wstring &name);
    const std::wstring &aliasName() const { return m_aliasName; }
    void setAliasName(const std::wstring &name);

    bool isExpr() const { return m_isExpr; }
    // Changing the flag resets the state: the cached items were made under the other reading.
    void setIsExpr(bool isExpr);
    TovMemPropertyExprState state() const { return m_state; }
    void setState(TovMemPropertyExprState state);
    // The raw text as set, never calculated.
    QString value() const { return m_value; }
    // Does nothing when text equals the value; otherwise stores it and resets the state.
    void setValue(const QString &text);
    // The items of the last read; valid only in state Calculated.
    QStringList cacheValue() const { return m_cacheValue; }
    // The reason of the last failed calculation; empty unless in state Failed.
    QString errMsg() const { return m_errMsg; }

    // State NotCalculated, error message and cached items emptied; the value is kept.
    void resetState();
    // Copies names, value, flag, cached items, error message and state; the owner is kept.
    void assign(const TovMemProperty &other);

    // The items of the value. A plain value is split once at ";" (empty items kept). An
    // expression is calculated item by item through the owner's calcExprVal, unless already
    // calculated and args is empty. A failed calculation (or a read in state Failed) throws
    // SefException with the stored message and code -1; the calculator is not called again
    // until the state is reset. Without an owner an expression item reads as its own text.
    QStringList asStringList(const QString &args = QString(), QChar separator = QChar());
    // The raw value when the property is plain or calculate is false; else the items joined with ";".
    QString asString(bool calculate = true, const QString &args = QString(), QChar separator = QChar());
    // asString() as a number; 0.0 when it is not a plain decimal number.
    double asDouble(const QString &args = QString());
    // asString() as a base-10 32-bit integer; 0 when it is not one ("1.5" included).
    int asInteger(const QString &args = QString());
    // asString() by SefCommon::strToBoolDef with default false.
    bool asBoolean(const QString &args = QString());
    // One number per item; 0.0 for an item that is not a number.
    QVector<double> asDoubleArray(const QString &args = QString());
    // asString() read as "x,y" (the calculator gets "," as the separator); the zero vector unless
    // there are exactly two components, and 0.0 for a component that is not a number.
    hln::CVector2d asVector2d(const QString &args = QString());
    // One "x,y" vector per item, each read as asVector2d reads the whole text.
    QVector<hln::CVector2d> asVector2dArray(const QString &args = QString());

    // Reads the keys "PropName", "AliasName", "Value", "cacheValue" (items joined with "|"),
    // "IsExpr", "ErrMsg" and "ExprState"; a missing key reads as empty, false or 0.
    virtual void loadFromFile(const QJsonObject &json);
    virtual void saveToFile(QJsonObject &json) const;

private:
    friend class TovMemProperties;

    TovMemProperties *m_owner = nullptr;
    std::wstring m_propName;
    std::wstring m_aliasName;
    QString m_value;
    QStringList m_cacheValue;
    bool m_isExpr = false;
    QString m_errMsg;
    TovMemPropertyExprState m_state = TovMemPropertyExprState::NotCalculated;
};

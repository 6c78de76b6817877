#pragma once

#include "tovhost_export.h"

#include <QString>
#include <QVariant>

// A typed value of the expression engine: the result of an evaluation, a constant, or the value a
// callback hands to a variable. Type codes: 0 unknown, 10 integer, 11 floating-point, 12 string,
// 13 boolean, 17 64-bit integer. Texts are only built by asString() when asked for.
class TOVHOST_EXPORT RukData
{
public:
    enum DataType
    {
        Unknown = 0,
        Integer = 10,
        Float = 11,
        String = 12,
        Boolean = 13,
        Int64 = 17
    };

    RukData() = default;
    static RukData fromFloat(double value);
    // Type 10 when the value fits in 32 bits, else 17.
    static RukData fromInteger(qint64 value);
    static RukData fromString(const QString &value);
    static RukData fromBoolean(bool value);
    // Int, Double, String, Bool and LongLong keep their type; other types become their text;
    // a null or invalid variant leaves the data invalid.
    static RukData fromVariant(const QVariant &value);

    int dataType() const { return m_type; }
    // False for a default-constructed data and for a failed evaluation's result.
    bool isValid() const { return m_valid != 0; }
    void setIsValid(bool valid) { m_valid = valid; }

    // Numbers as they are, booleans as 1 or 0, texts that read as numbers as those numbers,
    // anything else 0.
    double asFloat() const { return m_type == Float ? m_v.f : asFloatSlow(); }
    // Floating-point values rounded half away from zero and clamped to 64 bits.
    qint64 asInteger() const;
    // Integers in decimal, floating-point values in the shortest text that reads back the same,
    // booleans as "true"/"false", unknown as empty.
    QString asString() const;
    // Booleans as they are, numbers as non-zero, texts by SefCommon::strToBool.
    bool asBoolean() const;
    QVariant asVariant() const;

    void setFloat(double value)
    {
        m_type = Float;
        m_valid = true;
        m_v.f = value;
    }
    void setInteger(qint64 value)
    {
        m_type = (value >= -2147483647LL - 1 && value <= 2147483647LL) ? Integer : Int64;
        m_valid = true;
        m_v.i = value;
    }
    void setInt64(qint64 value)
    {
        m_type = Int64;
        m_valid = true;
        m_v.i = value;
    }
    void setString(const QString &value)
    {
        m_type = String;
        m_valid = true;
        m_s = value;
    }
    void setBoolean(bool value)
    {
        m_type = Boolean;
        m_valid = true;
        m_v.b = value;
    }
    void setVariant(const QVariant &value);
    void clear()
    {
        m_type = Unknown;
        m_valid = false;
        m_s = QString();
    }

    // The translated name of a type code, as used in the engine's messages ("浮点数").
    static QString typeName(int dataType);

private:
    friend class RukParserPrivate;
    friend struct RukOps;

    double asFloatSlow() const;

    int m_type = Unknown;
    // An int rather than a bool: a setter's two constant stores then merge into one.
    int m_valid = false;
    // Only the member of the current type is meaningful; m_s may hold a stale text when the
    // type is not String (the evaluator reuses its slots without touching their texts).
    union {
        double f;
        qint64 i;
        bool b;
    } m_v = { 0.0 };
    QString m_s;
};

#pragma once

#include "tovgeneralutility_export.h"

#include <QObject>
#include <QString>
#include <QVariant>
#include <QVector>

class RixMemField;
class RixMemFields;
class RixMemRecordExprVarQuerier;
class RixMemTable;

// One row of a memory table: a value per field, by field index. A record with a reference record
// stores only the values in which it differs from it and shows the reference's values elsewhere.
//
// Deleting a record that still belongs to a table takes it out of that table first, with the
// table's remove signals.
class TOVGENERALUTILITY_EXPORT RixMemRecord : public QObject
{
    Q_OBJECT

public:
    // table's field set (following its reference tables) sizes the values, all null.
    explicit RixMemRecord(RixMemTable *table);
    ~RixMemRecord() override;

    int iD() const { return m_iD; }
    void setID(const int &iD) { m_iD = iD; }
    // A mark for callers; the engine never reads it.
    bool isValid() const { return m_valid; }
    void setValid(bool valid) { m_valid = valid; }
    // When set, setAsString converts the text to the field's data type.
    bool needConvert() const { return m_needConvert; }
    void setNeedConvert(bool needConvert) { m_needConvert = needConvert; }
    // Not owned.
    RixMemRecord *refRecord() const { return m_refRecord; }
    void setRefRecord(RixMemRecord *refRecord) { m_refRecord = refRecord; }

    // The table whose list holds the record, else the table that created it.
    RixMemTable *table() const;
    // Position in the holding table's list, or -1.
    int index() const;

    // The effective value: the stored one, or the reference record's when that is null. Null for
    // an index out of range or an unknown name.
    QVariant getVariant(int index) const;
    QVariant getVariant(const QString &name) const;
    QVariant getVariant(const wchar_t *name) const;
    // Stores null instead of a value equal to the reference record's. An unknown name is ignored.
    void setVariant(QString name, const QVariant &value);

    QString asString(const QString &name) const;
    QString asString(const wchar_t *name) const;
    int asInteger(const QString &name) const;
    int asInteger(const wchar_t *name) const;
    double asDouble(const QString &name) const;
    double asDouble(const wchar_t *name) const;
    bool asBoolean(const QString &name) const;
    bool asBoolean(const wchar_t *name) const;

    // Stores typed-in text when it differs from the current text (converted to the field's type
    // when needConvert() is set and the text converts). An unknown name is ignored. With check,
    // the field's constraint must hold for the text first (an unchanged empty entry is checked
    // too): otherwise TovException with the field's message, or "属性值[value]非法", is thrown
    // and the record is unchanged.
    void setAsString(const QString &name, const QString &value, bool check);
    void setAsString(const wchar_t *name, const QString &value, bool check);

    // The value of name; a text that is neither empty nor a plain number is an expression and is
    // evaluated for this record by the table (querier asked first for its variables).
    QVariant asExprValue(const QString &name, RixMemRecordExprVarQuerier *querier);

    // The stored values, without the reference record's.
    QVector<QVariant> getValues() const { return m_values; }
    // Replaces the stored values as they are (the length is not checked).
    void setValues(const QVector<QVariant> &values) { m_values = values; }
    // Copies the stored values and the reference record pointer.
    void assign(RixMemRecord *other);
    // Copies other's effective values: the result does not depend on other's reference record.
    void assignValues(RixMemRecord *other);
    // False for a record with a reference record; otherwise whether every stored value is null.
    bool isNullValues() const;

protected:
    void setVariant(int index, const QVariant &value);
    QString asString(int index) const;
    void setAsString(int index, const QString &value, bool check);
    int filedIndex(const QString &name) const;
    int filedIndex(const wchar_t *name) const;
    // Throws TovException (code -1) when the constraint of the field at index fails for value.
    void checkValue(int index, const QString &value);
    // Whether field's constraint holds for value; message is the field's constraint message when
    // it does not.
    bool validate(RixMemField *field, const QString &value, QString &message);

private:
    friend class RixMemTable;
    friend class RixMemRecordExprParser;
    friend struct RixMemPrefetch;

    // getVariant() without the copy; a shared null value out of range.
    const QVariant &effectiveValue(int index) const;
    // Whether the creating table's (effective) field set is fields.
    bool usesFields(const RixMemFields *fields) const;

    int m_iD = 0;
    QVector<QVariant> m_values;
    RixMemTable *m_ownerTable = nullptr;
    RixMemTable *m_table = nullptr;
    bool m_valid = true;
    RixMemRecord *m_refRecord = nullptr;
    bool m_needConvert = false;
};

#pragma once

#include "tovgeneralutility_export.h"

#include <QByteArray>
#include <QJsonArray>
#include <QObject>
#include <QStringList>
#include <QVariant>

#include <functional>
#include <memory>

class RixMemField;
class RixMemFields;
class RixMemRecord;
class RixMemRecordExprVarQuerier;
class RixMemTablePrivate;
class RixMemTableView;
class RixMemTextPool;

// A named table of typed fields and the records it owns. A table layered over a reference table
// uses that table's field set and name, and its records may inherit the reference's records'
// values, so that it stores only what changes. A table must be destroyed before its reference
// table. Loaders never check field constraints.
class TOVGENERALUTILITY_EXPORT RixMemTable : public QObject
{
    Q_OBJECT

public:
    RixMemTable();
    // parent is ignored on purpose: the creator owns the table.
    explicit RixMemTable(QObject *parent);
    ~RixMemTable() override;

    // The field set of the last table along the reference chain.
    RixMemFields *fields() const;
    RixMemField *field(int index) const;
    int filedIndex(const QString &name) const;
    RixMemField *findField(const QString &name) const;
    int addField(RixMemField *field);
    RixMemField *addField(const QString &fieldName, const QString &displayName, QVariant::Type dataType);

    // The reference table's name when there is one.
    QString tableName() const;
    void setTableName(const QString &tableName);
    RixMemTable *refTable() const;
    // Setting a reference table deletes the own field set; clearing it starts an empty one.
    void setRefTable(RixMemTable *refTable);

    int recordCount() const;
    bool isEmpty() const;
    // No range check: see canAccess().
    RixMemRecord *items(int index) const;
    RixMemRecord *operator[](int index) const;
    bool canAccess(int index) const;
    int indexOf(const RixMemRecord *record) const;

    // A record of this table with the next identity number, not yet in the list.
    RixMemRecord *newRecord();
    // Takes ownership; the record's identity is kept. Answers the record's position.
    int appendRecord(RixMemRecord *record);
    int insertRecord(int index, RixMemRecord *record);
    // Takes every occurrence out of the list without deleting it: the caller owns it then.
    void removeRecord(RixMemRecord *record);
    // Takes the record out with the remove signals and deletes it. Out of range is ignored.
    void deleteRecord(int index);
    // Deletes every record without signals. Identity numbers then start at 0, not 1.
    void clear();

    // First record whose effective value of fieldName equals value, or -1 / null.
    int findRecordIndex(const QString &fieldName, const QVariant &value);
    RixMemRecord *findRecord(const QString &fieldName, const QVariant &value);
    // True when every record's effective value at fieldIndex is null (also without records).
    bool columnDataIsNull(int fieldIndex);
    // Fields and at least one record.
    bool isValid() const;
    // Ascending, unstable. Int and Double fields compare by their integer conversion; a field of
    // any other type leaves every pair equal.
    void sortByField(QString fieldName);

    // The value of expr for record, its variables answered by querier first, then by the record's
    // fields; null when the engine fails (written to the debug output). An evaluation started
    // from inside another one (a querier or value that is itself an expression) gets a parser
    // of its own, so that the outer one is not disturbed.
    QVariant calcExprVal(const QString &expr, RixMemRecordExprVarQuerier *querier, RixMemRecord *record);

    // A view of all records narrowed by filter (none when empty), named name. The table is the
    // view's parent: it is deleted with the table unless the caller deletes it first.
    RixMemTableView *createView(const QString &name, std::function<void(RixMemRecord *, bool &)> filter);

    // Appends copies of source's records (stored values and reference records) with new identities.
    void appendRecords(RixMemTable *source);
    // Appends one empty record per source record, inheriting from it.
    void appendRefRecords(RixMemTable *source);
    // Takes source's field set (or its reference table) and name, clears, then copies the records
    // when withRecords is set.
    void assign(RixMemTable *source, bool withRecords);

    // Appends the rows of a comma-separated file, as text values. The first line is a header of
    // field names (hasHeader) or skipped. Empty cells are dropped, so later cells shift left.
    // A file that cannot be read leaves the table unchanged.
    void loadFromCSVFile(const QString &fileName, bool hasHeader);
    // Replaces the records by the lines of text, as text values, into the named fields (all
    // visible fields when fieldNames is empty). Empty cells are dropped, as in CSV.
    void loadFromString(QString text, QChar separator, const QStringList &fieldNames);
    // Replaces the records by the objects of a JSON array, converted to the fields' types. Without
    // a reference table the identities continue from the largest "ID" value; with one, "_RefID"
    // names the reference record by its "ID".
    void loadFromJson(const QByteArray &json);
    void loadFromJson(const QJsonArray &array);
    // Appends one object per record with its stored non-null values (and "_RefID" over a
    // reference table); a layer that changes nothing over its reference table is saved as an
    // empty array.
    void saveToJson(QJsonArray &array);
    // Compact JSON; json is left untouched when there is nothing to save.
    void saveToJson(QByteArray &json);

signals:
    void onAfterAdd(RixMemRecord *pRecord);
    void onBeforeRemove(RixMemRecord *pRecord);
    void onAfterRemove(RixMemRecord *pRecord);

protected:
    // A record of this table with identity 0; nextID is not drawn.
    RixMemRecord *createRecord();
    int genID();
    // Deletes the record without touching the list or emitting signals.
    void deleteRecord(RixMemRecord *record);

private:
    friend class RixMemRecord;
    friend class RixMemTableView;

    // Loads one line's cells into a new record; appended when a value was set, else deleted.
    void loadCells(const QString &line, QChar separator, const QVector<int> &columns, RixMemTextPool &texts);

    const std::unique_ptr<RixMemTablePrivate> d;
};

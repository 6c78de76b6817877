#pragma once

#include "tovgeneralutility_export.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QVariant>
#include <QVector>

#include <functional>
#include <memory>
#include <utility>

class RixMemField;
class RixMemFields;
class RixMemRecord;
class RixMemTable;
class RixMemTableFilterRules;
class RixMemTableViewPrivate;

// A working subset of one memory table: a list of the table's records, all of them at first,
// narrowed by filters, then sorted, searched or reduced. The records stay the table's; the view
// only changes its own list. Filter functions are called from the last record to the first.
//
// The view drops a record as soon as the table takes it out or deletes it (the remove signals,
// clear(), assign(), the loaders); records the table adds later are not followed. Records that
// the caller appends from elsewhere are the caller's to keep alive. Once the table is destroyed
// the view is empty and its field lookups answer nothing.
class TOVGENERALUTILITY_EXPORT RixMemTableView : public QObject
{
    Q_OBJECT

public:
    // The operators read given value, operator, record value: Greater with 10 keeps the records
    // below 10 (rule tables store upper limits). Based on int: any int is a value, and one
    // outside the enum fails every test.
    enum ConditionType : int
    {
        Greater = 0,
        GreaterEqual = 1,
        Less = 2,
        LessEqual = 3,
    };
    Q_ENUM(ConditionType)

    // What a search answers when no record passes.
    enum NotFoundReturnMode : int
    {
        ReturnNull = 0,
        ReturnFirst = 1,
        ReturnLast = 2,
    };
    Q_ENUM(NotFoundReturnMode)

    explicit RixMemTableView(RixMemTable *table, QObject *parent = nullptr);
    ~RixMemTableView() override;

    // Null once the table is destroyed.
    RixMemTable *table() const;
    // The table's effective field set; null without a table.
    RixMemFields *fields() const;
    int filedIndex(const QString &name) const;
    RixMemField *findField(const QString &name) const;

    int recordCount() const;
    bool isEmpty() const;
    QList<RixMemRecord *> records() const;
    // These change the view's list only, never the table.
    int appendRecord(RixMemRecord *record);
    int insertRecord(int index, RixMemRecord *record);
    // Every occurrence.
    void removeRecord(RixMemRecord *record);
    // Takes the record at index out of the view; it is not deleted. Out of range is ignored.
    void deleteRecord(int index);
    int indexOf(const RixMemRecord *record) const;
    // Null for an empty view.
    RixMemRecord *first() const;
    // No range check.
    RixMemRecord *operator[](int index) const;

    // Keeps the records for which filter sets its flag (false on entry). name labels the filter
    // for the reader only. An empty function keeps everything.
    void applyFilter(const QString &name, std::function<void(RixMemRecord *, bool &)> filter);
    // Applies the rules with a value, in order: Equal as applyFilterForEqual, LeastOne as
    // applyFilterForLeastOne. Answers whether records remain; false for null rules. Throws
    // std::logic_error for any other condition type.
    bool applyFilter(RixMemTableFilterRules *rules);
    // Keeps the records whose value is null or equal to value.
    void applyFilterForEqual(const QString &fieldName, const QVariant &value);
    // Keeps the records whose value is null or for which "value type record-value" holds. Double
    // and float fields compare as doubles with a tolerance of 1e-12, others by QVariant ordering.
    // Nothing happens for an unknown field; a type outside the enum drops every non-null record.
    void applyFilterForCondition(const QString &fieldName, const QVariant &value, ConditionType type);
    // ">", ">=", "<" or "<="; any other text leaves the view unchanged.
    void applyFilterForCondition(
        const QString &fieldName, const QVariant &value, const QString &conditionText);
    // Reads a condition text such as "H≤3.5" (see extractConditionValue()) and applies it as
    // above; an unreadable text leaves the view unchanged.
    void applyFilterByFieldCondition(const QString &fieldName, const QString &conditionText);
    // Keeps the records of the smallest unique value not below value. When value is above every
    // value, answers false and leaves the view unchanged; else answers whether records remain.
    bool applyFilterForFirstOne(const QString &fieldName, const QVariant &value);
    // As applyFilterForFirstOne, but a value above every value keeps the records of the largest.
    bool applyFilterForLeastOne(const QString &fieldName, const QVariant &value);

    // The distinct non-null values, ascending by QVariant ordering.
    QList<QVariant> getUniqueValues(const QString &fieldName);
    // Invalid / null when no record has a value. Of equal extremes the first in view order wins.
    QVariant calcMaxValue(const QString &fieldName);
    QVariant calcMinValue(const QString &fieldName);
    RixMemRecord *maxRecord(const QString &fieldName);
    RixMemRecord *minRecord(const QString &fieldName);
    // The records' text values in view order, empty ones included.
    QString join(const QString &fieldName, const QString &separator);

    // "Field [DESC], Field [ASC], ...": any word other than DESC after a name means ascending.
    void sort(const QString &spec);
    // (field name, ascending) pairs, the first differing key deciding. Records whose keys all
    // compare equal are answered "before" each other on purpose, which this stable merge sort
    // turns into reverse view order among them.
    void sort(QVector<std::pair<QString, bool>> keys);
    // Stable merge sort that only ever asks lessThan(later, earlier), so any comparator is safe.
    void sort(std::function<bool(RixMemRecord *, RixMemRecord *)> lessThan);

    // The first record in view order for which filter sets its flag, else as mode says. Null for
    // an empty view or an empty function.
    RixMemRecord *findRecord(
        std::function<void(RixMemRecord *, bool &)> filter, NotFoundReturnMode mode = ReturnNull);
    // The first record whose field holds an interval "[low,upper]" or "[low,upper)" admitting
    // value by its upper bound (the lower bound is not tested); "∞" stands for no bound.
    RixMemRecord *findRecordByIntervalCondition(
        const QString &fieldName, double value, NotFoundReturnMode mode = ReturnNull);
    // The first record whose field holds a condition text such as "≤3.5" admitting value.
    RixMemRecord *findRecordByIntervalConditionEx(
        const QString &fieldName, double value, NotFoundReturnMode mode = ReturnNull);

    // Reads "<op><number>" after dropping every ASCII letter from the trimmed text: ≤, <, ≥ or >
    // set type (any other first character leaves it), the rest is the number (0 when
    // unreadable). False when fewer than two characters remain. "<=5" reads as "<" and 0.
    static bool extractConditionValue(const QString &text, double &value, ConditionType &type);

private:
    // "<open>low,upper<close>"; "∞" leaves low as it is and makes upper the largest double.
    static bool extractIntervalConditionVal(
        const QString &text, QChar open, QChar close, double &low, double &upper);

    const std::unique_ptr<RixMemTableViewPrivate> d;
};

#include "rixmemtableview.h"
#include "rixmemtableview_p.h"

#include "rixmemfield.h"
#include "rixmemfields.h"
#include "rixmemprefetch_p.h"
#include "rixmemrecord.h"
#include "rixmemtable.h"
#include "rixmemtablefilterrule.h"
#include "rixmemtablefilterrules.h"

#include <sefcommon.h>

#include <QHash>
#include <QRegularExpression>

#include <algorithm>
#include <cstring>
#include <limits>
#include <numeric>
#include <stdexcept>
#include <vector>

namespace RixMemValueOrder {

int compare(const QVariant &a, const QVariant &b)
{
    const int ta = a.userType();
    const int tb = b.userType();
    if (ta == tb) {
        switch (ta) {
        case QMetaType::Double:
            return compareDoubles(
                *static_cast<const double *>(a.constData()), *static_cast<const double *>(b.constData()));
        case QMetaType::Int:
            return compareIntegers(
                *static_cast<const int *>(a.constData()), *static_cast<const int *>(b.constData()));
        case QMetaType::LongLong:
            return compareIntegers(*static_cast<const qlonglong *>(a.constData()),
                *static_cast<const qlonglong *>(b.constData()));
        case QMetaType::QString:
            return compareStrings(
                *static_cast<const QString *>(a.constData()), *static_cast<const QString *>(b.constData()));
        default:
            break;
        }
    } else if ((ta == QMetaType::Double && tb == QMetaType::Int)
        || (ta == QMetaType::Int && tb == QMetaType::Double)) {
        // Mixed numbers compare as doubles.
        return compareDoubles(a.toDouble(), b.toDouble());
    }
    return VariantAccess::qtCompare(a, b);
}

bool equals(const QVariant &a, const QVariant &b)
{
    const int ta = a.userType();
    if (ta == b.userType()) {
        switch (ta) {
        case QMetaType::Double:
            return compareDoubles(*static_cast<const double *>(a.constData()),
                       *static_cast<const double *>(b.constData()))
                == 0;
        case QMetaType::Int:
            return *static_cast<const int *>(a.constData()) == *static_cast<const int *>(b.constData());
        case QMetaType::QString:
            return *static_cast<const QString *>(a.constData())
                == *static_cast<const QString *>(b.constData());
        default:
            break;
        }
    }
    return a == b;
}

} // namespace RixMemValueOrder

using namespace RixMemValueOrder;

namespace {

const double tolerance = 1e-12;

// The first record whose non-null value at index orders furthest in the direction of sign
// (1 the largest, -1 the smallest); null when every value is null.
RixMemRecord *extremeRecord(const QList<RixMemRecord *> &records, int index, int sign)
{
    QVariant best;
    RixMemRecord *found = nullptr;
    for (RixMemRecord *record : records) {
        QVariant value = record->getVariant(index);
        if (value.isNull())
            continue;
        if (!best.isValid() || (sign > 0 ? compare(value, best) > 0 : compare(value, best) < 0)) {
            best = std::move(value);
            found = record;
        }
    }
    return found;
}

const QChar infinityChar(0x221E);

// Merge sort over [first, last) that only ever asks before(later, earlier): stable for a strict
// weak ordering and well-defined for any other comparator, which std::sort is not.
template<typename T, typename Before>
void mergeSortRange(T *first, T *last, T *buffer, const Before &before)
{
    const std::ptrdiff_t n = last - first;
    if (n <= 16) {
        for (T *i = first + 1; i < last; ++i) {
            T value = *i;
            T *j = i;
            while (j > first && before(value, *(j - 1))) {
                *j = *(j - 1);
                --j;
            }
            *j = value;
        }
        return;
    }
    T *mid = first + n / 2;
    mergeSortRange(first, mid, buffer, before);
    mergeSortRange(mid, last, buffer, before);
    if (!before(*mid, *(mid - 1)))
        return; // the halves are already in order
    T *const bufferEnd = std::copy(first, mid, buffer);
    T *l = buffer;
    T *r = mid;
    T *out = first;
    while (l != bufferEnd && r != last) {
        if (before(*r, *l))
            *out++ = *r++;
        else
            *out++ = *l++;
    }
    std::copy(l, bufferEnd, out);
}

template<typename T, typename Before>
void stableSort(std::vector<T> &items, const Before &before)
{
    if (items.size() < 2)
        return;
    std::vector<T> buffer(items.size() / 2 + 1);
    mergeSortRange(items.data(), items.data() + items.size(), buffer.data(), before);
}

// Keeps the records for which keep(record) holds, asking from the last record to the first as
// the filters are documented to; the kept records stay in order. keep must not reach code that
// could change the list, but it may delete records: alive(record) tells whether a record not yet
// asked about may still be read.
template<typename Keep, typename Alive>
void filterInPlace(QList<RixMemRecord *> &records, const Keep &keep, const Alive &alive)
{
    const int count = records.size();
    if (count == 0)
        return;
    QList<RixMemRecord *>::iterator it = records.begin();
    int kept = count;
    for (int i = count - 1; i >= 0; --i) {
        RixMemPrefetch::ahead(it, count, i, -1, alive);
        RixMemRecord *record = it[i];
        if (keep(record))
            it[--kept] = record;
    }
    if (kept > 0)
        records.erase(records.begin(), records.begin() + kept);
}

// As filterInPlace, for tests without side effects, whose order nobody can see: walks forwards,
// the direction in which the records were allocated, which the memory prefetcher follows best.
template<typename Keep>
void filterPure(QList<RixMemRecord *> &records, const Keep &keep)
{
    const int count = records.size();
    if (count == 0)
        return;
    QList<RixMemRecord *>::iterator it = records.begin();
    int kept = 0;
    for (int i = 0; i < count; ++i) {
        RixMemPrefetch::ahead(it, count, i, 1, [](RixMemRecord *) { return true; });
        RixMemRecord *record = it[i];
        if (keep(record))
            it[kept++] = record;
    }
    if (kept < count)
        records.erase(records.begin() + kept, records.end());
}

// Reads a non-null value as a double; false for a null value. A double is read in place, as
// QVariant::isNull() and toDouble() would answer for it.
inline bool readDouble(const QVariant &value, double &number)
{
    const QVariant::Private &p = value.data_ptr();
    if (p.type == QMetaType::Double && !p.is_shared) {
        number = p.data.d;
        return !p.is_null;
    }
    if (value.isNull())
        return false;
    number = value.toDouble();
    return true;
}

bool isDoubleType(int type)
{
    return type == QMetaType::Double || type == QMetaType::Float;
}

// The double test of the condition operators, given value g and record value r.
bool meetsDoubleCondition(double g, double r, int type)
{
    switch (type) {
    case RixMemTableView::Greater:
        return g - r > tolerance;
    case RixMemTableView::GreaterEqual:
        return r - g <= tolerance;
    case RixMemTableView::Less:
        return r - g > tolerance;
    case RixMemTableView::LessEqual:
        return g - r <= tolerance;
    default:
        return false;
    }
}

bool meetsOrder(int order, int type)
{
    switch (type) {
    case RixMemTableView::Greater:
        return order > 0;
    case RixMemTableView::GreaterEqual:
        return order >= 0;
    case RixMemTableView::Less:
        return order < 0;
    case RixMemTableView::LessEqual:
        return order <= 0;
    default:
        return false;
    }
}

// The values of one sort key, read once per record, in the narrowest form that still orders
// exactly as QVariant::compare() does.
class SortKey
{
public:
    SortKey(const QList<RixMemRecord *> &records, int fieldIndex, bool ascending)
        : m_ascending(ascending)
    {
        const int count = records.size();
        QVector<QVariant> values;
        values.reserve(count);
        bool allDouble = true;
        bool allInt = true;
        bool allString = true;
        for (const RixMemRecord *record : records) {
            values.append(record->getVariant(fieldIndex));
            const int type = values.constLast().userType();
            allInt = allInt && type == QMetaType::Int;
            allDouble = allDouble && (type == QMetaType::Double || type == QMetaType::Int);
            allString = allString && type == QMetaType::QString;
        }
        if (allInt) {
            m_kind = Ints;
            m_ints.reserve(size_t(count));
            for (const QVariant &value : qAsConst(values))
                m_ints.push_back(*static_cast<const int *>(value.constData()));
        } else if (allDouble) {
            m_kind = Doubles;
            m_doubles.reserve(size_t(count));
            for (const QVariant &value : qAsConst(values))
                m_doubles.push_back(value.toDouble());
        } else if (allString) {
            // Each distinct text once: the records' own texts lie all over the heap.
            m_kind = Strings;
            m_ints.reserve(size_t(count));
            QHash<QString, int> ids;
            for (const QVariant &value : qAsConst(values)) {
                const QString &text = *static_cast<const QString *>(value.constData());
                auto it = ids.constFind(text);
                if (it == ids.constEnd()) {
                    it = ids.insert(text, m_strings.size());
                    m_strings.append(text);
                }
                m_ints.push_back(it.value());
            }
            const int distinct = m_strings.size();
            if (distinct <= 256) {
                m_order.resize(size_t(distinct) * size_t(distinct));
                for (int i = 0; i < distinct; ++i) {
                    for (int j = 0; j < distinct; ++j) {
                        const int c = compareStrings(m_strings.at(i), m_strings.at(j));
                        m_order[size_t(i * distinct + j)] = qint8(c < 0 ? -1 : (c > 0 ? 1 : 0));
                    }
                }
            }
        } else {
            m_kind = Variants;
            m_variants = std::move(values);
        }
    }

    // QVariant::compare() of the values of records a and b (for texts only its sign).
    int compare(int a, int b) const
    {
        switch (m_kind) {
        case Ints:
            return compareIntegers(m_ints[size_t(a)], m_ints[size_t(b)]);
        case Doubles:
            return compareDoubles(m_doubles[size_t(a)], m_doubles[size_t(b)]);
        case Strings: {
            // Only the sign of a text comparison is ever used.
            const int ia = m_ints[size_t(a)];
            const int ib = m_ints[size_t(b)];
            if (ia == ib)
                return 0;
            if (!m_order.empty())
                return m_order[size_t(ia * m_strings.size() + ib)];
            return compareStrings(m_strings.at(ia), m_strings.at(ib));
        }
        case Variants:
            break;
        }
        return RixMemValueOrder::compare(m_variants.at(a), m_variants.at(b));
    }

    bool ascending() const { return m_ascending; }

private:
    enum Kind
    {
        Ints,
        Doubles,
        Strings,
        Variants
    };
    Kind m_kind = Variants;
    bool m_ascending = true;
    std::vector<int> m_ints; // the values, or the texts' positions in m_strings
    std::vector<double> m_doubles;
    QVector<QString> m_strings; // distinct texts
    std::vector<qint8> m_order; // sign of the comparison of two distinct texts, when few
    QVector<QVariant> m_variants;
};

// Holds the view's "calling out" state while a caller's function runs.
class CallingOut
{
public:
    explicit CallingOut(RixMemTableViewPrivate *d)
        : m_d(d)
    {
        ++m_d->callingOut;
    }
    ~CallingOut()
    {
        if (--m_d->callingOut == 0)
            m_d->forgottenWhileCalling.clear();
    }
    CallingOut(const CallingOut &) = delete;
    CallingOut &operator=(const CallingOut &) = delete;

    bool forgotten(RixMemRecord *record) const
    {
        return !m_d->forgottenWhileCalling.isEmpty() && m_d->forgottenWhileCalling.contains(record);
    }

private:
    RixMemTableViewPrivate *m_d;
};

} // namespace

void RixMemTableViewPrivate::recordsDeleting(const QList<RixMemRecord *> &deleted)
{
    forget(deleted);
}

void RixMemTableViewPrivate::forget(const QList<RixMemRecord *> &gone)
{
    if (gone.isEmpty() || (records.isEmpty() && callingOut == 0))
        return;
    QSet<RixMemRecord *> set(gone.cbegin(), gone.cend());
    filterPure(records, [&set](RixMemRecord *record) { return !set.contains(record); });
    if (callingOut > 0)
        forgottenWhileCalling.unite(set);
}

void RixMemTableViewPrivate::forget(RixMemRecord *record)
{
    records.removeAll(record);
    if (callingOut > 0)
        forgottenWhileCalling.insert(record);
}

RixMemTableView::RixMemTableView(RixMemTable *table, QObject *parent)
    : QObject(parent)
    , d(std::make_unique<RixMemTableViewPrivate>())
{
    d->table = table;
    if (!table)
        return;
    d->records = table->d->records;
    table->d->borrowers.append(d.get());
    connect(table, &RixMemTable::onBeforeRemove, this, [this](RixMemRecord *record) { d->forget(record); });
    // The table's own data is gone by then; only the pointer is let go of.
    connect(table, &QObject::destroyed, this, [this]() {
        d->table = nullptr;
        d->records.clear();
    });
}

RixMemTableView::~RixMemTableView()
{
    if (d->table)
        d->table->d->borrowers.removeAll(d.get());
}

RixMemTable *RixMemTableView::table() const
{
    return d->table;
}

RixMemFields *RixMemTableView::fields() const
{
    return d->table ? d->table->fields() : nullptr;
}

int RixMemTableView::filedIndex(const QString &name) const
{
    return d->table ? d->table->filedIndex(name) : -1;
}

RixMemField *RixMemTableView::findField(const QString &name) const
{
    return d->table ? d->table->findField(name) : nullptr;
}

int RixMemTableView::recordCount() const
{
    return d->records.count();
}

bool RixMemTableView::isEmpty() const
{
    return d->records.isEmpty();
}

QList<RixMemRecord *> RixMemTableView::records() const
{
    return d->records;
}

int RixMemTableView::appendRecord(RixMemRecord *record)
{
    d->records.append(record);
    return d->records.count() - 1;
}

int RixMemTableView::insertRecord(int index, RixMemRecord *record)
{
    d->records.insert(index, record);
    return index;
}

void RixMemTableView::removeRecord(RixMemRecord *record)
{
    d->records.removeAll(record);
}

void RixMemTableView::deleteRecord(int index)
{
    if (index >= 0 && index < d->records.count())
        d->records.removeAt(index);
}

int RixMemTableView::indexOf(const RixMemRecord *record) const
{
    return d->records.indexOf(const_cast<RixMemRecord *>(record));
}

RixMemRecord *RixMemTableView::first() const
{
    return d->records.isEmpty() ? nullptr : d->records.constFirst();
}

RixMemRecord *RixMemTableView::operator[](int index) const
{
    return d->records.at(index);
}

void RixMemTableView::applyFilter(const QString &name, std::function<void(RixMemRecord *, bool &)> filter)
{
    Q_UNUSED(name)
    if (!filter)
        return;
    // The function may reach the table (and so this list): it runs over a copy.
    QList<RixMemRecord *> records = d->records;
    CallingOut calling(d.get());
    filterInPlace(
        records,
        [&](RixMemRecord *record) {
            if (calling.forgotten(record))
                return false;
            bool keep = false;
            filter(record, keep);
            return keep;
        },
        [&](RixMemRecord *record) { return !calling.forgotten(record); });
    if (!d->forgottenWhileCalling.isEmpty())
        filterPure(records, [&](RixMemRecord *record) { return !calling.forgotten(record); });
    d->records = std::move(records);
}

bool RixMemTableView::applyFilter(RixMemTableFilterRules *rules)
{
    if (!rules)
        return false;
    for (int i = 0; i < rules->count(); ++i) {
        const RixMemTableFilterRule *rule = rules->at(i);
        if (rule->fieldValue().isNull())
            continue;
        switch (rule->conditionType()) {
        case RixMemTableFilterRule::Equal:
            applyFilterForEqual(rule->fieldName(), rule->fieldValue());
            break;
        case RixMemTableFilterRule::LeastOne:
            applyFilterForLeastOne(rule->fieldName(), rule->fieldValue());
            break;
        default:
            throw std::logic_error("The method or operation is not implemented.");
        }
    }
    return !d->records.isEmpty();
}

void RixMemTableView::applyFilterForEqual(const QString &fieldName, const QVariant &value)
{
    const int index = filedIndex(fieldName);
    filterPure(d->records, [index, &value](RixMemRecord *record) {
        const QVariant recordValue = record->getVariant(index);
        return recordValue.isNull() || equals(recordValue, value);
    });
}

void RixMemTableView::applyFilterForCondition(
    const QString &fieldName, const QVariant &value, ConditionType type)
{
    const RixMemField *field = findField(fieldName);
    if (!field)
        return;
    const int index = filedIndex(fieldName);
    if (isDoubleType(field->dataType())) {
        const double given = value.toDouble();
        filterPure(d->records, [index, given, type](RixMemRecord *record) {
            double number;
            return !readDouble(record->getVariant(index), number)
                || meetsDoubleCondition(given, number, type);
        });
    } else {
        filterPure(d->records, [index, &value, type](RixMemRecord *record) {
            const QVariant recordValue = record->getVariant(index);
            return recordValue.isNull() || meetsOrder(compare(value, recordValue), type);
        });
    }
}

void RixMemTableView::applyFilterForCondition(
    const QString &fieldName, const QVariant &value, const QString &conditionText)
{
    ConditionType type;
    if (conditionText == QLatin1String(">"))
        type = Greater;
    else if (conditionText == QLatin1String(">="))
        type = GreaterEqual;
    else if (conditionText == QLatin1String("<"))
        type = Less;
    else if (conditionText == QLatin1String("<="))
        type = LessEqual;
    else
        return;
    applyFilterForCondition(fieldName, value, type);
}

void RixMemTableView::applyFilterByFieldCondition(const QString &fieldName, const QString &conditionText)
{
    double value = 0;
    ConditionType type = Greater;
    if (extractConditionValue(conditionText, value, type))
        applyFilterForCondition(fieldName, value, type);
}

bool RixMemTableView::applyFilterForFirstOne(const QString &fieldName, const QVariant &value)
{
    const QList<QVariant> values = getUniqueValues(fieldName);
    if (values.isEmpty() || compare(value, values.constLast()) > 0)
        return false;
    for (const QVariant &unique : values) {
        if (compare(value, unique) <= 0) {
            applyFilterForEqual(fieldName, unique);
            break;
        }
    }
    return !d->records.isEmpty();
}

bool RixMemTableView::applyFilterForLeastOne(const QString &fieldName, const QVariant &value)
{
    const QList<QVariant> values = getUniqueValues(fieldName);
    if (!values.isEmpty()) {
        if (compare(value, values.constLast()) > 0) {
            applyFilterForEqual(fieldName, values.constLast());
        } else {
            for (const QVariant &unique : values) {
                if (compare(value, unique) <= 0) {
                    applyFilterForEqual(fieldName, unique);
                    break;
                }
            }
        }
    }
    return !d->records.isEmpty();
}

QList<QVariant> RixMemTableView::getUniqueValues(const QString &fieldName)
{
    const int index = filedIndex(fieldName);
    // Exact repeats are dropped while reading (they would be dropped after sorting anyway), so
    // that only the distinct values are sorted.
    std::vector<QVariant> values;
    QSet<QString> strings;
    QSet<quint64> doubles;
    QSet<int> ints;
    for (const RixMemRecord *record : qAsConst(d->records)) {
        QVariant value = record->getVariant(index);
        if (value.isNull())
            continue;
        switch (value.userType()) {
        case QMetaType::QString: {
            const int before = strings.size();
            strings.insert(*static_cast<const QString *>(value.constData()));
            if (strings.size() == before)
                continue;
            break;
        }
        case QMetaType::Double: {
            const double number = *static_cast<const double *>(value.constData());
            if (std::isnan(number))
                break; // NaN is unequal even to itself
            quint64 bits;
            std::memcpy(&bits, &number, sizeof bits);
            const int before = doubles.size();
            doubles.insert(bits);
            if (doubles.size() == before)
                continue;
            break;
        }
        case QMetaType::Int: {
            const int before = ints.size();
            ints.insert(*static_cast<const int *>(value.constData()));
            if (ints.size() == before)
                continue;
            break;
        }
        default:
            break;
        }
        values.push_back(std::move(value));
    }
    std::vector<int> order(values.size());
    std::iota(order.begin(), order.end(), 0);
    stableSort(order, [&values](int later, int earlier) {
        return compare(values[size_t(later)], values[size_t(earlier)]) < 0;
    });
    QList<QVariant> unique;
    unique.reserve(int(order.size()));
    for (int i : order) {
        const QVariant &value = values[size_t(i)];
        if (unique.isEmpty() || compare(unique.constLast(), value) != 0)
            unique.append(value);
    }
    return unique;
}

QVariant RixMemTableView::calcMaxValue(const QString &fieldName)
{
    RixMemRecord *record = maxRecord(fieldName);
    return record ? record->getVariant(filedIndex(fieldName)) : QVariant();
}

QVariant RixMemTableView::calcMinValue(const QString &fieldName)
{
    RixMemRecord *record = minRecord(fieldName);
    return record ? record->getVariant(filedIndex(fieldName)) : QVariant();
}

RixMemRecord *RixMemTableView::maxRecord(const QString &fieldName)
{
    return extremeRecord(d->records, filedIndex(fieldName), 1);
}

RixMemRecord *RixMemTableView::minRecord(const QString &fieldName)
{
    return extremeRecord(d->records, filedIndex(fieldName), -1);
}

QString RixMemTableView::join(const QString &fieldName, const QString &separator)
{
    const int index = filedIndex(fieldName);
    QStringList texts;
    texts.reserve(d->records.count());
    for (const RixMemRecord *record : qAsConst(d->records))
        texts.append(SefCommon::variantToString(record->getVariant(index)));
    return texts.join(separator);
}

void RixMemTableView::sort(const QString &spec)
{
    QVector<std::pair<QString, bool>> keys;
    const QStringList parts = spec.simplified().split(QLatin1Char(','), Qt::SkipEmptyParts);
    for (const QString &part : parts) {
        const QString key = part.trimmed();
        if (key.isEmpty())
            continue;
        const int blank = key.indexOf(QLatin1Char(' '));
        if (blank > 0)
            keys.append({ key.left(blank), key.mid(blank + 1).toUpper() != QLatin1String("DESC") });
        else
            keys.append({ key, true });
    }
    sort(keys);
}

void RixMemTableView::sort(QVector<std::pair<QString, bool>> keys)
{
    const int count = d->records.count();
    if (count < 2)
        return;
    std::vector<SortKey> sortKeys;
    sortKeys.reserve(size_t(keys.size()));
    for (const auto &key : qAsConst(keys))
        sortKeys.emplace_back(d->records, filedIndex(key.first), key.second);
    std::vector<int> order(static_cast<size_t>(count));
    std::iota(order.begin(), order.end(), 0);
    stableSort(order, [&sortKeys](int a, int b) {
        for (const SortKey &key : sortKeys) {
            const int c = key.compare(a, b);
            if (c != 0)
                return key.ascending() ? c < 0 : c > 0;
        }
        return true; // all keys equal: "before", on purpose
    });
    QList<RixMemRecord *> sorted;
    sorted.reserve(count);
    for (int i : order)
        sorted.append(d->records.at(i));
    d->records = std::move(sorted);
}

void RixMemTableView::sort(std::function<bool(RixMemRecord *, RixMemRecord *)> lessThan)
{
    if (!lessThan || d->records.count() < 2)
        return;
    std::vector<RixMemRecord *> records(d->records.cbegin(), d->records.cend());
    CallingOut calling(d.get());
    stableSort(records,
        [&lessThan](RixMemRecord *later, RixMemRecord *earlier) { return lessThan(later, earlier); });
    QList<RixMemRecord *> sorted;
    sorted.reserve(int(records.size()));
    for (RixMemRecord *record : records) {
        if (!calling.forgotten(record))
            sorted.append(record);
    }
    d->records = std::move(sorted);
}

RixMemRecord *RixMemTableView::findRecord(
    std::function<void(RixMemRecord *, bool &)> filter, NotFoundReturnMode mode)
{
    if (d->records.isEmpty() || !filter)
        return nullptr;
    {
        const QList<RixMemRecord *> records = d->records;
        CallingOut calling(d.get());
        for (RixMemRecord *record : records) {
            if (calling.forgotten(record))
                continue;
            bool found = false;
            filter(record, found);
            if (found && !calling.forgotten(record))
                return record;
        }
    }
    if (d->records.isEmpty())
        return nullptr;
    switch (mode) {
    case ReturnFirst:
        return d->records.constFirst();
    case ReturnLast:
        return d->records.constLast();
    default:
        return nullptr;
    }
}

RixMemRecord *RixMemTableView::findRecordByIntervalCondition(
    const QString &fieldName, double value, NotFoundReturnMode mode)
{
    const int index = filedIndex(fieldName);
    return findRecord(
        [index, value](RixMemRecord *record, bool &found) {
            const QString text = SefCommon::variantToString(record->getVariant(index));
            if (text.isEmpty())
                return;
            double low = 0;
            double upper = 0;
            if (extractIntervalConditionVal(text, QLatin1Char('['), QLatin1Char(']'), low, upper))
                found = value <= upper + tolerance;
            else if (extractIntervalConditionVal(text, QLatin1Char('['), QLatin1Char(')'), low, upper))
                found = upper - value > tolerance;
            // The lower bound is not tested, on purpose: rows are upper limits in view order.
        },
        mode);
}

RixMemRecord *RixMemTableView::findRecordByIntervalConditionEx(
    const QString &fieldName, double value, NotFoundReturnMode mode)
{
    const int index = filedIndex(fieldName);
    return findRecord(
        [index, value](RixMemRecord *record, bool &found) {
            const QString text = SefCommon::variantToString(record->getVariant(index));
            double condition = 0;
            ConditionType type = Greater;
            if (text.isEmpty() || !extractConditionValue(text, condition, type))
                return;
            switch (type) {
            case Greater:
                found = value - condition > tolerance;
                break;
            case GreaterEqual:
                found = condition - value <= tolerance;
                break;
            case Less:
                found = condition - value > tolerance;
                break;
            case LessEqual:
                found = value - condition <= tolerance;
                break;
            }
        },
        mode);
}

bool RixMemTableView::extractConditionValue(const QString &text, double &value, ConditionType &type)
{
    static const QRegularExpression letters(QStringLiteral("[a-zA-Z]*"));
    const QString condition = text.trimmed().remove(letters);
    if (condition.size() < 2)
        return false;
    switch (condition.at(0).unicode()) {
    case 0x2264: // ≤
        type = LessEqual;
        break;
    case '<':
        type = Less;
        break;
    case 0x2265: // ≥
        type = GreaterEqual;
        break;
    case '>':
        type = Greater;
        break;
    default:
        break;
    }
    value = condition.midRef(1).toDouble();
    return true;
}

bool RixMemTableView::extractIntervalConditionVal(
    const QString &text, QChar open, QChar close, double &low, double &upper)
{
    if (text.size() < 2 || text.at(0) != open || text.at(text.size() - 1) != close)
        return false;
    const QStringRef inner = text.midRef(1, text.size() - 2);
    const int comma = inner.indexOf(QLatin1Char(','));
    if (comma < 0)
        return false;
    const QStringRef lowText = inner.left(comma).trimmed();
    const QStringRef upperText = inner.mid(comma + 1).trimmed();
    bool ok = true;
    if (lowText != QString(infinityChar)) {
        bool read = false;
        const double number = lowText.toDouble(&read);
        if (read)
            low = number;
        ok = read;
    }
    if (upperText == QString(infinityChar)) {
        upper = std::numeric_limits<double>::max();
    } else {
        bool read = false;
        const double number = upperText.toDouble(&read);
        if (read)
            upper = number;
        ok = ok && read;
    }
    return ok;
}

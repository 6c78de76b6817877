#pragma once

#include "rixmemtable_p.h"

#include <QList>
#include <QSet>
#include <QString>
#include <QVariant>

#include <cmath>

class RixMemRecord;
class RixMemTable;

// Orderings of QVariant with QVariant::compare()'s exact results, answered inline for the value
// types the tables hold (Double, Int, LongLong, String) and by QVariant itself for the rest.
namespace RixMemValueOrder {

// QVariant::compare() is protected in Qt 5: naming it through a derived class gives a member
// pointer that may be called on any variant.
struct VariantAccess : QVariant
{
    static int qtCompare(const QVariant &a, const QVariant &b)
    {
        int (QVariant::*compare)(const QVariant &) const = &VariantAccess::compare;
        return (a.*compare)(b);
    }
};

inline bool isFiniteNonZero(double v)
{
    const int c = std::fpclassify(v);
    return c == FP_NORMAL || c == FP_SUBNORMAL;
}

// Doubles are equal within qFuzzyCompare() unless one is zero, infinite or NaN; NaN is above
// everything, itself included.
inline int compareDoubles(double a, double b)
{
    if (a == b)
        return 0;
    if (isFiniteNonZero(a) && isFiniteNonZero(b) && qFuzzyCompare(a, b))
        return 0;
    return a < b ? -1 : 1;
}

// Texts differing only in case are "greater" than each other in both directions.
inline int compareStrings(const QString &a, const QString &b)
{
    if (a == b)
        return 0;
    const int r = QString::compare(a, b, Qt::CaseInsensitive);
    return r != 0 ? r : 1;
}

template<typename T>
inline int compareIntegers(T a, T b)
{
    return a == b ? 0 : (a < b ? -1 : 1);
}

// QVariant::compare(a, b).
int compare(const QVariant &a, const QVariant &b);
// a == b.
bool equals(const QVariant &a, const QVariant &b);

} // namespace RixMemValueOrder

class RixMemTableViewPrivate final : public RixMemRecordBorrower
{
public:
    ~RixMemTableViewPrivate() = default;

    void recordsDeleting(const QList<RixMemRecord *> &records) override;
    // Drops the records from the list; while a caller's function runs they are also remembered,
    // so that the loop over its own copy of the list can leave them out.
    void forget(const QList<RixMemRecord *> &records);
    void forget(RixMemRecord *record);

    RixMemTable *table = nullptr;
    QList<RixMemRecord *> records;
    // Nesting depth of calls into caller functions, and the records dropped meanwhile.
    int callingOut = 0;
    QSet<RixMemRecord *> forgottenWhileCalling;
};

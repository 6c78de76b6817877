#pragma once

#include "rixmemrecord.h"

#include <QtGlobal>

#include <cstring>

// Loops over many records reach a separately allocated object and value array per record, so
// they wait on memory more than they compute. These hints start those loads a few records ahead.
// They never fault and change no result: a hint may be dropped by the processor or the compiler.
// Every helper is inlined by force: GCC takes a helper left out of line for one without effects
// and drops the call.
struct RixMemPrefetch
{
    // Records between a record's prefetch and its values' prefetch, and between that and its use.
    static constexpr int valuesAhead = 8;
    static constexpr int recordAhead = 2 * valuesAhead;

    Q_ALWAYS_INLINE static void address(const void *p)
    {
#if defined(__GNUC__) || defined(__clang__)
        __builtin_prefetch(p);
#else
        (void)p;
#endif
    }

    // The record's own fields.
    Q_ALWAYS_INLINE static void record(const RixMemRecord *record)
    {
        address(&record->m_values);
        address(&record->m_refRecord);
    }

    // The head of the record's value array (its header and first few values); reads the record
    // itself, so it comes after record() for the same record. QVector::constData() would read the
    // array's header, the very load to be started: the array's address is the vector's only
    // member.
    Q_ALWAYS_INLINE static void values(const RixMemRecord *record)
    {
        static_assert(sizeof(record->m_values) == sizeof(const char *), "QVector holds one pointer");
        const char *data;
        std::memcpy(&data, &record->m_values, sizeof data);
        address(data);
        address(data + 64);
    }

    // Before record i of items (count of them) is used in a walk of direction step (1 or -1):
    // the hints for the records valuesAhead and recordAhead further on. alive(record) tells
    // whether a record may be read (a caller's function may have deleted it).
    template<typename Iterator, typename Alive>
    Q_ALWAYS_INLINE static void ahead(Iterator items, int count, int i, int step, const Alive &alive)
    {
        const int r = i + step * recordAhead;
        if (uint(r) < uint(count))
            record(items[r]);
        const int v = i + step * valuesAhead;
        if (uint(v) < uint(count) && alive(items[v]))
            values(items[v]);
    }
};

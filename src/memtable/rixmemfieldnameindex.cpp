#include "rixmemfieldnameindex_p.h"

namespace {

enum class Walk
{
    Done,
    Stopped,
    Malformed
};

inline ushort lowerAscii(ushort u)
{
    return ushort(uint(u - 'A') < 26u ? u + 32 : u);
}

// Calls emit(unit) with the UTF-16 units of QString::toLower() of [p, end) without building it.
// toLower maps every code point through its simple lowercase mapping, except U+0130 which
// becomes "i" + U+0307. A lone surrogate answers Malformed at once: toLower() has rules of its
// own for those, so callers fall back to it.
template<typename Emit>
inline Walk walkLower(const QChar *p, const QChar *end, Emit emit)
{
    while (p != end) {
        const ushort u = p->unicode();
        ++p;
        if (u < 0x80) {
            if (!emit(lowerAscii(u)))
                return Walk::Stopped;
            continue;
        }
        uint cp = u;
        if (QChar::isSurrogate(u)) {
            if (!QChar::isHighSurrogate(u) || p == end || !p->isLowSurrogate())
                return Walk::Malformed;
            cp = QChar::surrogateToUcs4(u, p->unicode());
            ++p;
        }
        if (cp == 0x130) {
            if (!emit(ushort('i')) || !emit(ushort(0x307)))
                return Walk::Stopped;
            continue;
        }
        const uint lower = QChar::toLower(cp);
        if (QChar::requiresSurrogates(lower)) {
            if (!emit(QChar::highSurrogate(lower)) || !emit(QChar::lowSurrogate(lower)))
                return Walk::Stopped;
        } else if (!emit(ushort(lower))) {
            return Walk::Stopped;
        }
    }
    return Walk::Done;
}

inline void hashUnit(uint &h, ushort unit)
{
    h = (h ^ unit) * 16777619u;
}

} // namespace

RixMemFieldNameIndex::RixMemFieldNameIndex()
{
    rebuild();
}

uint RixMemFieldNameIndex::hashLowered(const QString &name)
{
    uint h = 2166136261u;
    const QChar *p = name.constData();
    const QChar *const end = p + name.size();
    // Field names are mostly ASCII: lower those units inline, walk the rest.
    for (; p != end && p->unicode() < 0x80; ++p)
        hashUnit(h, lowerAscii(p->unicode()));
    const Walk walk = walkLower(p, end, [&h](ushort unit) {
        hashUnit(h, unit);
        return true;
    });
    if (walk == Walk::Malformed) {
        h = 2166136261u;
        for (const QChar c : name.toLower())
            hashUnit(h, c.unicode());
    }
    return h ^ (h >> 15);
}

bool RixMemFieldNameIndex::equalsLowered(const QString &lowerKey, const QString &name)
{
    const QChar *k = lowerKey.constData();
    const QChar *const kEnd = k + lowerKey.size();
    const QChar *p = name.constData();
    const QChar *const end = p + name.size();
    for (; p != end && p->unicode() < 0x80; ++p, ++k) {
        if (k == kEnd || k->unicode() != lowerAscii(p->unicode()))
            return false;
    }
    const Walk walk = walkLower(p, end, [&k, kEnd](ushort unit) {
        if (k == kEnd || k->unicode() != unit)
            return false;
        ++k;
        return true;
    });
    if (walk == Walk::Malformed)
        return lowerKey == name.toLower();
    return walk == Walk::Done && k == kEnd;
}

int RixMemFieldNameIndex::find(const QString &name, uint hash) const
{
    for (uint slot = hash & m_mask;; slot = (slot + 1) & m_mask) {
        const int at = m_slots.at(int(slot));
        if (at < 0)
            return -1;
        const Entry &entry = m_entries.at(at);
        if (entry.hash == hash && equalsLowered(entry.key, name))
            return at;
    }
}

int RixMemFieldNameIndex::value(const QString &name) const
{
    const int at = find(name, hashLowered(name));
    return at < 0 ? -1 : m_entries.at(at).index;
}

void RixMemFieldNameIndex::insert(const QString &name, int index)
{
    const uint hash = hashLowered(name);
    const int at = find(name, hash);
    if (at >= 0) {
        m_entries[at].index = index;
        return;
    }
    m_entries.append(Entry { name.toLower(), hash, index });
    // Keep the load factor at or below one half so that probing stays short and terminates.
    if (uint(m_entries.size()) * 2 > m_mask + 1) {
        rebuild();
        return;
    }
    uint slot = hash & m_mask;
    while (m_slots.at(int(slot)) >= 0)
        slot = (slot + 1) & m_mask;
    m_slots[int(slot)] = m_entries.size() - 1;
}

void RixMemFieldNameIndex::remove(const QString &name)
{
    const int at = find(name, hashLowered(name));
    if (at < 0)
        return;
    m_entries.remove(at);
    rebuild();
}

void RixMemFieldNameIndex::clear()
{
    m_entries.clear();
    rebuild();
}

void RixMemFieldNameIndex::rebuild()
{
    uint capacity = 16;
    while (capacity < uint(m_entries.size()) * 2)
        capacity *= 2;
    m_mask = capacity - 1;
    m_slots.fill(-1, int(capacity));
    for (int i = 0; i < m_entries.size(); ++i) {
        uint slot = m_entries.at(i).hash & m_mask;
        while (m_slots.at(int(slot)) >= 0)
            slot = (slot + 1) & m_mask;
        m_slots[int(slot)] = i;
    }
}

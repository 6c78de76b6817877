#pragma once

#include <QString>
#include <QVector>

// Case-insensitive name -> index hash. A key is stored as QString::toLower() of the name; a
// lookup lowers the name on the fly, code point by code point, so it never allocates.
class RixMemFieldNameIndex
{
public:
    RixMemFieldNameIndex();

    // The index stored under the name in any case, or -1.
    int value(const QString &name) const;
    // Sets the entry of name (overwriting the entry of a name equal in any case).
    void insert(const QString &name, int index);
    void remove(const QString &name);
    void clear();
    int size() const { return m_entries.size(); }

    // Exposed for the tests of the lowering itself.
    static uint hashLowered(const QString &name);
    static bool equalsLowered(const QString &lowerKey, const QString &name);

private:
    struct Entry
    {
        QString key;
        uint hash;
        int index;
    };

    // Position in m_entries, or -1.
    int find(const QString &name, uint hash) const;
    void rebuild();

    QVector<Entry> m_entries;
    QVector<int> m_slots; // -1 empty, else a position in m_entries; size is a power of two
    uint m_mask = 0;
};

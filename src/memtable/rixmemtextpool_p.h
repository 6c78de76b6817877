#pragma once

#include <QString>

#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

// Lets equal short texts that a loader reads into one column share one string: codes, kinds and
// units repeat over thousands of rows, and one shared block per distinct text saves the memory
// and keeps those few texts in cache when the rows are read again. Sharing is invisible to
// callers: a QString is a value, and changing one copy detaches it.
//
// A column whose texts turn out to be mostly distinct (names, numbers as text) is no longer
// pooled, so that a load of unique texts pays only for the first few lookups.
class RixMemTextPool
{
public:
    explicit RixMemTextPool(int columns);

    // QString::fromUtf8(text, length), the pooled copy when the column has one.
    QString fromUtf8(int column, const char *text, int length);
    // QString(text, length), the pooled copy when the column has one.
    QString fromUtf16(int column, const QChar *text, int length);

private:
    // Lookups take views of the loader's bytes, so that a lookup allocates nothing (a raw-data
    // QByteArray or QString would allocate its header).
    struct Column
    {
        std::unordered_map<std::string_view, QString> byUtf8;
        std::deque<std::string> utf8Keys; // the bytes the byUtf8 keys view
        std::unordered_map<std::u16string_view, QString> byUtf16; // keys view the pooled texts
        int lookups = 0;
        int hits = 0;
        bool enabled = true;
    };

    Column *pooled(int column, int length);
    // Counts a lookup that missed; stops pooling the column once most lookups miss.
    void missed(Column &column);

    std::vector<Column> m_columns;
};

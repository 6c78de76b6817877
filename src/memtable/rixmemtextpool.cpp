#include "rixmemtextpool_p.h"

namespace {

// Longer texts rarely repeat, and hashing them costs more than sharing saves.
constexpr int maxPooledLength = 32;
// Distinct texts kept per column; the common ones are among the first.
constexpr size_t maxPooledTexts = 1024;
// Lookups after which a column whose texts do not repeat stops being pooled.
constexpr int trialLookups = 256;

} // namespace

RixMemTextPool::RixMemTextPool(int columns)
    : m_columns(size_t(qMax(columns, 0)))
{ }

RixMemTextPool::Column *RixMemTextPool::pooled(int column, int length)
{
    if (length <= 0 || length > maxPooledLength || column < 0 || size_t(column) >= m_columns.size())
        return nullptr;
    Column &c = m_columns[size_t(column)];
    if (!c.enabled)
        return nullptr;
    ++c.lookups;
    return &c;
}

void RixMemTextPool::missed(Column &column)
{
    if (column.lookups >= trialLookups && column.hits * 2 < column.lookups) {
        column.enabled = false;
        column.byUtf8 = {};
        column.utf8Keys = {};
        column.byUtf16 = {};
    }
}

QString RixMemTextPool::fromUtf8(int column, const char *text, int length)
{
    Column *c = pooled(column, length);
    if (!c)
        return QString::fromUtf8(text, length);
    const auto it = c->byUtf8.find(std::string_view(text, size_t(length)));
    if (it != c->byUtf8.end()) {
        ++c->hits;
        return it->second;
    }
    QString decoded = QString::fromUtf8(text, length);
    if (c->byUtf8.size() < maxPooledTexts) {
        const std::string &key = c->utf8Keys.emplace_back(text, size_t(length));
        c->byUtf8.emplace(std::string_view(key), decoded);
    }
    missed(*c);
    return decoded;
}

QString RixMemTextPool::fromUtf16(int column, const QChar *text, int length)
{
    Column *c = pooled(column, length);
    if (!c)
        return QString(text, length);
    const auto it
        = c->byUtf16.find(std::u16string_view(reinterpret_cast<const char16_t *>(text), size_t(length)));
    if (it != c->byUtf16.end()) {
        ++c->hits;
        return it->second;
    }
    QString copy(text, length);
    if (c->byUtf16.size() < maxPooledTexts) {
        // The pooled string is never changed in place (its users hold copies), so its characters
        // stay where the key views them.
        c->byUtf16.emplace(
            std::u16string_view(reinterpret_cast<const char16_t *>(copy.constData()), size_t(length)), copy);
    }
    missed(*c);
    return copy;
}

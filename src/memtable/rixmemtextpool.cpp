#include "rixmemtextpool_p.h"

namespace {

// Longer texts rarely repeat, and hashing them costs more than sharing saves.
constexpr int maxPooledLength = 32;
// Distinct texts kept per column; the common ones are among the first.
constexpr int maxPooledTexts = 1024;
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
    return c.enabled ? &c : nullptr;
}

void RixMemTextPool::count(Column &column, bool hit)
{
    ++column.lookups;
    if (hit)
        ++column.hits;
    if (column.lookups >= trialLookups && column.hits * 2 < column.lookups) {
        column.enabled = false;
        column.byUtf8.clear();
        column.byText.clear();
    }
}

QString RixMemTextPool::fromUtf8(int column, const char *text, int length)
{
    Column *c = pooled(column, length);
    if (!c)
        return QString::fromUtf8(text, length);
    const auto it = c->byUtf8.constFind(QByteArray::fromRawData(text, length));
    if (it != c->byUtf8.constEnd()) {
        const QString found = it.value(); // count() may empty the pool
        count(*c, true);
        return found;
    }
    QString decoded = QString::fromUtf8(text, length);
    if (c->byUtf8.size() < maxPooledTexts)
        c->byUtf8.insert(QByteArray(text, length), decoded);
    count(*c, false);
    return decoded;
}

QString RixMemTextPool::fromUtf16(int column, const QChar *text, int length)
{
    Column *c = pooled(column, length);
    if (!c)
        return QString(text, length);
    const auto it = c->byText.constFind(QString::fromRawData(text, length));
    if (it != c->byText.constEnd()) {
        const QString found = *it; // count() may empty the pool
        count(*c, true);
        return found;
    }
    QString copy(text, length);
    if (c->byText.size() < maxPooledTexts)
        c->byText.insert(copy);
    count(*c, false);
    return copy;
}

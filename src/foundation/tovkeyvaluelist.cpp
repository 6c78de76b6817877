#include "tovkeyvaluelist.h"
#include "tovkeyvaluelist_p.h"

#include <sefcommon.h>

#include <limits>

TovKeyValueList::TovKeyValueList()
    : d(new TovKeyValueListPrivate)
{ }

TovKeyValueList::TovKeyValueList(const QString &text)
    : d(new TovKeyValueListPrivate)
{
    loadFromString(text, QLatin1Char(';'));
}

TovKeyValueList::TovKeyValueList(std::initializer_list<std::pair<QString, QVariant>> entries)
    : d(new TovKeyValueListPrivate)
{
    for (const auto &entry : entries)
        setValue(entry.first, entry.second);
}

TovKeyValueList::TovKeyValueList(const TovKeyValueList &other) = default;
TovKeyValueList &TovKeyValueList::operator=(const TovKeyValueList &other) = default;
TovKeyValueList::~TovKeyValueList() = default;

void TovKeyValueList::setValue(const QString &key, const QVariant &value)
{
    d->ensureMap().insert(key, value);
}

TovKeyValueList &TovKeyValueList::addVal(const QString &key, const QVariant &value)
{
    setValue(key, value);
    return *this;
}

TovKeyValueList &TovKeyValueList::add(const QString &key, const QVariant &value)
{
    return addVal(key, value);
}

void TovKeyValueList::remove(const QString &key)
{
    if (d->map)
        d->map->remove(key);
}

void TovKeyValueList::clear()
{
    if (d->map)
        d->map->clear();
}

void TovKeyValueList::merge(const TovKeyValueList &other)
{
    if (!other.d->map)
        return;
    // A copy, so that merging a list into a handle of itself is harmless.
    const TovKeyValueListPrivate::Map entries = *other.d->map;
    TovKeyValueListPrivate::Map &map = d->ensureMap();
    for (auto it = entries.cbegin(); it != entries.cend(); ++it)
        map.insert(it.key(), it.value());
}

void TovKeyValueList::assign(const TovKeyValueList &other)
{
    const TovKeyValueListPrivate::Map entries = other.d->map ? *other.d->map : TovKeyValueListPrivate::Map();
    d->ensureMap() = entries;
}

QVariant TovKeyValueList::getValue(const QString &key) const
{
    if (!d->map)
        return QVariant();
    return d->map->value(key);
}

bool TovKeyValueList::exists(const QString &key) const
{
    return d->map && d->map->contains(key);
}

bool TovKeyValueList::isValid() const
{
    return d->map != nullptr;
}

QString TovKeyValueList::asString(const QString &key, const QString &defaultValue) const
{
    const QVariant value = getValue(key);
    return value.isValid() ? SefCommon::variantToString(value) : defaultValue;
}

bool TovKeyValueList::asBoolean(const QString &key, bool defaultValue) const
{
    const QVariant value = getValue(key);
    return value.isValid() ? value.toBool() : defaultValue;
}

int TovKeyValueList::asInteger(const QString &key, int defaultValue) const
{
    const QVariant value = getValue(key);
    if (!value.isValid())
        return defaultValue;
    // Through 64 bits: a variant's own toInt() truncates wider numbers and still reports success.
    bool ok = false;
    const qint64 result = value.toLongLong(&ok);
    return ok && result >= std::numeric_limits<int>::min() && result <= std::numeric_limits<int>::max()
        ? int(result)
        : defaultValue;
}

qint64 TovKeyValueList::asInt64(const QString &key, qint64 defaultValue) const
{
    const QVariant value = getValue(key);
    if (!value.isValid())
        return defaultValue;
    bool ok = false;
    const qint64 result = value.toLongLong(&ok);
    return ok ? result : defaultValue;
}

bool TovKeyValueList::isEqual(const TovKeyValueList &other) const
{
    if (!d->map)
        return !other.d->map || other.d->map->isEmpty();
    if (!other.d->map)
        return d->map->isEmpty();
    if (d->map->size() != other.d->map->size())
        return false;
    for (auto it = d->map->cbegin(); it != d->map->cend(); ++it) {
        if (it.value() != other.getValue(it.key()))
            return false;
    }
    return true;
}

void TovKeyValueList::saveToString(QString &text, QChar separator) const
{
    if (!d->map)
        return;
    bool first = true;
    for (auto it = d->map->cbegin(); it != d->map->cend(); ++it) {
        if (!first)
            text += separator;
        first = false;
        text += it.key() + QLatin1Char('=') + SefCommon::variantToString(it.value());
    }
}

void TovKeyValueList::saveToDiffString(QString &text, const TovKeyValueList &other) const
{
    if (!d->map)
        return;
    bool first = true;
    for (auto it = d->map->cbegin(); it != d->map->cend(); ++it) {
        if (it.value() == other.getValue(it.key()))
            continue;
        if (!first)
            text += QLatin1Char(';');
        first = false;
        text += it.key() + QLatin1Char('=') + SefCommon::variantToString(it.value());
    }
}

void TovKeyValueList::loadFromString(const QString &text, QChar separator)
{
    if (d->map)
        d->map->clear();
    if (text.isEmpty())
        return;
    int start = 0;
    const int size = text.size();
    while (start <= size) {
        int end = text.indexOf(separator, start);
        if (end < 0)
            end = size;
        const int eq = text.midRef(start, end - start).indexOf(QLatin1Char('='));
        if (eq >= 0)
            d->ensureMap().insert(text.mid(start, eq), text.mid(start + eq + 1, end - start - eq - 1));
        start = end + 1;
    }
}

#pragma once

#include "tovgeneralutility_export.h"

#include <QExplicitlySharedDataPointer>
#include <QString>
#include <QVariant>

#include <initializer_list>
#include <utility>

class TovKeyValueListPrivate;

// A bag of key=value entries in ascending key order (keys case-sensitive), saved as one line of
// text with a caller-chosen separator.
//
// Copies share their entries on purpose: a change made through one handle is seen through every
// copy. Only assign() makes an independent deep copy. The list is "valid" once an entry has been
// written, even if it was cleared afterwards.
class TOVGENERALUTILITY_EXPORT TovKeyValueList
{
public:
    TovKeyValueList();
    // Loads text with the separator ';'.
    explicit TovKeyValueList(const QString &text);
    // Sets the pairs in the order given; a later pair replaces an earlier one with an equal key.
    TovKeyValueList(std::initializer_list<std::pair<QString, QVariant>> entries);
    TovKeyValueList(const TovKeyValueList &other);
    TovKeyValueList &operator=(const TovKeyValueList &other);
    ~TovKeyValueList();

    void setValue(const QString &key, const QVariant &value);
    TovKeyValueList &addVal(const QString &key, const QVariant &value);
    TovKeyValueList &add(const QString &key, const QVariant &value);
    void remove(const QString &key);
    // Removes all entries; the list stays valid.
    void clear();
    // Sets every entry of other into this list; keys only in this list stay.
    void merge(const TovKeyValueList &other);
    // Replaces the entries by a deep copy of other's.
    void assign(const TovKeyValueList &other);

    // An invalid variant when the key is missing.
    QVariant getValue(const QString &key) const;
    bool exists(const QString &key) const;
    bool isValid() const;
    QString asString(const QString &key, const QString &defaultValue = QString()) const;
    bool asBoolean(const QString &key, bool defaultValue = false) const;
    // defaultValue also when the stored value does not convert to an integer.
    int asInteger(const QString &key, int defaultValue = 0) const;
    qint64 asInt64(const QString &key, qint64 defaultValue = 0) const;
    // Same entries with equal values; a list without entries equals any other empty one.
    bool isEqual(const TovKeyValueList &other) const;

    // Appends "key=value" entries to text (not emptied first), separator between entries only.
    void saveToString(QString &text, QChar separator = QLatin1Char(';')) const;
    // Appends, separated by ';', only the entries whose value differs from other's.
    void saveToDiffString(QString &text, const TovKeyValueList &other) const;
    // Replaces the entries by the key=value parts of text; parts without '=' are skipped and
    // neither side is trimmed. Values are stored as text.
    void loadFromString(const QString &text, QChar separator = QLatin1Char(';'));

private:
    QExplicitlySharedDataPointer<TovKeyValueListPrivate> d;
};

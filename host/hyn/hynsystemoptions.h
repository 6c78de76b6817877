#pragma once

#include "tovhost_export.h"

#include <QHash>
#include <QMutex>
#include <QString>
#include <QVariant>

// The host's process-wide options store: key text -> value, shared by every module of the process.
// Keys are compared exactly. Thread-safe; a read-modify-write by a caller is not atomic.
class TOVHOST_EXPORT HynSystemOptions
{
public:
    // Created on first use, never destroyed.
    static HynSystemOptions *getInstance();

    // A null QVariant when the key was never set.
    QVariant getSysOption(const QString &key) const;
    // notify tells the host's option listeners about the change; this store keeps no listeners.
    void setSysOption(const QString &key, const QVariant &value, bool notify);

    // Setup: forgets every key.
    void clear();

private:
    HynSystemOptions() = default;
    HynSystemOptions(const HynSystemOptions &) = delete;
    HynSystemOptions &operator=(const HynSystemOptions &) = delete;

    mutable QMutex m_mutex;
    QHash<QString, QVariant> m_options;
};

#pragma once

#include "tovhost_export.h"

#include <QMutex>
#include <QSet>
#include <QString>

// The host's service for translating texts stored in its databases and drawings: whether
// translation is wanted, and which translation contexts exist. Thread-safe.
class TOVHOST_EXPORT HynDBTranslations
{
public:
    // Created on first use, never destroyed.
    static HynDBTranslations *getInstance();

    bool isNeedTranslate() const;
    // Exact, case-sensitive match.
    bool isContextExist(const QString &context) const;

    // Setup.
    void setNeedTranslate(bool needTranslate);
    void addContext(const QString &context);
    // Setup: no contexts, no translation.
    void clear();

private:
    HynDBTranslations() = default;
    HynDBTranslations(const HynDBTranslations &) = delete;
    HynDBTranslations &operator=(const HynDBTranslations &) = delete;

    mutable QMutex m_mutex;
    bool m_needTranslate = false;
    QSet<QString> m_contexts;
};

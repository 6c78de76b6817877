#pragma once

#include "tovhost_export.h"

#include <rukparser.h>

#include <QString>

#include <memory>

struct RukEngineInstance;

// A handle to an instance of the expression engine, from rukEngine(name).
class TOVHOST_EXPORT RukEngine
{
public:
    QString name() const;
    RukParser createParser() const;

    bool operator==(const RukEngine &other) const { return m_instance == other.m_instance; }
    bool operator!=(const RukEngine &other) const { return m_instance != other.m_instance; }

private:
    explicit RukEngine(std::shared_ptr<RukEngineInstance> instance);
    std::shared_ptr<RukEngineInstance> m_instance;

    friend TOVHOST_EXPORT RukEngine rukEngine(const QString &name);
};

// The engine instance of that name, made on first use; the empty name is the default instance.
// Thread-safe.
TOVHOST_EXPORT RukEngine rukEngine(const QString &name = QString());

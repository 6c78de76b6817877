#include "rukengine.h"

#include "rukparser_p.h"

#include <QHash>

#include <mutex>

struct RukEngineInstance
{
    QString name;
};

RukEngine::RukEngine(std::shared_ptr<RukEngineInstance> instance)
    : m_instance(std::move(instance))
{ }

QString RukEngine::name() const
{
    return m_instance->name;
}

RukParser RukEngine::createParser() const
{
    return RukParser(std::make_shared<RukParserPrivate>());
}

RukEngine rukEngine(const QString &name)
{
    static std::mutex mutex;
    static QHash<QString, std::shared_ptr<RukEngineInstance>> instances;
    std::lock_guard<std::mutex> lock(mutex);
    std::shared_ptr<RukEngineInstance> &instance = instances[name];
    if (!instance)
        instance = std::make_shared<RukEngineInstance>(RukEngineInstance { name });
    return RukEngine(instance);
}

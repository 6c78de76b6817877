#include "hyndbtranslations.h"

HynDBTranslations *HynDBTranslations::getInstance()
{
    static HynDBTranslations *const instance = new HynDBTranslations;
    return instance;
}

bool HynDBTranslations::isNeedTranslate() const
{
    QMutexLocker lock(&m_mutex);
    return m_needTranslate;
}

bool HynDBTranslations::isContextExist(const QString &context) const
{
    QMutexLocker lock(&m_mutex);
    return m_contexts.contains(context);
}

void HynDBTranslations::setNeedTranslate(bool needTranslate)
{
    QMutexLocker lock(&m_mutex);
    m_needTranslate = needTranslate;
}

void HynDBTranslations::addContext(const QString &context)
{
    QMutexLocker lock(&m_mutex);
    m_contexts.insert(context);
}

void HynDBTranslations::clear()
{
    QMutexLocker lock(&m_mutex);
    m_needTranslate = false;
    m_contexts.clear();
}

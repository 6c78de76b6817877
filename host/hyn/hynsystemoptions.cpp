#include "hynsystemoptions.h"

HynSystemOptions *HynSystemOptions::getInstance()
{
    static HynSystemOptions *const instance = new HynSystemOptions;
    return instance;
}

QVariant HynSystemOptions::getSysOption(const QString &key) const
{
    QMutexLocker lock(&m_mutex);
    return m_options.value(key);
}

void HynSystemOptions::setSysOption(const QString &key, const QVariant &value, bool notify)
{
    Q_UNUSED(notify)
    QMutexLocker lock(&m_mutex);
    m_options.insert(key, value);
}

void HynSystemOptions::clear()
{
    QMutexLocker lock(&m_mutex);
    m_options.clear();
}

#include "ruknodemapinfos.h"

void RukNodeMapInfos::insert(const QString &code, const RukData &value)
{
    m_values.insert(code, value);
}

void RukNodeMapInfos::remove(const QString &code)
{
    m_values.remove(code);
}

void RukNodeMapInfos::clear()
{
    m_values.clear();
}

const RukData *RukNodeMapInfos::find(const QString &code) const
{
    const auto it = m_values.constFind(code);
    return it == m_values.constEnd() ? nullptr : &it.value();
}

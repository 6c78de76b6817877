#include "rixmemfield.h"

#include "rixmemfields.h"
#include "tovkeyvaluelist.h"

RixMemField::RixMemField() = default;
RixMemField::~RixMemField() = default;

int RixMemField::fieldIndex() const
{
    return m_owner ? m_owner->filedIndex(m_fieldName) : -1;
}

void RixMemField::assign(RixMemField *other)
{
    if (!other || other == this)
        return;
    m_fieldName = other->m_fieldName;
    m_displayName = other->m_displayName;
    m_dataType = other->m_dataType;
    m_visible = other->m_visible;
    m_readonly = other->m_readonly;
    m_inputMode = other->m_inputMode;
    m_constraintExpr = other->m_constraintExpr;
    m_constraintMsg = other->m_constraintMsg;
    m_pickList = other->m_pickList;
    m_order = other->m_order;
    if (other->m_extData)
        extDataObj()->assign(*other->m_extData);
    else
        freeExtData();
}

QString RixMemField::extData(const QString &key) const
{
    return m_extData ? m_extData->asString(key) : QString();
}

void RixMemField::setExtData(const QString &key, const QVariant &value)
{
    extDataObj()->setValue(key, value);
}

TovKeyValueList *RixMemField::extDataObj()
{
    if (!m_extData)
        m_extData = std::make_unique<TovKeyValueList>();
    return m_extData.get();
}

void RixMemField::initExtData(const QString &text)
{
    if (text.isEmpty())
        freeExtData();
    else
        extDataObj()->loadFromString(text, QLatin1Char(';'));
}

QString RixMemField::extDataToString() const
{
    QString text;
    if (m_extData)
        m_extData->saveToString(text, QLatin1Char(';'));
    return text;
}

void RixMemField::freeExtData()
{
    m_extData.reset();
}

#include "rixmemtablefilterrule.h"

RixMemTableFilterRule::RixMemTableFilterRule(
    const QString &fieldName, ConditionType conditionType, const QVariant &fieldValue)
    : m_fieldName(fieldName)
    , m_fieldValue(fieldValue)
    , m_conditionType(conditionType)
{ }

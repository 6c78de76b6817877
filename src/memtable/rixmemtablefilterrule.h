#pragma once

#include "tovgeneralutility_export.h"

#include <QString>
#include <QVariant>

// One named condition of a filter-rule list: the records whose field fieldName meets fieldValue.
class TOVGENERALUTILITY_EXPORT RixMemTableFilterRule
{
public:
    // Based on int: a value outside the enum is kept (applying it throws).
    enum ConditionType : int
    {
        // Keeps the records equal to the value.
        Equal = 0,
        // Keeps the records of the smallest value not below the given one, or of the largest
        // value when the given one is above them all, so that at least one record stays.
        LeastOne = 1,
    };

    RixMemTableFilterRule() = default;
    RixMemTableFilterRule(
        const QString &fieldName, ConditionType conditionType, const QVariant &fieldValue = QVariant());

    QString fieldName() const { return m_fieldName; }
    void setFieldName(const QString &fieldName) { m_fieldName = fieldName; }
    // A null value leaves the rule out when it is applied.
    QVariant fieldValue() const { return m_fieldValue; }
    void setFieldValue(const QVariant &fieldValue) { m_fieldValue = fieldValue; }
    ConditionType conditionType() const { return m_conditionType; }
    void setConditionType(ConditionType conditionType) { m_conditionType = conditionType; }

private:
    QString m_fieldName;
    QVariant m_fieldValue;
    ConditionType m_conditionType = Equal;
};

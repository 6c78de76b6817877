#include "rixmemtablefilterrules.h"

#include <sefcommon.h>

#include <QStringList>

RixMemTableFilterRules::RixMemTableFilterRules() = default;

RixMemTableFilterRules::~RixMemTableFilterRules()
{
    clear();
}

RixMemTableFilterRule *RixMemTableFilterRules::add(
    const QString &fieldName, RixMemTableFilterRule::ConditionType type)
{
    return add(fieldName, type, QVariant());
}

RixMemTableFilterRule *RixMemTableFilterRules::add(
    const QString &fieldName, RixMemTableFilterRule::ConditionType type, const QVariant &value)
{
    auto *rule = new RixMemTableFilterRule(fieldName, type, value);
    m_rules.append(rule);
    return rule;
}

bool RixMemTableFilterRules::exists(const QString &fieldName) const
{
    return indexOf(fieldName) >= 0;
}

RixMemTableFilterRule *RixMemTableFilterRules::find(const QString &fieldName) const
{
    const int index = indexOf(fieldName);
    return index < 0 ? nullptr : m_rules.at(index);
}

int RixMemTableFilterRules::indexOf(const QString &fieldName) const
{
    for (int i = 0; i < m_rules.count(); ++i) {
        if (m_rules.at(i)->fieldName().compare(fieldName, Qt::CaseInsensitive) == 0)
            return i;
    }
    return -1;
}

QVariant RixMemTableFilterRules::getValue(const QString &fieldName) const
{
    const RixMemTableFilterRule *rule = find(fieldName);
    return rule ? rule->fieldValue() : QVariant();
}

void RixMemTableFilterRules::setValue(const QString &fieldName, const QVariant &value)
{
    if (RixMemTableFilterRule *rule = find(fieldName))
        rule->setFieldValue(value);
}

void RixMemTableFilterRules::remove(const QString &fieldName)
{
    removeAt(indexOf(fieldName));
}

void RixMemTableFilterRules::removeAt(int index)
{
    if (index < 0 || index >= m_rules.count())
        return;
    delete m_rules.takeAt(index);
}

void RixMemTableFilterRules::clear()
{
    qDeleteAll(m_rules);
    m_rules.clear();
}

QString RixMemTableFilterRules::toString() const
{
    QStringList pieces;
    pieces.reserve(m_rules.count());
    for (const RixMemTableFilterRule *rule : m_rules)
        pieces.append(
            QStringLiteral("%1=%2").arg(rule->fieldName(), SefCommon::variantToString(rule->fieldValue())));
    return pieces.join(QLatin1Char(';'));
}

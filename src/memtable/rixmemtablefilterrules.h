#pragma once

#include "tovgeneralutility_export.h"

#include "rixmemtablefilterrule.h"

#include <QList>
#include <QString>
#include <QVariant>

// A list of filter rules, applied in order by RixMemTableView::applyFilter(). Owns its rules.
// Names are looked up case-insensitively; of several rules with one name the first answers.
class TOVGENERALUTILITY_EXPORT RixMemTableFilterRules
{
public:
    RixMemTableFilterRules();
    ~RixMemTableFilterRules();
    RixMemTableFilterRules(const RixMemTableFilterRules &) = delete;
    RixMemTableFilterRules &operator=(const RixMemTableFilterRules &) = delete;

    // Appends a rule (also when one of that name exists) and answers it; the list owns it.
    RixMemTableFilterRule *add(const QString &fieldName, RixMemTableFilterRule::ConditionType type);
    RixMemTableFilterRule *add(
        const QString &fieldName, RixMemTableFilterRule::ConditionType type, const QVariant &value);
    bool exists(const QString &fieldName) const;
    // Null / -1 when there is no rule of that name.
    RixMemTableFilterRule *find(const QString &fieldName) const;
    int indexOf(const QString &fieldName) const;
    // Null for an unknown name.
    QVariant getValue(const QString &fieldName) const;
    // An unknown name is ignored.
    void setValue(const QString &fieldName, const QVariant &value);
    // Deletes the first rule of that name.
    void remove(const QString &fieldName);
    // Out of range is ignored.
    void removeAt(int index);
    void clear();
    // No range check.
    RixMemTableFilterRule *at(int index) const { return m_rules.at(index); }
    int count() const { return m_rules.count(); }
    // "name=value" per rule, in order, joined with ';'.
    QString toString() const;

private:
    QList<RixMemTableFilterRule *> m_rules;
};

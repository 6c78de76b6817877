#pragma once

#include "tovgeneralutility_export.h"

#include <QList>
#include <QStringList>
#include <QVariant>

#include <memory>

class RixMemField;
class RixMemFieldNameIndex;

// The ordered column set of a memory table. A field's position is its index, which is also the
// index of its value in every record. Names are looked up case-insensitively; of two names that
// differ only in case, the later-added field wins the lookup. Owns its fields.
class TOVGENERALUTILITY_EXPORT RixMemFields
{
public:
    RixMemFields();
    // Copies hold new fields, never shared ones.
    RixMemFields(const RixMemFields &other);
    RixMemFields &operator=(const RixMemFields &other);
    ~RixMemFields();

    // Takes ownership and answers the new index; null answers -1.
    int addField(RixMemField *field);
    RixMemField *addField(const QString &fieldName, const QString &displayName, QVariant::Type dataType);
    // Index of the field named name in any case, or -1. Does not allocate.
    int filedIndex(const QString &name) const;
    RixMemField *findField(const QString &name);
    // Looked up by the field's name, not by identity; null answers -1.
    int indexOf(const RixMemField *field) const;
    // No range check.
    RixMemField *items(int index) const { return m_fields.at(index); }
    RixMemField *operator[](int index) const { return m_fields.at(index); }
    int count() const { return m_fields.count(); }
    bool isEmpty() const { return m_fields.isEmpty(); }
    QStringList fieldNames();

    void remove(RixMemField *field);
    // Deletes the field at index; the last field takes its place (the column order changes, the
    // other indexes stay). Record values are not touched. -1 is ignored.
    void removeAt(int index);
    void clear();
    // Replaces the fields by copies of other's.
    void assign(RixMemFields *other);

protected:
    void deleteFiled(RixMemField *field);

private:
    QList<RixMemField *> m_fields;
    std::unique_ptr<RixMemFieldNameIndex> m_nameIndex;
};

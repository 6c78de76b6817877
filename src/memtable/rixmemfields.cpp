#include "rixmemfields.h"

#include "rixmemfield.h"
#include "rixmemfieldnameindex_p.h"

RixMemFields::RixMemFields()
    : m_nameIndex(std::make_unique<RixMemFieldNameIndex>())
{ }

RixMemFields::RixMemFields(const RixMemFields &other)
    : RixMemFields()
{
    assign(const_cast<RixMemFields *>(&other));
}

RixMemFields &RixMemFields::operator=(const RixMemFields &other)
{
    assign(const_cast<RixMemFields *>(&other));
    return *this;
}

RixMemFields::~RixMemFields()
{
    clear();
}

int RixMemFields::addField(RixMemField *field)
{
    if (!field)
        return -1;
    const int index = m_fields.count();
    m_fields.append(field);
    m_nameIndex->insert(field->fieldName(), index);
    field->m_owner = this;
    return index;
}

RixMemField *RixMemFields::addField(
    const QString &fieldName, const QString &displayName, QVariant::Type dataType)
{
    auto *field = new RixMemField;
    field->setFieldName(fieldName);
    field->setDisplayName(displayName);
    field->setDataType(dataType);
    addField(field);
    return field;
}

int RixMemFields::filedIndex(const QString &name) const
{
    return m_nameIndex->value(name);
}

RixMemField *RixMemFields::findField(const QString &name)
{
    const int index = filedIndex(name);
    return index < 0 ? nullptr : m_fields.at(index);
}

int RixMemFields::indexOf(const RixMemField *field) const
{
    return field ? filedIndex(field->fieldName()) : -1;
}

QStringList RixMemFields::fieldNames()
{
    QStringList names;
    names.reserve(m_fields.count());
    for (const RixMemField *field : qAsConst(m_fields))
        names.append(field->fieldName());
    return names;
}

void RixMemFields::remove(RixMemField *field)
{
    removeAt(indexOf(field));
}

void RixMemFields::removeAt(int index)
{
    if (index < 0 || index >= m_fields.count())
        return;
    RixMemField *field = m_fields.at(index);
    m_nameIndex->remove(field->fieldName());
    deleteFiled(field);
    const int last = m_fields.count() - 1;
    if (index != last) {
        // Swap-removal keeps every other field's index valid.
        m_fields[index] = m_fields.at(last);
        m_nameIndex->insert(m_fields.at(index)->fieldName(), index);
    }
    m_fields.removeLast();
}

void RixMemFields::clear()
{
    m_nameIndex->clear();
    for (RixMemField *field : qAsConst(m_fields))
        deleteFiled(field);
    m_fields.clear();
}

void RixMemFields::assign(RixMemFields *other)
{
    if (!other || other == this)
        return;
    clear();
    for (RixMemField *source : qAsConst(other->m_fields)) {
        auto *field = new RixMemField;
        field->assign(source);
        addField(field);
    }
}

void RixMemFields::deleteFiled(RixMemField *field)
{
    if (!field)
        return;
    field->m_owner = nullptr;
    delete field;
}

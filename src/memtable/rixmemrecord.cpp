#include "rixmemrecord.h"

#include "rixmemexprtypes_p.h"
#include "rixmemfield.h"
#include "rixmemfieldconstraintcheckparser.h"
#include "rixmemfields.h"
#include "rixmemtable.h"
#include "rixmemtable_p.h"

#include <sefcommon.h>
#include <tovexception.h>

RixMemRecord::RixMemRecord(RixMemTable *table)
    : m_table(table)
{
    if (table)
        m_values.resize(table->fields()->count());
}

RixMemRecord::~RixMemRecord()
{
    if (RixMemTable *owner = m_ownerTable) {
        emit owner->onBeforeRemove(this);
        owner->d->records.removeAll(this);
        emit owner->onAfterRemove(this);
    }
}

RixMemTable *RixMemRecord::table() const
{
    return m_ownerTable ? m_ownerTable : m_table;
}

int RixMemRecord::index() const
{
    return m_ownerTable ? m_ownerTable->indexOf(this) : -1;
}

QVariant RixMemRecord::getVariant(int index) const
{
    return effectiveValue(index);
}

const QVariant &RixMemRecord::effectiveValue(int index) const
{
    static const QVariant null;
    const RixMemRecord *record = this;
    // Follows the reference chain iteratively: a long chain must not exhaust the stack.
    for (;;) {
        if (index < 0 || index >= record->m_values.size())
            return null;
        const QVariant &value = record->m_values.at(index);
        if (!record->m_refRecord || !rixIsNull(value))
            return value;
        record = record->m_refRecord;
    }
}

bool RixMemRecord::usesFields(const RixMemFields *fields) const
{
    return m_table && m_table->fields() == fields;
}

QVariant RixMemRecord::getVariant(const QString &name) const
{
    return getVariant(filedIndex(name));
}

QVariant RixMemRecord::getVariant(const wchar_t *name) const
{
    return getVariant(filedIndex(name));
}

void RixMemRecord::setVariant(int index, const QVariant &value)
{
    if (m_refRecord && !value.isNull() && m_refRecord->getVariant(index) == value)
        m_values[index] = QVariant();
    else
        m_values[index] = value;
}

void RixMemRecord::setVariant(QString name, const QVariant &value)
{
    const int index = filedIndex(name);
    if (index >= 0 && index < m_values.size())
        setVariant(index, value);
}

QString RixMemRecord::asString(int index) const
{
    return SefCommon::variantToString(getVariant(index));
}

QString RixMemRecord::asString(const QString &name) const
{
    return asString(filedIndex(name));
}

QString RixMemRecord::asString(const wchar_t *name) const
{
    return asString(filedIndex(name));
}

int RixMemRecord::asInteger(const QString &name) const
{
    return getVariant(name).toInt();
}

int RixMemRecord::asInteger(const wchar_t *name) const
{
    return getVariant(name).toInt();
}

double RixMemRecord::asDouble(const QString &name) const
{
    return getVariant(name).toDouble();
}

double RixMemRecord::asDouble(const wchar_t *name) const
{
    return getVariant(name).toDouble();
}

bool RixMemRecord::asBoolean(const QString &name) const
{
    return getVariant(name).toBool();
}

bool RixMemRecord::asBoolean(const wchar_t *name) const
{
    return getVariant(name).toBool();
}

void RixMemRecord::setAsString(int index, const QString &value, bool check)
{
    // An empty entry goes on even when unchanged, so that a requested check sees it.
    if (asString(index) == value && !(value.isEmpty() && check))
        return;
    if (check)
        checkValue(index, value);
    QVariant variant(value);
    if (m_needConvert && m_table) {
        RixMemFields *fields = m_table->fields();
        const QVariant::Type type
            = index < fields->count() ? fields->items(index)->dataType() : QVariant::Invalid;
        if (type != QVariant::Invalid && variant.canConvert(int(type))) {
            QVariant converted = variant;
            // A text that does not convert is stored as it is.
            if (converted.convert(int(type)))
                variant = converted;
        }
    }
    setVariant(index, variant);
}

void RixMemRecord::setAsString(const QString &name, const QString &value, bool check)
{
    const int index = filedIndex(name);
    if (index >= 0 && index < m_values.size())
        setAsString(index, value, check);
}

void RixMemRecord::setAsString(const wchar_t *name, const QString &value, bool check)
{
    setAsString(QString::fromWCharArray(name), value, check);
}

QVariant RixMemRecord::asExprValue(const QString &name, RixMemRecordExprVarQuerier *querier)
{
    const QVariant value = getVariant(name);
    if (value.isNull() || value.type() != QVariant::String)
        return value;
    const QString text = value.toString();
    if (text.isEmpty() || SefCommon::isNumeric(text))
        return value;
    RixMemTable *table = m_ownerTable ? m_ownerTable : m_table;
    return table ? table->calcExprVal(text, querier, this) : value;
}

void RixMemRecord::checkValue(int index, const QString &value)
{
    QString message;
    RixMemFields *fields = m_table ? m_table->fields() : nullptr;
    RixMemField *field = fields && index >= 0 && index < fields->count() ? fields->items(index) : nullptr;
    if (!field || validate(field, value, message))
        return;
    if (message.isEmpty())
        message = RixMemTable::tr("属性值[%1]非法").arg(value, 0, QLatin1Char(' '));
    throw TovException(message, -1);
}

bool RixMemRecord::validate(RixMemField *field, const QString &value, QString &message)
{
    if (field->constraintExpr().isEmpty())
        return true;
    RixMemFieldConstraintCheckParser parser(this);
    if (parser.validate(field->constraintExpr(), field, value))
        return true;
    message = field->constraintMsg();
    return false;
}

void RixMemRecord::assign(RixMemRecord *other)
{
    if (!other)
        return;
    m_values = other->m_values;
    m_refRecord = other->m_refRecord;
}

void RixMemRecord::assignValues(RixMemRecord *other)
{
    if (!other)
        return;
    m_values = other->m_values;
    if (other->m_refRecord) {
        for (int i = 0; i < m_values.size(); ++i)
            m_values[i] = other->getVariant(i);
    }
}

bool RixMemRecord::isNullValues() const
{
    if (m_refRecord)
        return false;
    for (const QVariant &value : m_values) {
        if (!value.isNull())
            return false;
    }
    return true;
}

int RixMemRecord::filedIndex(const QString &name) const
{
    return m_table ? m_table->fields()->filedIndex(name) : -1;
}

int RixMemRecord::filedIndex(const wchar_t *name) const
{
    return filedIndex(QString::fromWCharArray(name));
}

#include "tovsqliterecordraw.h"

#include <QSqlQuery>
#include <QSqlRecord>

TovSqliteRecordRaw::TovSqliteRecordRaw() = default;
TovSqliteRecordRaw::TovSqliteRecordRaw(const TovSqliteRecordRaw &other) = default;
TovSqliteRecordRaw::TovSqliteRecordRaw(TovSqliteRecordRaw &&other) noexcept = default;
TovSqliteRecordRaw &TovSqliteRecordRaw::operator=(const TovSqliteRecordRaw &other) = default;
TovSqliteRecordRaw &TovSqliteRecordRaw::operator=(TovSqliteRecordRaw &&other) noexcept = default;
TovSqliteRecordRaw::~TovSqliteRecordRaw() = default;

TovSqliteRecordRaw TovSqliteRecordRaw::fromQuery(const QSqlQuery &query)
{
    TovSqliteRecordRaw raw;
    if (!query.isValid())
        return raw;
    const QSqlRecord record = query.record();
    for (int i = 0; i < record.count(); ++i)
        raw.setValue(record.fieldName(i), query.value(i));
    return raw;
}

void TovSqliteRecordRaw::setValue(const QString &name, const QVariant &value)
{
    const QString key = name.toLower();
    if (!m_values.contains(key))
        m_names.append(name);
    m_values.insert(key, value);
}

bool TovSqliteRecordRaw::contains(const QString &name) const
{
    return m_values.contains(name.toLower());
}

void TovSqliteRecordRaw::clear()
{
    m_names.clear();
    m_values.clear();
}

bool TovSqliteRecordRaw::getBool(const QString &name) const
{
    return getVariant(name).toBool();
}

QByteArray TovSqliteRecordRaw::getByteArray(const QString &name) const
{
    return getVariant(name).toByteArray();
}

double TovSqliteRecordRaw::getDouble(const QString &name) const
{
    return getVariant(name).toDouble();
}

float TovSqliteRecordRaw::getFloat(const QString &name) const
{
    return getVariant(name).toFloat();
}

int TovSqliteRecordRaw::getInt(const QString &name) const
{
    return getVariant(name).toInt();
}

QString TovSqliteRecordRaw::getString(const QString &name) const
{
    return getVariant(name).toString();
}

QVariant TovSqliteRecordRaw::getVariant(const QString &name) const
{
    return m_values.value(name.toLower());
}

#pragma once

#include "itovsqliterecord.h"
#include "tovgeneralutility_export.h"

#include <QHash>
#include <QStringList>

class QSqlQuery;

// A row held by value: column names (case-insensitive) with their values, independent of any
// query. Text values are returned as stored, never translated.
class TOVGENERALUTILITY_EXPORT TovSqliteRecordRaw : public ITovSqliteRecord
{
public:
    TovSqliteRecordRaw();
    TovSqliteRecordRaw(const TovSqliteRecordRaw &other);
    TovSqliteRecordRaw(TovSqliteRecordRaw &&other) noexcept;
    TovSqliteRecordRaw &operator=(const TovSqliteRecordRaw &other);
    TovSqliteRecordRaw &operator=(TovSqliteRecordRaw &&other) noexcept;
    ~TovSqliteRecordRaw() override;

    // Every column of the row the query is positioned on; an empty record when it is on none.
    static TovSqliteRecordRaw fromQuery(const QSqlQuery &query);

    // Adds the column or replaces its value.
    void setValue(const QString &name, const QVariant &value);
    bool contains(const QString &name) const;
    // Column names in the order they were first set.
    QStringList names() const { return m_names; }
    void clear();

    bool getBool(const QString &name) const override;
    QByteArray getByteArray(const QString &name) const override;
    double getDouble(const QString &name) const override;
    float getFloat(const QString &name) const override;
    int getInt(const QString &name) const override;
    QString getString(const QString &name) const override;
    QVariant getVariant(const QString &name) const override;

private:
    QStringList m_names;
    QHash<QString, QVariant> m_values; // keyed by the lower-cased name
};

#pragma once

#include "itovsqliterecord.h"
#include "tovgeneralutility_export.h"

#include <QSqlQuery>

// The row a query is positioned on, read by column name. Text values are translated when the
// database translation service is active and knows the context
// "<database base name>_<table>_<column>".
class TOVGENERALUTILITY_EXPORT TovSqliteRecordQt : public ITovSqliteRecord
{
public:
    // The query is copied (it shares its result with the caller's): moving the caller's query
    // moves this record too.
    TovSqliteRecordQt(const QString &fileName, const QString &tableName, const QSqlQuery &query);
    TovSqliteRecordQt(const TovSqliteRecordQt &other);
    TovSqliteRecordQt(TovSqliteRecordQt &&other) noexcept;
    TovSqliteRecordQt &operator=(const TovSqliteRecordQt &other);
    TovSqliteRecordQt &operator=(TovSqliteRecordQt &&other) noexcept;
    ~TovSqliteRecordQt() override;

    bool getBool(const QString &name) const override;
    QByteArray getByteArray(const QString &name) const override;
    double getDouble(const QString &name) const override;
    float getFloat(const QString &name) const override;
    int getInt(const QString &name) const override;
    QString getString(const QString &name) const override;
    QVariant getVariant(const QString &name) const override;

private:
    QString translate(const QString &name, const QString &text) const;

    QSqlQuery m_query;
    QString m_dbBaseName;
    QString m_tableName;
};

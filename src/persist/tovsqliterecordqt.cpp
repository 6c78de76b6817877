#include "tovsqliterecordqt.h"

#include <tovdbtranslations.h>

#include <QCoreApplication>
#include <QFileInfo>
#include <QSqlRecord>

TovSqliteRecordQt::TovSqliteRecordQt(
    const QString &fileName, const QString &tableName, const QSqlQuery &query)
    : m_query(query)
    , m_dbBaseName(QFileInfo(fileName).completeBaseName())
    , m_tableName(tableName)
{ }

TovSqliteRecordQt::TovSqliteRecordQt(const TovSqliteRecordQt &other) = default;
TovSqliteRecordQt::TovSqliteRecordQt(TovSqliteRecordQt &&other) noexcept = default;
TovSqliteRecordQt &TovSqliteRecordQt::operator=(const TovSqliteRecordQt &other) = default;
TovSqliteRecordQt &TovSqliteRecordQt::operator=(TovSqliteRecordQt &&other) noexcept = default;
TovSqliteRecordQt::~TovSqliteRecordQt() = default;

bool TovSqliteRecordQt::getBool(const QString &name) const
{
    return getVariant(name).toBool();
}

QByteArray TovSqliteRecordQt::getByteArray(const QString &name) const
{
    return getVariant(name).toByteArray();
}

double TovSqliteRecordQt::getDouble(const QString &name) const
{
    return getVariant(name).toDouble();
}

float TovSqliteRecordQt::getFloat(const QString &name) const
{
    return getVariant(name).toFloat();
}

int TovSqliteRecordQt::getInt(const QString &name) const
{
    return getVariant(name).toInt();
}

QString TovSqliteRecordQt::getString(const QString &name) const
{
    return translate(name, getVariant(name).toString());
}

QVariant TovSqliteRecordQt::getVariant(const QString &name) const
{
    // Looked up through the record: QSqlQuery::value(name) warns on every unknown name.
    const int index = m_query.record().indexOf(name);
    return index < 0 ? QVariant() : m_query.value(index);
}

QString TovSqliteRecordQt::translate(const QString &name, const QString &text) const
{
    TovDBTranslations *translations = TovDBTranslations::getInstance();
    if (!translations->isNeedTranslate())
        return text;
    const QString context = m_dbBaseName + QLatin1Char('_') + m_tableName + QLatin1Char('_') + name;
    if (!translations->isContextExist(context))
        return text;
    return QCoreApplication::translate(context.toUtf8().constData(), text.toUtf8().constData());
}

#include "ctable.h"

#include "cdatabase.h"

#include <QSqlDatabase>
#include <QSqlDriver>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>

namespace hln {

namespace {

QString quoted(const QSqlDatabase &db, const QString &name, QSqlDriver::IdentifierType type)
{
    return db.driver()->escapeIdentifier(name, type);
}

// SQLite reads a double-quoted name that is no column as a string literal, so an unknown column
// would silently compare or select a constant: check it first.
bool hasColumn(const QSqlDatabase &db, const QString &table, const QString &column)
{
    return db.record(table).indexOf(column) >= 0;
}

} // namespace

CTable::CTable(const CDatabase *database, const QString &name)
    : m_database(database)
    , m_name(name)
{ }

qint64 CTable::findRecord(const QString &column, const QString &text) const
{
    const QSqlDatabase db = QSqlDatabase::database(m_database->connectionName(), false);
    if (!hasColumn(db, m_name, column)) {
        m_database->setLastError(QStringLiteral("no such column: %1").arg(column));
        return -1;
    }
    QSqlQuery query(db);
    query.prepare(
        QStringLiteral("SELECT rowid FROM %1 WHERE %2 = ? ORDER BY rowid LIMIT 1")
            .arg(quoted(db, m_name, QSqlDriver::TableName), quoted(db, column, QSqlDriver::FieldName)));
    query.addBindValue(text);
    if (!query.exec()) {
        m_database->setLastError(query.lastError().text());
        return -1;
    }
    return query.next() ? query.value(0).toLongLong() : -1;
}

bool CTable::getText(qint64 record, const QString &column, QString &text) const
{
    const QSqlDatabase db = QSqlDatabase::database(m_database->connectionName(), false);
    if (!hasColumn(db, m_name, column)) {
        m_database->setLastError(QStringLiteral("no such column: %1").arg(column));
        return false;
    }
    QSqlQuery query(db);
    query.prepare(
        QStringLiteral("SELECT %2 FROM %1 WHERE rowid = ?")
            .arg(quoted(db, m_name, QSqlDriver::TableName), quoted(db, column, QSqlDriver::FieldName)));
    query.addBindValue(record);
    if (!query.exec()) {
        m_database->setLastError(query.lastError().text());
        return false;
    }
    if (!query.next()) {
        m_database->setLastError(QStringLiteral("no such record: %1").arg(record));
        return false;
    }
    text = query.value(0).toString();
    return true;
}

bool CTable::setText(qint64 record, const QString &column, const QString &text)
{
    const QSqlDatabase db = QSqlDatabase::database(m_database->connectionName(), false);
    if (!hasColumn(db, m_name, column)) {
        m_database->setLastError(QStringLiteral("no such column: %1").arg(column));
        return false;
    }
    QSqlQuery query(db);
    query.prepare(
        QStringLiteral("UPDATE %1 SET %2 = ? WHERE rowid = ?")
            .arg(quoted(db, m_name, QSqlDriver::TableName), quoted(db, column, QSqlDriver::FieldName)));
    query.addBindValue(text);
    query.addBindValue(record);
    if (!query.exec()) {
        m_database->setLastError(query.lastError().text());
        return false;
    }
    if (query.numRowsAffected() < 1) {
        m_database->setLastError(QStringLiteral("no such record: %1").arg(record));
        return false;
    }
    return true;
}

QVector<qint64> CTable::query(const QString &column, const QVariant &value) const
{
    const QSqlDatabase db = QSqlDatabase::database(m_database->connectionName(), false);
    if (!hasColumn(db, m_name, column)) {
        m_database->setLastError(QStringLiteral("no such column: %1").arg(column));
        return {};
    }
    QSqlQuery query(db);
    query.prepare(
        QStringLiteral("SELECT rowid FROM %1 WHERE %2 = ? ORDER BY rowid")
            .arg(quoted(db, m_name, QSqlDriver::TableName), quoted(db, column, QSqlDriver::FieldName)));
    query.addBindValue(value);
    QVector<qint64> records;
    if (!query.exec()) {
        m_database->setLastError(query.lastError().text());
        return records;
    }
    while (query.next())
        records.append(query.value(0).toLongLong());
    return records;
}

} // namespace hln

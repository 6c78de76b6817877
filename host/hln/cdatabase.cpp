#include "cdatabase.h"

#include <QAtomicInteger>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QStringList>

namespace hln {

namespace {

QString nextConnectionName()
{
    static QAtomicInteger<quint64> counter;
    return QStringLiteral("hln::CDatabase-%1").arg(counter.fetchAndAddRelaxed(1) + 1);
}

} // namespace

CDatabase::CDatabase()
    : m_connectionName(nextConnectionName())
{
    QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_connectionName);
}

CDatabase::~CDatabase()
{
    close();
    QSqlDatabase::removeDatabase(m_connectionName);
}

bool CDatabase::open(const QString &fileName)
{
    close();
    QSqlDatabase db = QSqlDatabase::database(m_connectionName, false);
    db.setDatabaseName(fileName);
    m_fileName = fileName;
    if (!db.open()) {
        setLastError(db.lastError().text());
        return false;
    }
    m_lastError.clear();
    return true;
}

void CDatabase::close()
{
    QSqlDatabase db = QSqlDatabase::database(m_connectionName, false);
    if (db.isOpen())
        db.close();
}

bool CDatabase::isOpen() const
{
    return QSqlDatabase::database(m_connectionName, false).isOpen();
}

QString CDatabase::fileName() const
{
    return m_fileName;
}

std::shared_ptr<CTable> CDatabase::openTable(const QString &name) const
{
    const QSqlDatabase db = QSqlDatabase::database(m_connectionName, false);
    if (!db.isOpen()) {
        setLastError(QStringLiteral("database is not open"));
        return nullptr;
    }
    const QStringList tables = db.tables(QSql::Tables);
    for (const QString &table : tables) {
        if (table.compare(name, Qt::CaseInsensitive) == 0)
            return std::make_shared<CTable>(this, table);
    }
    setLastError(QStringLiteral("no such table: %1").arg(name));
    return nullptr;
}

bool CDatabase::execute(const QString &sql)
{
    QSqlQuery query(QSqlDatabase::database(m_connectionName, false));
    if (!query.exec(sql)) {
        setLastError(query.lastError().text());
        return false;
    }
    return true;
}

QString CDatabase::lastError() const
{
    return m_lastError;
}

QString CDatabase::connectionName() const
{
    return m_connectionName;
}

void CDatabase::setLastError(const QString &error) const
{
    m_lastError = error;
}

} // namespace hln

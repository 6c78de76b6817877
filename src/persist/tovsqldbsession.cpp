#include "tovsqldbsession.h"

#include "tovsqldbsession_p.h"

#include <sefdebugoutput.h>

#include <QSqlDriver>
#include <QSqlQuery>

#include <cstring>
#include <mutex>

namespace {

const char accessConnectionTemplate[]
    = "DRIVER={Microsoft Access Driver (*.mdb, *.accdb)};FIL={MS Access};dbq=%1";

std::mutex &templateMutex()
{
    static std::mutex mutex;
    return mutex;
}

QString &templateOverride()
{
    static QString value;
    return value;
}

// QSqlDatabase's driver-type constructor is protected; it makes a connection that is not
// registered under any name, so sessions never collide in Qt's connection list.
class UnregisteredDatabase : public QSqlDatabase
{
public:
    explicit UnregisteredDatabase(const QString &type)
        : QSqlDatabase(type)
    { }
};

QSqlError statementError(const QString &text)
{
    return QSqlError(QString(), text, QSqlError::StatementError);
}

} // namespace

TovSqlDBSessionPrivate::TovSqlDBSessionPrivate(const QString &fileName, TovSqlDBSession::DatabaseType type)
    : type(type)
    , fileName(fileName)
    , db(UnregisteredDatabase(
          type == TovSqlDBSession::Access ? QStringLiteral("QODBC") : QStringLiteral("QSQLITE")))
{ }

void TovSqlDBSessionPrivate::fail(const QSqlError &error)
{
    lastError = error;
    SefDebugOutput::write(error.text());
}

void TovSqlDBSessionPrivate::output(const QString &line) const
{
    if (isOutputSql)
        SefDebugOutput::write(line);
}

bool TovSqlDBSessionPrivate::exec(
    QSqlQuery &query, const QString &sql, const TovSqlDBSession::Binder &binder, bool prepared)
{
    if (sql.isEmpty()) {
        fail(statementError(QStringLiteral("empty statement")));
        return false;
    }
    if (!prepared) {
        output(sql);
        if (!query.exec(sql)) {
            fail(query.lastError());
            return false;
        }
        return true;
    }
    // A query whose last prepare or execution failed is prepared again: a failed prepare leaves
    // the text behind without a statement.
    if ((query.lastQuery() != sql || query.lastError().isValid()) && !query.prepare(sql)) {
        fail(query.lastError());
        return false;
    }
    if (binder)
        binder();
    output(sql);
    if (!query.exec()) {
        fail(query.lastError());
        return false;
    }
    return true;
}

QVariant TovSqlDBSessionPrivate::insertId(const QSqlQuery &query) const
{
    if (type != TovSqlDBSession::Access)
        return query.lastInsertId();
    // QODBC knows no insert ID for Access or SQLite (and warns on every call): ask the database
    // itself, in its own dialect.
    const bool sqliteOdbc = db.databaseName().contains(QLatin1String("sqlite"), Qt::CaseInsensitive);
    QSqlQuery idQuery(db);
    if (idQuery.exec(
            sqliteOdbc ? QStringLiteral("SELECT last_insert_rowid()") : QStringLiteral("SELECT @@IDENTITY"))
        && idQuery.next())
        return idQuery.value(0);
    return QVariant();
}

bool TovSqlDBSessionPrivate::importRows(QSqlQuery &query, const QString &sql, int fieldCount,
    const std::function<NextRow(QVector<QVariant> &values, int rowNumber)> &nextValues)
{
    if (sql.isEmpty()) {
        fail(statementError(QStringLiteral("empty statement")));
        return false;
    }
    // Inside a transaction the caller began the rows join it. Asked of the session, not the
    // driver: QODBC lets a second transaction begin and would commit the caller's work.
    const bool ownTransaction = !inTransaction && db.transaction();
    bool ok = true;
    QVector<QVariant> values;
    values.reserve(fieldCount);
    const TovSqlDBSession::Binder binder = [&query, &values] {
        for (const QVariant &value : qAsConst(values))
            query.addBindValue(value);
    };
    for (int rowNumber = 1; ok; ++rowNumber) {
        values.clear();
        const NextRow next = nextValues(values, rowNumber);
        if (next == NoMoreRows)
            break;
        if (next == RowRejected) {
            fail(statementError(QStringLiteral("row %1 rejected").arg(rowNumber)));
            ok = false;
        } else if (values.size() != fieldCount) {
            fail(statementError(QStringLiteral("row %1 has %2 values for %3 fields")
                                    .arg(rowNumber)
                                    .arg(values.size())
                                    .arg(fieldCount)));
            ok = false;
        } else {
            ok = exec(query, sql, binder, true);
        }
    }
    if (ownTransaction) {
        if (ok && !db.commit()) {
            fail(db.lastError());
            ok = false;
        }
        if (!ok)
            db.rollback();
    }
    return ok;
}

TovSqlDBSession::TovSqlDBSession(const QString &fileName, DatabaseType type)
    : d(new TovSqlDBSessionPrivate(fileName, type))
{ }

TovSqlDBSession::TovSqlDBSession(const TovSqlDBSession &other)
    : d(new TovSqlDBSessionPrivate(*other.d))
{ }

TovSqlDBSession &TovSqlDBSession::operator=(const TovSqlDBSession &other)
{
    *d = *other.d;
    return *this;
}

TovSqlDBSession::~TovSqlDBSession()
{
    close();
}

void TovSqlDBSession::setOdbcConnectionTemplate(const QString &connectionTemplate)
{
    std::lock_guard<std::mutex> lock(templateMutex());
    templateOverride() = connectionTemplate;
}

QString TovSqlDBSession::odbcConnectionTemplate()
{
    {
        std::lock_guard<std::mutex> lock(templateMutex());
        if (!templateOverride().isEmpty())
            return templateOverride();
    }
    const QString fromEnvironment = qEnvironmentVariable("TOV_ODBC_CONNECTION_TEMPLATE");
    if (!fromEnvironment.isEmpty())
        return fromEnvironment;
    return QString::fromLatin1(accessConnectionTemplate);
}

bool TovSqlDBSession::open()
{
    close();
    d->db.setDatabaseName(d->type == Access ? odbcConnectionTemplate().arg(d->fileName) : d->fileName);
    if (!d->db.open()) {
        d->fail(d->db.lastError());
        return false;
    }
    if (d->type != Access) {
        QSqlQuery pragma(d->db);
        for (const QString &sql :
            { QStringLiteral("PRAGMA foreign_keys = 1"), QStringLiteral("PRAGMA synchronous = OFF") }) {
            if (!pragma.exec(sql))
                d->fail(pragma.lastError());
        }
    }
    return true;
}

void TovSqlDBSession::close()
{
    if (!d->db.isOpen())
        return;
    // SQLite drops uncommitted work on close; an ODBC connection refuses to disconnect with a
    // transaction open, so roll it back first (a no-op without one).
    if (d->type == Access)
        d->db.rollback();
    d->inTransaction = false;
    d->db.close();
}

bool TovSqlDBSession::isOpen() const
{
    return d->db.isOpen();
}

QSqlDatabase TovSqlDBSession::database() const
{
    return d->db;
}

QString TovSqlDBSession::fileName() const
{
    return d->fileName;
}

TovSqlDBSession::DatabaseType TovSqlDBSession::databaseType() const
{
    return d->type;
}

QSqlError TovSqlDBSession::lastError() const
{
    return d->lastError;
}

void TovSqlDBSession::setIsOutputSql(bool isOutputSql)
{
    d->isOutputSql = isOutputSql;
}

bool TovSqlDBSession::isOutputSql() const
{
    return d->isOutputSql;
}

bool TovSqlDBSession::transaction()
{
    if (d->db.transaction()) {
        d->inTransaction = true;
        return true;
    }
    d->fail(d->db.lastError());
    return false;
}

bool TovSqlDBSession::commit()
{
    if (d->db.commit()) {
        d->inTransaction = false;
        return true;
    }
    d->fail(d->db.lastError());
    return false;
}

bool TovSqlDBSession::rollback()
{
    d->inTransaction = false;
    if (d->db.rollback())
        return true;
    d->fail(d->db.lastError());
    return false;
}

void TovSqlDBSession::open_foreignKeys()
{
    QSqlQuery(d->db).exec(QStringLiteral("PRAGMA foreign_keys = 1"));
}

void TovSqlDBSession::close_foreignKeys()
{
    QSqlQuery(d->db).exec(QStringLiteral("PRAGMA foreign_keys = 0"));
}

QString TovSqlDBSession::sqlStatement(
    StatementType type, const QString &table, const QStringList &fields) const
{
    switch (type) {
    case Condition: {
        if (fields.isEmpty())
            return QString();
        QStringList conditions;
        conditions.reserve(fields.size());
        for (const QString &field : fields)
            conditions.append(field + QLatin1String(" = ?"));
        return QLatin1String("WHERE ") + conditions.join(QLatin1String(" AND "));
    }
    case Select:
        return QLatin1String("SELECT ")
            + (fields.isEmpty() ? QStringLiteral("*") : fields.join(QLatin1String(", ")))
            + QLatin1String(" FROM ") + table;
    case Insert: {
        if (fields.isEmpty())
            return QString();
        QStringList placeholders;
        placeholders.reserve(fields.size());
        for (int i = 0; i < fields.size(); ++i)
            placeholders.append(QStringLiteral("?"));
        return QLatin1String("INSERT INTO ") + table + QLatin1String(" (") + fields.join(QLatin1String(", "))
            + QLatin1String(") VALUES (") + placeholders.join(QLatin1String(", ")) + QLatin1Char(')');
    }
    case Delete:
        return QLatin1String("DELETE FROM ") + table;
    case Update: {
        if (fields.isEmpty())
            return QString();
        QStringList assignments;
        assignments.reserve(fields.size());
        for (const QString &field : fields)
            assignments.append(field + QLatin1String("=?"));
        return QLatin1String("UPDATE ") + table + QLatin1String(" SET ")
            + assignments.join(QLatin1String(", "));
    }
    }
    return QString();
}

QString TovSqlDBSession::insertSqlStatement(const QString &table, const QStringList &fields) const
{
    return sqlStatement(Insert, table, fields);
}

QString TovSqlDBSession::deleteSqlStatement(const QString &table, const QStringList &whereFields) const
{
    QString sql = sqlStatement(Delete, table, QStringList());
    if (!whereFields.isEmpty() && !sql.isEmpty())
        sql += QLatin1Char(' ') + sqlStatement(Condition, table, whereFields);
    return sql;
}

QString TovSqlDBSession::updateSqlStatement(
    const QString &table, const QStringList &setFields, const QStringList &whereFields) const
{
    QString sql = sqlStatement(Update, table, setFields);
    if (!whereFields.isEmpty() && !sql.isEmpty())
        sql += QLatin1Char(' ') + sqlStatement(Condition, table, whereFields);
    return sql;
}

QString TovSqlDBSession::selectSqlStatement(const QString &table, const QStringList &fields,
    const QStringList &whereFields, const QString &orderBy) const
{
    QString sql = sqlStatement(Select, table, fields);
    if (!whereFields.isEmpty() && !sql.isEmpty())
        sql += QLatin1Char(' ') + sqlStatement(Condition, table, whereFields);
    if (!orderBy.isEmpty())
        sql += QLatin1String(" Order By ") + orderBy;
    return sql;
}

QString TovSqlDBSession::selectSqlStatement(
    const QString &table, const QStringList &fields, const QString &whereText, const QString &orderBy) const
{
    QString sql = sqlStatement(Select, table, fields);
    if (!whereText.isEmpty())
        sql += QLatin1String(" Where ") + whereText;
    if (!orderBy.isEmpty())
        sql += QLatin1String(" Order By ") + orderBy;
    return sql;
}

bool TovSqlDBSession::execSQL(QSqlQuery &query, const QString &sql)
{
    return d->exec(query, sql, Binder(), false);
}

bool TovSqlDBSession::execSQL(QSqlQuery &query, const QString &sql, const Binder &binder, bool prepared)
{
    return d->exec(query, sql, binder, prepared);
}

namespace {

// True when binding value where bound already is would hand the driver the same thing: same
// type, same null-ness, same content (doubles bit for bit). Other types always count as changed.
bool sameBinding(const QVariant &bound, const QVariant &value)
{
    const int type = value.userType();
    if (bound.userType() != type || bound.isNull() != value.isNull())
        return false;
    switch (type) {
    case QMetaType::Int:
        return *static_cast<const int *>(bound.constData()) == *static_cast<const int *>(value.constData());
    case QMetaType::LongLong:
        return *static_cast<const qlonglong *>(bound.constData())
            == *static_cast<const qlonglong *>(value.constData());
    case QMetaType::Double:
        return std::memcmp(bound.constData(), value.constData(), sizeof(double)) == 0;
    case QMetaType::QString:
        return *static_cast<const QString *>(bound.constData())
            == *static_cast<const QString *>(value.constData());
    default:
        return false;
    }
}

// Binds the values in order. A prepared statement keeps its bound values from one execution to
// the next, and Qt's bind of one value costs more than comparing it, so a value the query
// already holds at its place is left as it is.
TovSqlDBSession::Binder bindAll(QSqlQuery &query, const QVector<QVariant> &values)
{
    return [&query, &values] {
        for (int i = 0; i < values.size(); ++i) {
            const QVariant &value = values.at(i);
            if (!sameBinding(query.boundValue(i), value))
                query.bindValue(i, value);
        }
    };
}

} // namespace

bool TovSqlDBSession::insertData(
    QSqlQuery &query, const QString &table, const QStringList &fields, const QVector<QVariant> &values)
{
    // The same field list object compares equal without looking at its items.
    if (d->insertSql.isEmpty() || table != d->insertTable || fields != d->insertFields) {
        d->insertSql = insertSqlStatement(table, fields);
        d->insertTable = table;
        d->insertFields = fields;
    }
    if (!d->exec(query, d->insertSql, bindAll(query, values), true))
        return false;
    if (d->isOutputSql)
        SefDebugOutput::write(QLatin1String("lastInsertId:") + d->insertId(query).toString());
    return true;
}

bool TovSqlDBSession::deleteData(QSqlQuery &query, const QString &table, const QStringList &whereFields,
    const QVector<QVariant> &whereValues)
{
    return d->exec(query, deleteSqlStatement(table, whereFields), bindAll(query, whereValues), true);
}

bool TovSqlDBSession::updateData(QSqlQuery &query, const QString &table, const QStringList &setFields,
    const QStringList &whereFields, const QVector<QVariant> &values)
{
    return d->exec(query, updateSqlStatement(table, setFields, whereFields), bindAll(query, values), true);
}

bool TovSqlDBSession::saveData(QSqlQuery &query, bool isInsert, const QString &table,
    const QStringList &fields, const QStringList &whereFields, const QVector<QVariant> &values)
{
    return isInsert ? insertData(query, table, fields, values)
                    : updateData(query, table, fields, whereFields, values);
}

bool TovSqlDBSession::queryData(QSqlQuery &query, const QString &table, const QString &whereText)
{
    return d->exec(query, selectSqlStatement(table, QStringList(), whereText, QString()), Binder(), false);
}

bool TovSqlDBSession::queryData(QSqlQuery &query, const QString &table, const QStringList &fields,
    const QStringList &whereFields, const QVector<QVariant> &whereValues, const QString &orderBy)
{
    return d->exec(
        query, selectSqlStatement(table, fields, whereFields, orderBy), bindAll(query, whereValues), true);
}

bool TovSqlDBSession::importData(QSqlQuery &query, const QString &table, const QStringList &fields,
    const QList<QStringList> &rows, const RowConverter &convert)
{
    using Private = TovSqlDBSessionPrivate;
    auto next = rows.cbegin();
    return d->importRows(
        query, insertSqlStatement(table, fields), fields.size(), [&](QVector<QVariant> &values, int) {
            if (next == rows.cend())
                return Private::NoMoreRows;
            const QStringList &row = *next++;
            if (convert)
                return convert(row, values) ? Private::RowReady : Private::RowRejected;
            for (const QString &text : row)
                values.append(text);
            return Private::RowReady;
        });
}

bool TovSqlDBSession::importData(
    QSqlQuery &query, const QString &table, const QStringList &fields, const RowSource &nextRow)
{
    using Private = TovSqlDBSessionPrivate;
    QStringList row;
    return d->importRows(
        query, insertSqlStatement(table, fields), fields.size(), [&](QVector<QVariant> &values, int) {
            row.clear();
            if (!nextRow || !nextRow(row))
                return Private::NoMoreRows;
            for (const QString &text : qAsConst(row))
                values.append(text);
            return Private::RowReady;
        });
}

int TovSqlDBSession::queryMaxValue(const QString &table, const QString &field)
{
    QSqlQuery query(d->db);
    if (!d->exec(query, QStringLiteral("SELECT MAX(%1) FROM %2").arg(field, table), Binder(), false))
        return 0;
    return query.next() ? query.value(0).toInt() : 0;
}

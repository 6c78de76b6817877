#pragma once

#include "itovdbsession.h"
#include "tovgeneralutility_export.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QStringList>
#include <QVariant>
#include <QVector>

#include <functional>
#include <memory>

class QSqlQuery;
class TovSqlDBSessionPrivate;

// A thin session over one database file: SQLite through "QSQLITE", or an Access file through
// "QODBC". Builds the library's SQL statements, runs them with positional bind values on the
// caller's queries and keeps the last error. Never throws: failures answer false (or an empty
// statement, or 0), keep the error for lastError() and write it to the debug output.
// Not locked: callers serialise its use. Copies share the connection; destroying any copy
// closes it.
class TOVGENERALUTILITY_EXPORT TovSqlDBSession : public ITovDBSession
{
public:
    enum DatabaseType
    {
        SQLite = 0,
        Access = 1
    };
    enum StatementType
    {
        Condition = 0,
        Select = 1,
        Insert = 2,
        Delete = 3,
        Update = 4
    };

    // Adds the bind values of a statement, in placeholder order, to the query being executed.
    using Binder = std::function<void()>;
    // Fills values from one imported row; false rejects the row and so the import.
    using RowConverter = std::function<bool(const QStringList &row, QVector<QVariant> &values)>;
    // Fills row with the next row to import; false when there is none.
    using RowSource = std::function<bool(QStringList &row)>;

    // Closed until open(); no connection name is registered.
    TovSqlDBSession(const QString &fileName, DatabaseType type);
    TovSqlDBSession(const TovSqlDBSession &other);
    TovSqlDBSession &operator=(const TovSqlDBSession &other);
    // Closes the database.
    ~TovSqlDBSession() override;

    // The connection string for Access files, %1 standing for the file name. Process-wide: the
    // value set here, else the environment variable TOV_ODBC_CONNECTION_TEMPLATE, else the Access
    // driver's string. An empty text restores the default.
    static void setOdbcConnectionTemplate(const QString &connectionTemplate);
    static QString odbcConnectionTemplate();

    // Closes the database first when it is open (closing drops uncommitted work). SQLite files get foreign
    // keys on and synchronous writes off; a failure of those is kept but does not fail the open.
    bool open();
    void close();
    bool isOpen() const;
    QSqlDatabase database() const;
    QString fileName() const override;
    DatabaseType databaseType() const;
    QSqlError lastError() const;
    // Writes every executed statement (and the ID of every insert) to the debug output.
    void setIsOutputSql(bool isOutputSql);
    bool isOutputSql() const;

    bool transaction();
    bool commit();
    bool rollback();
    // "PRAGMA foreign_keys = 1" / "= 0", result ignored.
    void open_foreignKeys();
    void close_foreignKeys();

    // Statement texts; an empty text where a statement cannot be built from an empty field list.
    QString sqlStatement(StatementType type, const QString &table, const QStringList &fields) const;
    QString insertSqlStatement(const QString &table, const QStringList &fields) const;
    QString deleteSqlStatement(const QString &table, const QStringList &whereFields) const;
    QString updateSqlStatement(
        const QString &table, const QStringList &setFields, const QStringList &whereFields) const;
    QString selectSqlStatement(const QString &table, const QStringList &fields,
        const QStringList &whereFields, const QString &orderBy) const;
    QString selectSqlStatement(const QString &table, const QStringList &fields, const QString &whereText,
        const QString &orderBy) const;

    // Executes sql directly.
    bool execSQL(QSqlQuery &query, const QString &sql);
    // Prepared: prepares the query unless it already holds sql from a successful run, calls
    // binder, executes.
    // Unprepared: executes sql directly; binder is not called.
    bool execSQL(QSqlQuery &query, const QString &sql, const Binder &binder, bool prepared);
    bool insertData(
        QSqlQuery &query, const QString &table, const QStringList &fields, const QVector<QVariant> &values);
    bool deleteData(QSqlQuery &query, const QString &table, const QStringList &whereFields,
        const QVector<QVariant> &whereValues);
    // values: the set values, then the where values.
    bool updateData(QSqlQuery &query, const QString &table, const QStringList &setFields,
        const QStringList &whereFields, const QVector<QVariant> &values);
    bool saveData(QSqlQuery &query, bool isInsert, const QString &table, const QStringList &fields,
        const QStringList &whereFields, const QVector<QVariant> &values);
    // All columns of the rows meeting whereText (every row when empty); the query is left on the
    // result, before its first row.
    bool queryData(QSqlQuery &query, const QString &table, const QString &whereText);
    bool queryData(QSqlQuery &query, const QString &table, const QStringList &fields,
        const QStringList &whereFields, const QVector<QVariant> &whereValues,
        const QString &orderBy = QString());

    // Bulk inserts: one prepared INSERT for every row, inside one transaction that is committed
    // when every row went in and rolled back otherwise (all or nothing). Inside a transaction the
    // caller began through this session, the rows join it and the caller commits. A row must have one
    // value per field. Without a converter the texts are bound as they are.
    bool importData(QSqlQuery &query, const QString &table, const QStringList &fields,
        const QList<QStringList> &rows, const RowConverter &convert = RowConverter());
    bool importData(
        QSqlQuery &query, const QString &table, const QStringList &fields, const RowSource &nextRow);

    // "SELECT MAX(field) FROM table" as int; 0 when no row comes back or on failure.
    int queryMaxValue(const QString &table, const QString &field);

private:
    std::unique_ptr<TovSqlDBSessionPrivate> const d;
};

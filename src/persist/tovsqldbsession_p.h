#pragma once

#include "tovsqldbsession.h"

#include <QSqlDatabase>
#include <QSqlError>

class TovSqlDBSessionPrivate
{
public:
    TovSqlDBSessionPrivate(const QString &fileName, TovSqlDBSession::DatabaseType type);

    // Keeps the error and writes it to the debug output.
    void fail(const QSqlError &error);
    void output(const QString &line) const;
    bool exec(QSqlQuery &query, const QString &sql, const TovSqlDBSession::Binder &binder, bool prepared);
    QVariant insertId(const QSqlQuery &query) const;
    enum NextRow
    {
        NoMoreRows,
        RowReady,
        RowRejected
    };
    // Inserts the rows nextValues hands out (rowNumber counts from 1) in one transaction.
    bool importRows(QSqlQuery &query, const QString &sql, int fieldCount,
        const std::function<NextRow(QVector<QVariant> &values, int rowNumber)> &nextValues);

    TovSqlDBSession::DatabaseType type;
    QString fileName;
    QSqlDatabase db;
    QSqlError lastError;
    bool isOutputSql = false;
    // A transaction begun through this session is open.
    bool inTransaction = false;
    // The statement insertData built last, reused while its table and fields repeat: a writer
    // that logs row after row into one table pays for the text once.
    QString insertTable;
    QStringList insertFields;
    QString insertSql;
};

#pragma once

#include <QFile>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QTest>
#include <QUuid>
#include <QVariant>
#include <QVector>

// One row of "LogData", read back through a connection of its own.
struct LogRow
{
    int id = 0;
    int pid = 0;
    int level = 0;
    QString msg;
    QString file;
    QString func;
    int line = 0;
    qint64 edoId = 0;
    QString category;
    QString funcData;
    QString timeStamp;
    double time = 0;
};

// Runs sql on the SQLite file and calls onRow for every result row. Prints the query's error
// and fails the current test when the statement fails.
template<typename F>
inline bool forEachRow(const QString &dbFile, const QString &sql, F onRow)
{
    const QString name = QUuid::createUuid().toString();
    bool ok = false;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
        db.setDatabaseName(dbFile);
        if (!QFile::exists(dbFile)) {
            QTest::qFail(qPrintable(QStringLiteral("no database ") + dbFile), __FILE__, __LINE__);
        } else if (!db.open()) {
            QTest::qFail(qPrintable(db.lastError().text()), __FILE__, __LINE__);
        } else {
            QSqlQuery query(db);
            ok = query.exec(sql);
            if (!ok)
                QTest::qFail(
                    qPrintable(sql + QStringLiteral(": ") + query.lastError().text()), __FILE__, __LINE__);
            while (ok && query.next())
                onRow(query);
        }
    }
    QSqlDatabase::removeDatabase(name);
    return ok;
}

inline QVector<LogRow> readLogRows(const QString &dbFile, const QString &order = QStringLiteral("rowid"))
{
    QVector<LogRow> rows;
    forEachRow(dbFile,
        QStringLiteral("SELECT ID, PID, Level, Msg, File, Func, Line, EdoID, Category, FuncData, TimeStamp, "
                       "Time FROM LogData ORDER BY ")
            + order,
        [&rows](QSqlQuery &q) {
            LogRow r;
            r.id = q.value(0).toInt();
            r.pid = q.value(1).toInt();
            r.level = q.value(2).toInt();
            r.msg = q.value(3).toString();
            r.file = q.value(4).toString();
            r.func = q.value(5).toString();
            r.line = q.value(6).toInt();
            r.edoId = q.value(7).toLongLong();
            r.category = q.value(8).toString();
            r.funcData = q.value(9).toString();
            r.timeStamp = q.value(10).toString();
            r.time = q.value(11).toDouble();
            rows.append(r);
        });
    return rows;
}

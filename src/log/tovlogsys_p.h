#pragma once

#include "tovlogsys.h"

#include <QAtomicInt>
#include <QHash>
#include <QSet>
#include <QSqlQuery>
#include <QString>

#include <atomic>
#include <memory>
#include <mutex>

class TovMessageLogManager;
class TovSqlDBSession;

class TovLogSysPrivate
{
public:
    // Stores one finished record: its "LogData" row, then its FuncData file. Takes dbMutex.
    virtual void commitLogData(TovLogSys::LogData *data);
    virtual ~TovLogSysPrivate();
    // Appends one finished timing to the ".time" report. Takes dbMutex.
    void commitTimeData(TovLogSys::LogData *data);

    void readConfig();
    // Copies the template "TovLog.db" to target (fails when target exists); the template is made
    // in the application directory first when missing, and when that folder is read-only the
    // project's database is made directly.
    bool copyTemplate(const QString &target);
    void openSession(const QString &fileName);
    void closeSession();
    void writeFuncDataFile(const TovLogSys::LogData &data);

    // Read once, at construction.
    bool openLog = false;
    int levelMask = 0;
    bool funcDataLog = false;

    mutable std::mutex optionsMutex;
    QSet<QString> checkOptions;

    mutable std::mutex managerMutex;
    QHash<Qt::HANDLE, TovMessageLogManager *> managers;

    QAtomicInt nextId { 0 };

    // Everything below is guarded by dbMutex.
    mutable std::mutex dbMutex;
    std::shared_ptr<TovSqlDBSession> session;
    std::unique_ptr<QSqlQuery> insertQuery;
    QString funcDataPath;
    QString projectFileName;
    // Mirrors session != null for the lock-free checks of every log call.
    std::atomic<bool> hasSession { false };
};

// The columns of "LogData", in the order of the row.
const QStringList &tovLogDataColumns();
// The statement that makes the "LogData" table of a new log database.
QString tovLogDataSchema();

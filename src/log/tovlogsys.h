#pragma once

#include "tovgeneralutility_export.h"

#include <QDateTime>
#include <QString>

#include <memory>

class TovLogSysPrivate;
class TovMessageLogContext;
class TovMessageLogManager;
class TovSqlDBSession;

// The process's structured operation log. Messages opened and closed through TovMessageLogger
// nest per thread; each closed message whose level passes the mask becomes one row of the
// table "LogData" in the project's "TovLog.db". Timings (command-line switch "-time") go to a
// ".time" report instead.
//
// "TovLog.ini" in the application directory is read once, when instance() is first called:
// group "Options" ("OpenLog", "FuncDataLog", "FuncDataPath"), group "LogLevel" ("Debug",
// "Info", "Warning", "Error") and group "CheckOptions" (named switches). Thread-safe; logging is
// best-effort and never throws.
class TOVGENERALUTILITY_EXPORT TovLogSys
{
public:
    enum LogMsgType
    {
        Debug = 1,
        Info = 2,
        Warning = 4,
        Error = 8,
        // A timing of the ".time" channel; never stored in the database.
        Timing = 16,
    };

    struct LogData
    {
        int ID = -1;
        int PID = -1;
        LogMsgType Level = Debug;
        QString Msg;
        QString File;
        QString Func;
        int Line = 0;
        qint64 EdoID = -1;
        QString Category;
        QString FuncData;
        QDateTime TimeStamp;
        qint64 Time = 0; // milliseconds
        QString FullName; // parent's FullName + "-" + Msg; names the FuncData file
    };

    static TovLogSys *instance();

    bool isLogEnabled() const;
    // False when OpenLog is off or a bit of t is not in the mask; t = 0 passes only mask 0.
    bool isLogEnabled(LogMsgType t) const;
    bool isDebugEnabled() const;
    bool isInfoEnabled() const;
    bool isWarningEnabled() const;
    bool isErrorEnabled() const;
    // FuncDataLog is on and a log database is open (OpenLog is not consulted).
    bool isLogFuncData() const;

    // Named switches, case-insensitive.
    bool hasCheckOption(const QString &name) const;
    void setCheckOption(const QString &name, bool on);

    QString funcDataPath() const;
    void setFuncDataPath(const QString &path);
    // Names the ".time" report (with "-time", beside this file or under the given folder).
    void setProjectFileName(const QString &fileName);

    // The open log database, or null.
    std::shared_ptr<TovSqlDBSession> dbSession() const;

    // Project hooks, given the project directory. A new project gets a copy of the template
    // "TovLog.db" of the application directory (made there on first need); opening a project
    // opens its "TovLog.db" and continues its IDs; closing closes it.
    void onProjectAfterNew(const QString &projectDir);
    void onProjectAfterOpen(const QString &projectDir);
    void onProjectBeforeClose();

    // Forwarded to the open log database; ignored without one.
    void startTransaction();
    void commitTransaction();
    void rollbackTransaction();
    // Deletes every row of "LogData"; IDs keep counting.
    void clearLogData();

    // The calling thread's manager of the log channel (false) or the timing channel (true),
    // made on first use; null while that channel is off.
    TovMessageLogManager *currentLogManager(bool isTime);
    // Forgets and destroys a manager whose stacks are empty.
    void removeLogManager(TovMessageLogManager *manager);

    // The EdoID of the innermost open message of this thread that has one; -1 when none.
    qint64 lastEdoID() const;
    // The name of the innermost open timing of this thread, or empty.
    QString lastLogTimeName() const;
    // "TovLog.db" when that file exists in the project directory, else empty.
    QString getProjectAddFile(const QString &projectDir) const;

protected:
    TovLogSys();
    virtual ~TovLogSys();

    LogData *newLogData(int pid, LogMsgType type, const TovMessageLogContext &context, const QString &msg);
    void commitLogData(LogData *data);
    void commitTimeData(LogData *data);

private:
    TovLogSys(const TovLogSys &) = delete;
    TovLogSys &operator=(const TovLogSys &) = delete;

    // The calling thread's manager if it has one; never makes one.
    TovMessageLogManager *findLogManager() const;

    friend class TovMessageLogManager;
    friend class TovMessageLogger;
    std::unique_ptr<TovLogSysPrivate> const d;
};

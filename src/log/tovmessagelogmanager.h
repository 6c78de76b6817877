#pragma once

#include "tovgeneralutility_export.h"

#include "tovlogsys.h"
#include "tovmessagelogdata.h"

#include <QDebug>
#include <QElapsedTimer>
#include <QList>
#include <QVector>

#include <memory>

// The open messages and timings of one thread. Only its own thread touches it; TovLogSys finds
// it by thread ID. Copies share the open records.
class TOVGENERALUTILITY_EXPORT TovMessageLogManager
{
public:
    explicit TovMessageLogManager(Qt::HANDLE threadId = nullptr);

    Qt::HANDLE threadId() const { return m_threadId; }

    // Opens a message inside the innermost open one.
    TovMessageLogData startLogMessage(
        TovLogSys::LogMsgType type, const TovMessageLogContext &context, const QString &msg);
    // Closes the innermost message: it inherits an unset EdoID from the nearest enclosing message
    // that has one, takes its duration and, when its level passes, is stored. No-op when none.
    void stop();
    void startOutputTime(const TovMessageLogContext &context, const QString &name);
    // Closes the innermost timing; when it was the outermost, every timing finished meanwhile is
    // written, the outermost first, the others in reverse order of completion.
    void stopOutputTime();
    // Restarts the clock of the innermost open timing.
    void resetStartTime();
    // A stream into the FuncData of the innermost open message (ordinary debug output when there
    // is none or FuncData logging is off).
    QDebug funcData();

    bool isEmpty() const;
    qint64 lastEdoID() const;
    QString lastLogTimeName() const;

private:
    // An open record and the monotonic clock of its duration (the wall clock is slow to read
    // and may jump).
    struct Record
    {
        std::shared_ptr<TovLogSys::LogData> data;
        QElapsedTimer clock;
    };

    Qt::HANDLE m_threadId;
    QVector<Record> m_logStack;
    QVector<Record> m_timeStack;
    QList<std::shared_ptr<TovLogSys::LogData>> m_pendingTimes;
};

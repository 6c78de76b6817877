#pragma once

#include "tovgeneralutility_export.h"

#include "tovlogsys.h"
#include "tovmessagelogcontext.h"
#include "tovmessagelogdata.h"

#include <QDebug>

// The call-site front of the log system. Every call does nothing (and answers a null handle)
// while its channel is off: messages need "OpenLog" and an open project log database, timings
// the command-line switch "-time".
//
//     TovMessageLogger logger(__FILE__, __LINE__, Q_FUNC_INFO);
//     logger.infoStart("计算墙体").setEdoId(id);
//     logger.funcData() << "height" << h;
//     logger.stopLog();
class TOVGENERALUTILITY_EXPORT TovMessageLogger
{
public:
    TovMessageLogger() = default;
    TovMessageLogger(const char *file, int line, const char *function);

    TovMessageLogData debugStart(const QString &msg) const;
    TovMessageLogData debugStart(const char *format, ...) const Q_ATTRIBUTE_FORMAT_PRINTF(2, 3);
    TovMessageLogData infoStart(const QString &msg) const;
    TovMessageLogData infoStart(const char *format, ...) const Q_ATTRIBUTE_FORMAT_PRINTF(2, 3);
    TovMessageLogData warningStart(const QString &msg) const;
    TovMessageLogData warningStart(const char *format, ...) const Q_ATTRIBUTE_FORMAT_PRINTF(2, 3);
    TovMessageLogData errorStart(const QString &msg) const;
    TovMessageLogData errorStart(const char *format, ...) const Q_ATTRIBUTE_FORMAT_PRINTF(2, 3);
    TovMessageLogData startLogMessage(TovLogSys::LogMsgType type, const QString &msg) const;
    // Closes the innermost open message of this thread.
    void stopLog() const;

    void startOutputTime(const QString &name) const;
    void stopOutputTime() const;
    // Restarts the clock of the innermost open timing (not message).
    void resetStartTime() const;

    // Appends to the FuncData of this thread's innermost open message when FuncData logging is
    // on; ordinary debug output otherwise.
    QDebug funcData() const;

protected:
    TovMessageLogManager *currentLogManager(bool isTime) const;

private:
    void releaseIfEmpty(TovMessageLogManager *manager) const;

    TovMessageLogContext m_context;
};

// A logger carrying the caller's file, line and function.
#define TOV_MESSAGE_LOGGER TovMessageLogger(__FILE__, __LINE__, Q_FUNC_INFO)

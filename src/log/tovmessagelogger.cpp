#include "tovmessagelogger.h"

#include "tovmessagelogmanager.h"

#include <cstdarg>

#define TOV_FORMATTED_START(type)                                                                            \
    va_list ap;                                                                                              \
    va_start(ap, format);                                                                                    \
    const QString msg = QString::vasprintf(format, ap);                                                      \
    va_end(ap);                                                                                              \
    return startLogMessage(type, msg)

TovMessageLogger::TovMessageLogger(const char *file, int line, const char *function)
    : m_context(file, line, function)
{ }

TovMessageLogData TovMessageLogger::debugStart(const QString &msg) const
{
    return startLogMessage(TovLogSys::Debug, msg);
}

TovMessageLogData TovMessageLogger::debugStart(const char *format, ...) const
{
    TOV_FORMATTED_START(TovLogSys::Debug);
}

TovMessageLogData TovMessageLogger::infoStart(const QString &msg) const
{
    return startLogMessage(TovLogSys::Info, msg);
}

TovMessageLogData TovMessageLogger::infoStart(const char *format, ...) const
{
    TOV_FORMATTED_START(TovLogSys::Info);
}

TovMessageLogData TovMessageLogger::warningStart(const QString &msg) const
{
    return startLogMessage(TovLogSys::Warning, msg);
}

TovMessageLogData TovMessageLogger::warningStart(const char *format, ...) const
{
    TOV_FORMATTED_START(TovLogSys::Warning);
}

TovMessageLogData TovMessageLogger::errorStart(const QString &msg) const
{
    return startLogMessage(TovLogSys::Error, msg);
}

TovMessageLogData TovMessageLogger::errorStart(const char *format, ...) const
{
    TOV_FORMATTED_START(TovLogSys::Error);
}

TovMessageLogData TovMessageLogger::startLogMessage(TovLogSys::LogMsgType type, const QString &msg) const
{
    TovMessageLogManager *manager = currentLogManager(false);
    if (!manager)
        return TovMessageLogData();
    return manager->startLogMessage(type, m_context, msg);
}

void TovMessageLogger::stopLog() const
{
    TovMessageLogManager *manager = currentLogManager(false);
    if (!manager)
        return;
    manager->stop();
    releaseIfEmpty(manager);
}

void TovMessageLogger::startOutputTime(const QString &name) const
{
    if (TovMessageLogManager *manager = currentLogManager(true))
        manager->startOutputTime(m_context, name);
}

void TovMessageLogger::stopOutputTime() const
{
    TovMessageLogManager *manager = currentLogManager(true);
    if (!manager)
        return;
    manager->stopOutputTime();
    releaseIfEmpty(manager);
}

void TovMessageLogger::resetStartTime() const
{
    if (TovMessageLogManager *manager = currentLogManager(true))
        manager->resetStartTime();
}

QDebug TovMessageLogger::funcData() const
{
    // Looks the manager up without making one: without an open message there is nothing to
    // append to.
    TovLogSys *sys = TovLogSys::instance();
    if (sys->isLogFuncData() && sys->isLogEnabled()) {
        if (TovMessageLogManager *manager = sys->findLogManager())
            return manager->funcData();
    }
    return QDebug(QtDebugMsg);
}

TovMessageLogManager *TovMessageLogger::currentLogManager(bool isTime) const
{
    return TovLogSys::instance()->currentLogManager(isTime);
}

void TovMessageLogger::releaseIfEmpty(TovMessageLogManager *manager) const
{
    if (manager->isEmpty())
        TovLogSys::instance()->removeLogManager(manager);
}

#include "tovmessagelogmanager.h"

#include "tovmessagelogcontext.h"

TovMessageLogManager::TovMessageLogManager(Qt::HANDLE threadId)
    : m_threadId(threadId)
{ }

TovMessageLogData TovMessageLogManager::startLogMessage(
    TovLogSys::LogMsgType type, const TovMessageLogContext &context, const QString &msg)
{
    TovLogSys *sys = TovLogSys::instance();
    const Record parent = m_logStack.isEmpty() ? Record() : m_logStack.last();
    Record record(sys->newLogData(parent ? parent->ID : -1, type, context, msg));
    record->FullName = parent ? parent->FullName + QLatin1Char('-') + msg : msg;
    m_logStack.append(record);
    return TovMessageLogData(record.get());
}

void TovMessageLogManager::stop()
{
    if (m_logStack.isEmpty())
        return;
    const Record record = m_logStack.takeLast();
    if (record->EdoID == -1) {
        for (int i = m_logStack.size() - 1; i >= 0; --i) {
            if (m_logStack.at(i)->EdoID != -1) {
                record->EdoID = m_logStack.at(i)->EdoID;
                break;
            }
        }
    }
    record->Time = record->TimeStamp.msecsTo(QDateTime::currentDateTime());
    TovLogSys *sys = TovLogSys::instance();
    if (sys->isLogEnabled(record->Level))
        sys->commitLogData(record.get());
}

void TovMessageLogManager::startOutputTime(const TovMessageLogContext &context, const QString &name)
{
    Record record(new TovLogSys::LogData);
    record->Level = TovLogSys::Timing;
    record->Msg = name;
    record->FullName = name;
    record->File = context.file;
    record->Func = context.function;
    record->Line = context.line;
    record->TimeStamp = QDateTime::currentDateTime();
    m_timeStack.append(record);
}

void TovMessageLogManager::stopOutputTime()
{
    if (m_timeStack.isEmpty())
        return;
    const Record record = m_timeStack.takeLast();
    record->Time = record->TimeStamp.msecsTo(QDateTime::currentDateTime());
    m_pendingTimes.append(record);
    // Inner timings wait for the outermost one.
    if (!m_timeStack.isEmpty())
        return;
    TovLogSys *sys = TovLogSys::instance();
    for (int i = m_pendingTimes.size() - 1; i >= 0; --i)
        sys->commitTimeData(m_pendingTimes.at(i).get());
    m_pendingTimes.clear();
}

void TovMessageLogManager::resetStartTime()
{
    if (!m_timeStack.isEmpty())
        m_timeStack.last()->TimeStamp = QDateTime::currentDateTime();
}

QDebug TovMessageLogManager::funcData()
{
    if (!m_logStack.isEmpty() && TovLogSys::instance()->isLogFuncData())
        return QDebug(&m_logStack.last()->FuncData);
    return QDebug(QtDebugMsg);
}

bool TovMessageLogManager::isEmpty() const
{
    return m_logStack.isEmpty() && m_timeStack.isEmpty();
}

qint64 TovMessageLogManager::lastEdoID() const
{
    for (int i = m_logStack.size() - 1; i >= 0; --i) {
        if (m_logStack.at(i)->EdoID != -1)
            return m_logStack.at(i)->EdoID;
    }
    return -1;
}

QString TovMessageLogManager::lastLogTimeName() const
{
    return m_timeStack.isEmpty() ? QString() : m_timeStack.last()->Msg;
}

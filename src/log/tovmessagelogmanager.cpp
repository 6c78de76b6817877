#include "tovmessagelogmanager.h"

#include "tovmessagelogcontext.h"

TovMessageLogManager::TovMessageLogManager(Qt::HANDLE threadId)
    : m_threadId(threadId)
{
    // Nesting rarely goes deeper: one allocation for the manager's life.
    m_logStack.reserve(8);
}

TovMessageLogData TovMessageLogManager::startLogMessage(
    TovLogSys::LogMsgType type, const TovMessageLogContext &context, const QString &msg)
{
    TovLogSys *sys = TovLogSys::instance();
    const TovLogSys::LogData *parent = m_logStack.isEmpty() ? nullptr : m_logStack.last().data.get();
    Record record { std::shared_ptr<TovLogSys::LogData>(
                        sys->newLogData(parent ? parent->ID : -1, type, context, msg)),
        QElapsedTimer() };
    record.clock.start();
    record.data->FullName = parent ? parent->FullName + QLatin1Char('-') + msg : msg;
    m_logStack.append(record);
    return TovMessageLogData(record.data.get());
}

void TovMessageLogManager::stop()
{
    if (m_logStack.isEmpty())
        return;
    const Record record = m_logStack.takeLast();
    TovLogSys::LogData *data = record.data.get();
    if (data->EdoID == -1) {
        for (int i = m_logStack.size() - 1; i >= 0; --i) {
            if (m_logStack.at(i).data->EdoID != -1) {
                data->EdoID = m_logStack.at(i).data->EdoID;
                break;
            }
        }
    }
    data->Time = record.clock.elapsed();
    TovLogSys *sys = TovLogSys::instance();
    if (sys->isLogEnabled(data->Level))
        sys->commitLogData(data);
}

void TovMessageLogManager::startOutputTime(const TovMessageLogContext &context, const QString &name)
{
    Record record { std::make_shared<TovLogSys::LogData>(), QElapsedTimer() };
    TovLogSys::LogData *data = record.data.get();
    data->Level = TovLogSys::Timing;
    data->Msg = name;
    data->FullName = name;
    data->File = context.file;
    data->Func = context.function;
    data->Line = context.line;
    data->TimeStamp = QDateTime::currentDateTime();
    record.clock.start();
    m_timeStack.append(record);
}

void TovMessageLogManager::stopOutputTime()
{
    if (m_timeStack.isEmpty())
        return;
    const Record record = m_timeStack.takeLast();
    record.data->Time = record.clock.elapsed();
    m_pendingTimes.append(record.data);
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
    if (m_timeStack.isEmpty())
        return;
    m_timeStack.last().data->TimeStamp = QDateTime::currentDateTime();
    m_timeStack.last().clock.start();
}

QDebug TovMessageLogManager::funcData()
{
    if (!m_logStack.isEmpty() && TovLogSys::instance()->isLogFuncData())
        return QDebug(&m_logStack.last().data->FuncData);
    return QDebug(QtDebugMsg);
}

bool TovMessageLogManager::isEmpty() const
{
    return m_logStack.isEmpty() && m_timeStack.isEmpty();
}

qint64 TovMessageLogManager::lastEdoID() const
{
    for (int i = m_logStack.size() - 1; i >= 0; --i) {
        if (m_logStack.at(i).data->EdoID != -1)
            return m_logStack.at(i).data->EdoID;
    }
    return -1;
}

QString TovMessageLogManager::lastLogTimeName() const
{
    return m_timeStack.isEmpty() ? QString() : m_timeStack.last().data->Msg;
}

#include "tovthreadtimer.h"

#include <seftickcount.h>

TovThreadTimer::TovThreadTimer(QObject *parent)
    : QThread(parent)
{ }

TovThreadTimer::~TovThreadTimer()
{
    if (isRunning())
        stopTimer();
}

void TovThreadTimer::setTimeOutFunc(std::function<void()> func)
{
    m_timeOutFunc = std::move(func);
}

void TovThreadTimer::startTimer(int ms)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_interval = quint32(ms);
    m_running = true;
    start(QThread::InheritPriority);
}

void TovThreadTimer::stopTimer()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_running = false;
    quit();
    wait();
}

void TovThreadTimer::run()
{
    const quint32 start = SefTickCount::now();
    while (m_running && quint32(SefTickCount::now() - start) < m_interval) { }
    if (m_running)
        m_timeOutFunc();
}

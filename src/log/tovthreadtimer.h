#pragma once

#include "tovgeneralutility_export.h"

#include <QThread>

#include <atomic>
#include <functional>
#include <mutex>

// A one-shot timer on a thread of its own: after startTimer(ms) it calls the time-out function
// once, on its thread, unless stopTimer() comes first. The wait is a busy loop on the 32-bit
// millisecond tick: it trades a core for a precise wake-up.
class TOVGENERALUTILITY_EXPORT TovThreadTimer : public QThread
{
    Q_OBJECT

public:
    explicit TovThreadTimer(QObject *parent = nullptr);
    // Stops a running timer first.
    ~TovThreadTimer() override;

    // Set before startTimer(); starting without a function is an error of the function wrapper.
    void setTimeOutFunc(std::function<void()> func);
    // Starts the thread at the caller's priority; a second start while running only changes the
    // interval of the running wait.
    void startTimer(int ms);
    // Blocks until the timer thread has ended; the function is not called afterwards.
    void stopTimer();

protected:
    void run() override;

private:
    std::atomic<quint32> m_interval { 0 };
    std::atomic<bool> m_running { false };
    std::function<void()> m_timeOutFunc;
    std::mutex m_mutex;
};

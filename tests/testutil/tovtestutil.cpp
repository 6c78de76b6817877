#include "tovtestutil.h"

#include <mutex>

struct DebugCapture::State
{
    mutable std::mutex mutex;
    QStringList lines;
};

DebugCapture::DebugCapture()
    : m_state(new State)
{
    State *state = m_state;
    m_previous = SefDebugOutput::setHandler([state](const QString &line) {
        std::lock_guard<std::mutex> lock(state->mutex);
        state->lines.append(line);
    });
}

DebugCapture::~DebugCapture()
{
    SefDebugOutput::setHandler(std::move(m_previous));
    delete m_state;
}

QStringList DebugCapture::lines() const
{
    std::lock_guard<std::mutex> lock(m_state->mutex);
    return m_state->lines;
}

void DebugCapture::clear()
{
    std::lock_guard<std::mutex> lock(m_state->mutex);
    m_state->lines.clear();
}

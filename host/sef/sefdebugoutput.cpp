#include "sefdebugoutput.h"

#include <mutex>

namespace {

std::mutex &handlerMutex()
{
    static std::mutex mutex;
    return mutex;
}

SefDebugOutput::Handler &currentHandler()
{
    static SefDebugOutput::Handler handler;
    return handler;
}

} // namespace

void SefDebugOutput::write(const QString &line)
{
    std::unique_lock<std::mutex> lock(handlerMutex());
    if (currentHandler()) {
        // Called under the lock so that a handler swapped out is never called afterwards.
        currentHandler()(line);
        return;
    }
    lock.unlock();
    writePlatform(line);
}

SefDebugOutput::Handler SefDebugOutput::setHandler(Handler handler)
{
    std::lock_guard<std::mutex> lock(handlerMutex());
    Handler previous = std::move(currentHandler());
    currentHandler() = std::move(handler);
    return previous;
}

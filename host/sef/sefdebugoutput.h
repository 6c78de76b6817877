#pragma once

#include "tovhost_export.h"

#include <QString>

#include <functional>

// The one sink for the library's debug lines: the debugger's output on Windows, qDebug()
// elsewhere. A capture handler, when set, receives every line instead (tests, tools).
class TOVHOST_EXPORT SefDebugOutput
{
public:
    using Handler = std::function<void(const QString &line)>;

    // Thread-safe; the handler may be called from any thread.
    static void write(const QString &line);
    // Installs handler (an empty one restores the platform output); returns the previous one.
    static Handler setHandler(Handler handler);

private:
    static void writePlatform(const QString &line);
};

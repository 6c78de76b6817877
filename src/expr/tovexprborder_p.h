#pragma once

#include <sefdebugoutput.h>
#include <sefexception.h>

#include <QString>

// Reports an engine failure caught at the library's border: the source marker "module:line",
// then the message, as two debug lines.
inline void tovReportEngineFailure(const char *module, int line, const SefException &failure)
{
    const SefException copy(failure);
    SefDebugOutput::write(QStringLiteral("%1:%2").arg(QLatin1String(module)).arg(line));
    SefDebugOutput::write(copy.message());
}

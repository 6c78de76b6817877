#include "sefdebugoutput.h"

#include <qt_windows.h>

void SefDebugOutput::writePlatform(const QString &line)
{
    OutputDebugStringW(reinterpret_cast<const wchar_t *>((line + QLatin1Char('\n')).utf16()));
}

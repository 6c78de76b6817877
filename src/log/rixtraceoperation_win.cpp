#include "rixtraceoperation_p.h"

#include <qt_windows.h>

void rixWriteDebuggerOutput(const QString &text)
{
    OutputDebugStringW(reinterpret_cast<const wchar_t *>((text + QLatin1Char('\n')).utf16()));
}

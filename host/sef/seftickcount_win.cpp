#include "seftickcount.h"

#include <qt_windows.h>

quint32 SefTickCount::platformNow()
{
    return quint32(GetTickCount());
}

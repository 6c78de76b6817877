#include "seftickcount.h"

#include <qt_windows.h>

quint32 SefTickCount::now()
{
    return quint32(GetTickCount());
}

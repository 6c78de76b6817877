#include "seftickcount.h"

#include <time.h>

quint32 SefTickCount::platformNow()
{
    timespec ts;
    clock_gettime(CLOCK_MONOTONIC, &ts);
    const quint64 ms = quint64(ts.tv_sec) * 1000u + quint64(ts.tv_nsec) / 1000000u;
    return quint32(ms);
}

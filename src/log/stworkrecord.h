#pragma once

#include <QtGlobal>

// One named work of TovTimeTracker. Tick values come from the 32-bit millisecond counter and
// every difference is taken modulo 2^32, so one wrap of the counter between begin and stop is
// harmless.
struct stWorkRecord
{
    quint32 begin = 0; // tick when the work was last started
    quint32 stop = 0; // tick when the work was last stopped
    quint32 total = 0; // all stretches since the last reset
    quint32 current = 0; // the last finished stretch
    qint64 offset = 0; // extra duration given at the last start, added to the next stretch
    bool running = false;
};

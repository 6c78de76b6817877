#pragma once

#include "tovhost_export.h"

#include <QtGlobal>

// A 32-bit millisecond counter that wraps about every 49.7 days, as the host's tick does.
// Differences are taken in unsigned 32-bit arithmetic so that one wrap is harmless.
class TOVHOST_EXPORT SefTickCount
{
public:
    static quint32 now();
    // Setup: every later reading is shifted by offset (modulo 2^32), so that tests can put the
    // counter just before its wrap. Thread-safe.
    static void setOffset(quint32 offset);

private:
    static quint32 platformNow();
};

#include "seftickcount.h"

#include <atomic>

namespace {

std::atomic<quint32> tickOffset { 0 };

} // namespace

quint32 SefTickCount::now()
{
    return platformNow() + tickOffset.load(std::memory_order_relaxed);
}

void SefTickCount::setOffset(quint32 offset)
{
    tickOffset.store(offset, std::memory_order_relaxed);
}

#include "tovtimetracker.h"

#include <seftickcount.h>

#include <unordered_map>

class TovTimeTrackerPrivate
{
public:
    std::unordered_map<std::string, stWorkRecord> works;
};

namespace {

TovTimeTracker *trackerInstance = nullptr;

} // namespace

TovTimeTracker::TovTimeTracker()
    : d(new TovTimeTrackerPrivate)
{ }

TovTimeTracker::~TovTimeTracker() = default;

TovTimeTracker *TovTimeTracker::getInstance()
{
    if (!trackerInstance)
        trackerInstance = new TovTimeTracker;
    return trackerInstance;
}

void TovTimeTracker::releaseInstance()
{
    delete trackerInstance;
    trackerInstance = nullptr;
}

void TovTimeTracker::startTrackWork(const std::string &name, long long offset)
{
    stWorkRecord &record = d->works[name];
    record.begin = SefTickCount::now();
    record.running = true;
    record.offset = offset;
}

void TovTimeTracker::stopTrackWork(const std::string &name, std::function<void(stWorkRecord &)> callBack)
{
    const auto it = d->works.find(name);
    if (it == d->works.end() || !it->second.running)
        return;
    stWorkRecord &record = it->second;
    record.stop = SefTickCount::now();
    record.running = false;
    // Unsigned 32-bit on purpose: stays right across one wrap; only the offset's low bits count.
    const quint32 stretch = quint32(record.offset) + (record.stop - record.begin);
    record.total += stretch;
    record.current = stretch;
    if (callBack) {
        stWorkRecord copy = record;
        callBack(copy);
    }
}

unsigned long TovTimeTracker::getTime(const std::string &name)
{
    return d->works[name].total;
}

unsigned long TovTimeTracker::getCurTime(const std::string &name)
{
    return d->works[name].current;
}

unsigned long TovTimeTracker::getBeginToNowTime(const std::string &name)
{
    return quint32(SefTickCount::now() - d->works[name].begin);
}

long long TovTimeTracker::getWorkingTime(const std::string &name)
{
    const stWorkRecord &record = d->works[name];
    return record.offset + quint32(SefTickCount::now() - record.begin);
}

bool TovTimeTracker::hasTrackWork(const std::string &name) const
{
    return d->works.find(name) != d->works.end();
}

void TovTimeTracker::removeTrackWork(const std::string &name)
{
    d->works.erase(name);
}

void TovTimeTracker::resetTime(const std::string &name)
{
    d->works[name].total = 0;
}

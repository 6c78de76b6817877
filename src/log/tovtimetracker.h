#pragma once

#include "tovgeneralutility_export.h"

#include "stworkrecord.h"

#include <functional>
#include <memory>
#include <string>

class TovTimeTrackerPrivate;

// Times named works, possibly in several stretches, on the 32-bit millisecond tick.
// Process-wide; created on first use without a lock and unguarded: one thread only.
// Reading a time of an unknown name inserts a zero record for it.
class TOVGENERALUTILITY_EXPORT TovTimeTracker
{
public:
    static TovTimeTracker *getInstance();
    // Destroys the tracker; the next getInstance() makes a new, empty one.
    static void releaseInstance();

    // Starts (or restarts, dropping the running stretch) the work; offset is added to the
    // stretch that follows.
    void startTrackWork(const std::string &name, long long offset = 0);
    // Ends the running stretch and calls callBack with a copy of the record; does nothing (and
    // calls nothing) when the work is unknown or not running.
    void stopTrackWork(const std::string &name, std::function<void(stWorkRecord &)> callBack = nullptr);

    unsigned long getTime(const std::string &name);
    unsigned long getCurTime(const std::string &name);
    unsigned long getBeginToNowTime(const std::string &name);
    // offset + (now - begin), running or not.
    long long getWorkingTime(const std::string &name);

    bool hasTrackWork(const std::string &name) const;
    void removeTrackWork(const std::string &name);
    void resetTime(const std::string &name);

private:
    TovTimeTracker();
    ~TovTimeTracker();
    TovTimeTracker(const TovTimeTracker &) = delete;
    TovTimeTracker &operator=(const TovTimeTracker &) = delete;

    std::unique_ptr<TovTimeTrackerPrivate> const d;
};

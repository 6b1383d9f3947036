#pragma once

#include <deque>

#include "base/threads/nxMutex.h"
#include "base/values/nxDecimal.h"

// A sliding window of values: each is stamped as it arrives, by nxTimeSource's time, and leaves when it is
// older than the duration. Guards itself: any thread may call, but SetDuration, which comes first.
class nxTimeSeries
{
public:
    nxTimeSeries() = default;
    nxTimeSeries(const nxTimeSeries&) = delete;
    nxTimeSeries& operator=(const nxTimeSeries&) = delete;
    virtual ~nxTimeSeries() = default;

    // In seconds. A value that is exactly so old stays; with 0 every value older than now goes.
    void SetDuration(double seconds) { _duration = seconds; }
    void AddValue(const nxDecimal& value);
    // Drops what is too old.
    void Adjust();
    // Of what the last Adjust left; null without values.
    nxDecimal GetMinValue();

private:
    struct Entry
    {
        double seconds;  // since 1970
        nxDecimal value;
    };

    std::deque<Entry> _entries;  // by _mutex; oldest first
    nxMutex _mutex;
    double _duration = 0.0;
};

#pragma once

#include "base/time/nxTimeSource.h"

// The recorded time of a replay, in nanoseconds since 1970-01-01 UTC. Written and read on the replay's
// thread.
class nxReplayTime : public nxTimeSource
{
public:
    void Set(long long nanoseconds) { _now = nanoseconds; }
    long long Get() const { return _now; }
    nxTimeStamp GetNow() const override { return nxTimeStamp::FromNanoseconds(_now); }

private:
    long long _now = 0;
};

#pragma once

#include "base/time/nxTimeSource.h"

// How time passes in a run: what its thread and its scripts take for now. Used on the run's thread.
class nxRunClock : public nxTimeSource
{
public:
    // In nanoseconds since 1970.
    long long Get() const { return _now; }
    void Set(long long time) { _now = time; }
    nxTimeStamp GetNow() const override { return nxTimeStamp::FromNanoseconds(_now); }
    // Waits until that time has come where the run keeps a pace; broken off when the run is to end.
    virtual void WaitFor(long long time) = 0;

protected:
    ~nxRunClock() override = default;

private:
    long long _now = 0;
};

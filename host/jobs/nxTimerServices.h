#pragma once

#include <string>

class nxLaunchedJob;
class nxTimerCallback;

// The time of a run and its timers. Calls come on the run's thread, from inside a callback.
class nxTimerServices
{
public:
    // In nanoseconds since 1970.
    virtual long long GetTime() const = 0;
    // The script's own, by name. To start one again starts it anew.
    virtual void StartTimer(nxLaunchedJob& job, const std::string& name, unsigned int milliseconds) = 0;
    virtual void StopTimer(nxLaunchedJob& job, const std::string& name) = 0;
    // One that calls back, and lives until it is stopped.
    virtual void StartTimer(nxLaunchedJob& job, nxTimerCallback& callback, double seconds) = 0;
    virtual void StopTimer(nxLaunchedJob& job, nxTimerCallback& callback) = 0;

protected:
    ~nxTimerServices() = default;
};

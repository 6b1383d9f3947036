#pragma once

#include "host/feed/nxEventSource.h"
#include "host/jobs/nxTimerServices.h"
#include "host/run/nxJobList.h"
#include "host/run/nxSchedule.h"
#include "host/run/nxTimerQueue.h"

// The timers of a run's jobs. Used on the run's thread.
class nxRunTimers : public nxTimerServices
{
public:
    // All outlive it.
    nxRunTimers(nxRunState& state, const nxRunClock& clock, nxJobList& jobs, const nxEventSource& source,
                nxSchedule& schedule);

    // Of a job that has ended.
    void StopAll(nxLaunchedJob& job);

    long long GetTime() const override { return _clock.Get(); }
    void StartTimer(nxLaunchedJob& job, const std::string& name, unsigned int milliseconds) override;
    void StopTimer(nxLaunchedJob& job, const std::string& name) override;
    void StartTimer(nxLaunchedJob& job, nxTimerCallback& callback, double seconds) override;
    void StopTimer(nxLaunchedJob& job, nxTimerCallback& callback) override;

private:
    void _Run();
    bool _IsHeard(const nxTimerQueue::Due& timer);
    void _Reschedule() { _schedule.Set(nxDue::Timer, _timers.GetNextTime()); }

    nxRunState& _state;
    const nxRunClock& _clock;
    nxJobList& _jobs;
    const nxEventSource& _source;
    nxSchedule& _schedule;
    nxTimerQueue _timers;
};

#pragma once

#include "host/run/nxJobList.h"
#include "host/run/nxJobNews.h"
#include "host/run/nxSchedule.h"

// The changes of parameters that a run was asked for, each at its recorded time. Used on the run's thread.
class nxParameterSchedule
{
public:
    // All outlive it.
    nxParameterSchedule(nxRunState& state, nxJobList& jobs, nxJobNews& news, nxSchedule& schedule);

    // The first of the changes waits for its time.
    void Begin() { _Reschedule(); }
    std::size_t GetCountFromBefore(long long time) const;
    // That were not made.
    std::size_t GetCountLeft() const { return _state.options.changes.size() - _next; }

private:
    void _Apply();
    void _Reschedule();

    nxRunState& _state;
    nxJobList& _jobs;
    nxJobNews& _news;
    nxSchedule& _schedule;
    std::size_t _next = 0;
};

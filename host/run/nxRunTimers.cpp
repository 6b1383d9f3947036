#include "host/run/nxRunTimers.h"

#include <algorithm>
#include <cmath>

#include "base/time/nxTimerCallback.h"

nxRunTimers::nxRunTimers(nxRunState& state, const nxRunClock& clock, nxJobList& jobs,
                         const nxEventSource& source, nxSchedule& schedule)
    : _state(state), _clock(clock), _jobs(jobs), _source(source), _schedule(schedule)
{
    _schedule.SetTask(nxDue::Timer, [this] { _Run(); });
}

// The script has a function for it. Those that call back are trade windows.
bool nxRunTimers::_IsHeard(const nxTimerQueue::Due& timer)
{
    return _jobs.Get(*timer.job)
        .Defines(timer.callback == nullptr ? nxCallback::OnTimer : nxCallback::OnTradeWindowEvent);
}

void nxRunTimers::_Run()
{
    // Over a time in which nobody hears of it once is enough: a short timer may meet a gap of years.
    if (!_IsHeard(_timers.GetNext())) {
        const long long heard = _timers.GetNextTimeOf([this](const auto& timer) { return _IsHeard(timer); });
        const unsigned long long skipped =
            _timers.Skip(std::min({heard, _schedule.GetNextTimeWithout(nxDue::Timer), _source.GetHorizon()}));
        _state.statistics.timers += skipped;
        if (skipped != 0) return _Reschedule();
    }
    const nxTimerQueue::Due timer = _timers.Pop();
    _Reschedule();
    ++_state.statistics.timers;
    if (timer.callback != nullptr) return timer.callback->OnTimer();
    _jobs.Deliver(nxCallback::OnTimer, _jobs.Get(*timer.job), &nxAlgoJobObject::OnTimer, timer.name);
}

void nxRunTimers::StopAll(nxLaunchedJob& job)
{
    _timers.StopAll(job);
    _Reschedule();
}

void nxRunTimers::StartTimer(nxLaunchedJob& job, const std::string& name, unsigned int milliseconds)
{
    // A job that is ending hears no timer.
    if (_jobs.Get(job).IsOver()) return;
    _timers.Start(job, name, _clock.Get(), milliseconds * nxTime::NanosecondsPerMillisecond);
    _Reschedule();
}

void nxRunTimers::StopTimer(nxLaunchedJob& job, const std::string& name)
{
    _timers.Stop(job, name);
    _Reschedule();
}

void nxRunTimers::StartTimer(nxLaunchedJob& job, nxTimerCallback& callback, double seconds)
{
    // No shorter than a script's own timers, lest the recorded time stand still; no longer than it reaches.
    constexpr double shortest = 1e-3;
    constexpr double longest = 9e9;
    if (_jobs.Get(job).IsOver()) return;
    _timers.Start(job, callback, _clock.Get(), std::llround(std::clamp(seconds, shortest, longest) * 1e9));
    _Reschedule();
}

void nxRunTimers::StopTimer(nxLaunchedJob& job, nxTimerCallback& callback)
{
    _timers.Stop(job, callback);
    _Reschedule();
}

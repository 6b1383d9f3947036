#include "host/run/nxParameterSchedule.h"

#include <algorithm>

nxParameterSchedule::nxParameterSchedule(nxRunState& state, nxJobList& jobs, nxJobNews& news,
                                         nxSchedule& schedule)
    : _state(state), _jobs(jobs), _news(news), _schedule(schedule)
{
    _schedule.SetTask(nxDue::Parameter, [this] { _Apply(); });
}

std::size_t nxParameterSchedule::GetCountFromBefore(long long time) const
{
    return static_cast<std::size_t>(std::ranges::count_if(
        _state.options.changes, [&](const nxParameterChange& change) { return change.time < time; }));
}

void nxParameterSchedule::_Reschedule()
{
    _schedule.Set(nxDue::Parameter, GetCountLeft() != 0 ? _state.options.changes[_next].time : nxTime::Never);
}

void nxParameterSchedule::_Apply()
{
    const std::vector<nxParameterChange>& changes = _state.options.changes;
    const long long time = changes[_next].time;
    std::vector<bool> isChanged(_jobs.GetCount());
    for (; _next < changes.size() && changes[_next].time == time; ++_next) {
        const nxParameterChange& change = changes[_next];
        ++_state.statistics.parameterChanges;
        if (!change.tag.empty()) _news.SetDynamicParameter(change.tag, change.name, change.value);
        for (std::size_t i = 0; i < _jobs.GetCount() && !_state.IsEnding(); ++i) {
            nxJobRunner& runner = _jobs.Get(i);
            if ((change.job && *change.job != i) || runner.IsOver()) continue;
            isChanged[i] = true;
            // That it fits was seen to before the run.
            static_cast<void>(runner.GetJob().ChangeParameter(change.name, change.value));
            _jobs.Deliver(nxCallback::OnParameter, runner, &nxAlgoJobObject::OnParameter, change.name,
                          change.value, change.tag);
        }
    }
    _Reschedule();
    for (std::size_t i = 0; i < _jobs.GetCount() && !_state.IsEnding(); ++i)
        if (isChanged[i])
            _jobs.Deliver(nxCallback::OnJobParametersChanged, _jobs.Get(i),
                          &nxAlgoJobObject::OnJobParametersChanged);
}

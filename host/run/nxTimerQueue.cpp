#include "host/run/nxTimerQueue.h"

#include "host/jobs/nxHostJob.h"

namespace {

// Far away is never: no recording reaches beyond.
long long Later(long long time, long long interval)
{
    return time > nxTimerQueue::Never - interval ? nxTimerQueue::Never : time + interval;
}

}  // namespace

void nxTimerQueue::_Start(const Key& key, long long now, long long interval)
{
    _Stop(key);
    const auto [timer, isNew] = _timers.emplace(key, Timer{{}, interval});
    timer->second.place = {Later(now, interval), key.job->GetIndex(), _started++, &timer->first};
    _order.insert(timer->second.place);
}

void nxTimerQueue::_Stop(const Key& key)
{
    const auto timer = _timers.find(key);
    if (timer == _timers.end()) return;
    _order.erase(timer->second.place);
    _timers.erase(timer);
}

void nxTimerQueue::Start(nxHostJob& job, const std::string& name, long long now, long long interval)
{
    _Start({&job, name, nullptr}, now, interval);
}

void nxTimerQueue::Stop(nxHostJob& job, const std::string& name)
{
    _Stop({&job, name, nullptr});
}

void nxTimerQueue::Start(nxHostJob& job, nxTimerCallback& callback, long long now, long long interval)
{
    _Start({&job, {}, &callback}, now, interval);
}

void nxTimerQueue::Stop(nxHostJob& job, nxTimerCallback& callback)
{
    _Stop({&job, {}, &callback});
}

void nxTimerQueue::StopAll(nxHostJob& job)
{
    std::erase_if(_order, [&](const Place& place) { return place.key->job == &job; });
    std::erase_if(_timers, [&](const auto& timer) { return timer.first.job == &job; });
}

nxTimerQueue::Due nxTimerQueue::Pop()
{
    auto node = _order.extract(_order.begin());
    const Key& key = *node.value().key;
    Timer& timer = _timers.find(key)->second;
    timer.place.due = Later(timer.place.due, timer.interval);
    node.value() = timer.place;
    _order.insert(std::move(node));
    return {key.job, key.name, key.callback};
}

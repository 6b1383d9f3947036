#include "host/server/nxTimerQueue.h"

#include "host/jobs/nxHostJob.h"

namespace {

// Far away is never: no recording reaches beyond.
long long Later(long long time, long long interval)
{
    return time > nxTimerQueue::Never - interval ? nxTimerQueue::Never : time + interval;
}

}  // namespace

void nxTimerQueue::Start(nxHostJob& job, const std::string& name, long long now, long long interval)
{
    Stop(job, name);
    const auto [timer, isNew] = _timers.emplace(Key{&job, name}, Timer{{}, interval});
    timer->second.place = {Later(now, interval), job.GetIndex(), _started++, &timer->first};
    _order.insert(timer->second.place);
}

void nxTimerQueue::Stop(nxHostJob& job, const std::string& name)
{
    const auto timer = _timers.find(Key{&job, name});
    if (timer == _timers.end()) return;
    _order.erase(timer->second.place);
    _timers.erase(timer);
}

void nxTimerQueue::StopAll(nxHostJob& job)
{
    std::erase_if(_order, [&](const Place& place) { return place.key->first == &job; });
    std::erase_if(_timers, [&](const auto& timer) { return timer.first.first == &job; });
}

nxTimerQueue::Due nxTimerQueue::Pop()
{
    auto node = _order.extract(_order.begin());
    const Key& key = *node.value().key;
    Timer& timer = _timers.find(key)->second;
    timer.place.due = Later(timer.place.due, timer.interval);
    node.value() = timer.place;
    _order.insert(std::move(node));
    return {key.first, key.second};
}

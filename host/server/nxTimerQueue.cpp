#include "host/server/nxTimerQueue.h"

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
    const auto timer =
        _timers.emplace(Key{&job, name}, Timer{Later(now, interval), interval, _started++}).first;
    _order.emplace(timer->second.due, timer->second.sequence, &timer->first);
}

void nxTimerQueue::Stop(nxHostJob& job, const std::string& name)
{
    const auto timer = _timers.find(Key{&job, name});
    if (timer == _timers.end()) return;
    _order.erase({timer->second.due, timer->second.sequence, &timer->first});
    _timers.erase(timer);
}

nxTimerQueue::Due nxTimerQueue::Pop()
{
    auto node = _order.extract(_order.begin());
    const Key& key = *std::get<2>(node.value());
    Timer& timer = _timers.find(key)->second;
    timer.due = Later(timer.due, timer.interval);
    std::get<0>(node.value()) = timer.due;
    _order.insert(std::move(node));
    return {key.first, key.second};
}

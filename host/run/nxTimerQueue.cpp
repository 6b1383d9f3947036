#include "host/run/nxTimerQueue.h"

#include "host/jobs/nxLaunchedJob.h"

void nxTimerQueue::_Start(const Key& key, long long now, long long interval)
{
    _Stop(key);
    const auto [timer, isNew] = _timers.emplace(key, Timer{{}, interval});
    timer->second.place = {nxTime::GetLater(now, interval), key.job->GetIndex(), _started++, &timer->first};
    _order.insert(timer->second.place);
}

void nxTimerQueue::_Stop(const Key& key)
{
    const auto timer = _timers.find(key);
    if (timer == _timers.end()) return;
    _order.erase(timer->second.place);
    _timers.erase(timer);
}

void nxTimerQueue::Start(nxLaunchedJob& job, const std::string& name, long long now, long long interval)
{
    _Start({&job, name, nullptr}, now, interval);
}

void nxTimerQueue::Stop(nxLaunchedJob& job, const std::string& name)
{
    _Stop({&job, name, nullptr});
}

void nxTimerQueue::Start(nxLaunchedJob& job, nxTimerCallback& callback, long long now, long long interval)
{
    _Start({&job, {}, &callback}, now, interval);
}

void nxTimerQueue::Stop(nxLaunchedJob& job, nxTimerCallback& callback)
{
    _Stop({&job, {}, &callback});
}

void nxTimerQueue::StopAll(nxLaunchedJob& job)
{
    std::erase_if(_order, [&](const Place& place) { return place.key->job == &job; });
    std::erase_if(_timers, [&](const auto& timer) { return timer.first.job == &job; });
}

void nxTimerQueue::_MoveFirst(long long due)
{
    auto node = _order.extract(_order.begin());
    Timer& timer = _timers.find(*node.value().key)->second;
    timer.place.due = due;
    node.value() = timer.place;
    _order.insert(std::move(node));
}

nxTimerQueue::Due nxTimerQueue::Pop()
{
    const Place& first = *_order.begin();
    Due due = _GetDue(first);
    _MoveFirst(nxTime::GetLater(first.due, _timers.find(*first.key)->second.interval));
    return due;
}

unsigned long long nxTimerQueue::Skip(long long until)
{
    const Place& first = *_order.begin();
    if (until <= first.due) return 0;
    const auto interval = static_cast<unsigned long long>(_timers.find(*first.key)->second.interval);
    // Modulo 2^64, where the distance of any two times fits.
    const unsigned long long count =
        (static_cast<unsigned long long>(until) - static_cast<unsigned long long>(first.due)) / interval;
    if (count != 0)
        _MoveFirst(static_cast<long long>(static_cast<unsigned long long>(first.due) + count * interval));
    return count;
}

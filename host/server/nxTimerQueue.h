#pragma once

#include <map>
#include <set>
#include <string>
#include <tuple>

class nxHostJob;

// The named timers of all jobs, in recorded time. A timer is due each interval after it was started, and goes
// on until it is stopped; to start a name again starts it anew. Timers due at one time come in the order in
// which they were started.
class nxTimerQueue
{
public:
    struct Due
    {
        nxHostJob* job;
        std::string name;
    };

    static constexpr long long Never = 0x7fffffffffffffff;

    // Both in nanoseconds; an interval above 0.
    void Start(nxHostJob& job, const std::string& name, long long now, long long interval);
    void Stop(nxHostJob& job, const std::string& name);

    long long GetNextTime() const { return _order.empty() ? Never : std::get<0>(*_order.begin()); }
    // Takes the first timer that is due next, and sets it to its next time. There must be one.
    Due Pop();

private:
    using Key = std::pair<nxHostJob*, std::string>;
    struct Timer
    {
        long long due;
        long long interval;
        unsigned long long sequence;
    };

    std::map<Key, Timer> _timers;
    std::set<std::tuple<long long, unsigned long long, const Key*>> _order;
    unsigned long long _started = 0;
};

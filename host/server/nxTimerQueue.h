#pragma once

#include <compare>
#include <map>
#include <set>
#include <string>
#include <utility>

class nxHostJob;

// The named timers of all jobs, in recorded time. A timer is due each interval after it was started, and goes
// on until it is stopped; to start a name again starts it anew. Timers due at one time come in the order
// of the jobs, those of one job in the order in which they were started.
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
    void StopAll(nxHostJob& job);

    long long GetNextTime() const { return _order.empty() ? Never : _order.begin()->due; }
    // Takes the first timer that is due next, and sets it to its next time. There must be one.
    Due Pop();

private:
    using Key = std::pair<nxHostJob*, std::string>;
    // What the timers are ordered by.
    struct Place
    {
        long long due;
        unsigned int job;  // its index
        unsigned long long sequence;
        const Key* key;

        auto operator<=>(const Place&) const = default;
    };
    struct Timer
    {
        Place place;
        long long interval;
    };

    std::map<Key, Timer> _timers;
    std::set<Place> _order;
    unsigned long long _started = 0;
};

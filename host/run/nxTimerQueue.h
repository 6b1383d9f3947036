#pragma once

#include <compare>
#include <map>
#include <set>
#include <string>

class nxHostJob;
class nxTimerCallback;

// The timers of all jobs, in recorded time: the scripts', by name, and those that call back. A timer is due
// each interval after it was started, and goes on until it is stopped; to start one again starts it anew.
// Timers due at one time come in the order of the jobs, those of one job in the order in which they were
// started.
class nxTimerQueue
{
public:
    struct Due
    {
        nxHostJob* job;
        std::string name;           // of a script's timer
        nxTimerCallback* callback;  // null: it is a script's
    };

    static constexpr long long Never = 0x7fffffffffffffff;

    // Both in nanoseconds; an interval above 0.
    void Start(nxHostJob& job, const std::string& name, long long now, long long interval);
    void Stop(nxHostJob& job, const std::string& name);
    // The callback lives until its timer is stopped.
    void Start(nxHostJob& job, nxTimerCallback& callback, long long now, long long interval);
    void Stop(nxHostJob& job, nxTimerCallback& callback);
    void StopAll(nxHostJob& job);

    long long GetNextTime() const { return _order.empty() ? Never : _order.begin()->due; }
    // Takes the first timer that is due next, and sets it to its next time. There must be one.
    Due Pop();

private:
    struct Key
    {
        nxHostJob* job;
        std::string name;
        nxTimerCallback* callback;

        auto operator<=>(const Key&) const = default;
    };
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

    void _Start(const Key& key, long long now, long long interval);
    void _Stop(const Key& key);

    std::map<Key, Timer> _timers;
    std::set<Place> _order;
    unsigned long long _started = 0;
};

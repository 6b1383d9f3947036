#pragma once

#include <compare>
#include <map>
#include <set>
#include <string>

#include "base/time/nxTime.h"

class nxLaunchedJob;
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
        nxLaunchedJob* job;
        std::string name;           // of a script's timer
        nxTimerCallback* callback;  // null: it is a script's
    };

    // Both in nanoseconds; an interval above 0.
    void Start(nxLaunchedJob& job, const std::string& name, long long now, long long interval);
    void Stop(nxLaunchedJob& job, const std::string& name);
    // The callback lives until its timer is stopped.
    void Start(nxLaunchedJob& job, nxTimerCallback& callback, long long now, long long interval);
    void Stop(nxLaunchedJob& job, nxTimerCallback& callback);
    void StopAll(nxLaunchedJob& job);

    long long GetNextTime() const { return _order.empty() ? nxTime::Never : _order.begin()->due; }
    // Takes the first timer that is due next, and sets it to its next time. There must be one.
    Due Pop();
    // The timer that is due next. There must be one.
    Due GetNext() const { return _GetDue(*_order.begin()); }
    // When the first timer is due of which is(timer) holds.
    template <class Is>
    long long GetNextTimeOf(Is is) const
    {
        for (const Place& place : _order)
            if (is(_GetDue(place))) return place.due;
        return nxTime::Never;
    }
    // Leaves out the times of the timer that is due next, but for the last one that is not after `until`.
    // Answers how many those are.
    unsigned long long Skip(long long until);

private:
    struct Key
    {
        nxLaunchedJob* job;
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

    static Due _GetDue(const Place& place) { return {place.key->job, place.key->name, place.key->callback}; }
    void _MoveFirst(long long due);
    void _Start(const Key& key, long long now, long long interval);
    void _Stop(const Key& key);

    std::map<Key, Timer> _timers;
    std::set<Place> _order;
    unsigned long long _started = 0;
};

#pragma once

#include <array>
#include <functional>

#include "base/time/nxTime.h"

// What a run does at a time of its own beside the events of its source. Of one time it is done in this order.
// The bars that end at that time come after the first two; then ends what ends. Other rows of that time come
// at last, after those that reach the scripts late.
enum class nxDue { BarEnd, Parameter, Adjustment, TradingHours, Venue, Timer, Save, LateRow, Count };

// The next time of each. Who does the work says when it is due next, whenever that changes. Used on the run's
// thread.
class nxSchedule
{
public:
    void SetTask(nxDue due, std::function<void()> run) { _entries[_Index(due)].run = std::move(run); }
    void Set(nxDue due, long long time)
    {
        Entry& entry = _entries[_Index(due)];
        if (entry.next == time) return;
        entry.next = time;
        _FindNext();
    }
    // Perhaps earlier than before.
    void SetEarlier(nxDue due, long long time)
    {
        if (time < _entries[_Index(due)].next) Set(due, time);
    }
    long long Get(nxDue due) const { return _entries[_Index(due)].next; }
    // nxTime::Never where nothing is due.
    long long GetNextTime() const { return _next; }
    // A bar that ends from this time on comes after what is due.
    long long GetNextTimeBeforeBars() const { return _nextBeforeBars; }
    // When something else is due.
    long long GetNextTimeWithout(nxDue due) const
    {
        long long next = nxTime::Never;
        for (const Entry& entry : _entries)
            if (&entry != &_entries[_Index(due)] && entry.next < next) next = entry.next;
        return next;
    }
    // Does what is due at GetNextTime. It has to set its next time.
    void RunNext()
    {
        for (const Entry& entry : _entries)
            if (entry.next == _next) return entry.run();
    }

private:
    struct Entry
    {
        long long next = nxTime::Never;
        std::function<void()> run;
    };

    static std::size_t _Index(nxDue due) { return static_cast<std::size_t>(due); }
    void _FindNext()
    {
        _next = _nextBeforeBars = nxTime::Never;
        for (std::size_t i = 0; i < _entries.size(); ++i) {
            const long long next = _entries[i].next;
            if (next == nxTime::Never) continue;
            const long long beforeBars = i > _Index(nxDue::Parameter) ? next + 1 : next;
            if (next < _next) _next = next;
            if (beforeBars < _nextBeforeBars) _nextBeforeBars = beforeBars;
        }
    }

    std::array<Entry, static_cast<std::size_t>(nxDue::Count)> _entries;
    long long _next = nxTime::Never;
    long long _nextBeforeBars = nxTime::Never;
};

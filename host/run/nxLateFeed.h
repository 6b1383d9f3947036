#pragma once

#include <functional>
#include <vector>

#include "host/feed/nxFeedEvent.h"
#include "host/run/nxFeedArrivals.h"
#include "host/run/nxSchedule.h"

// The rows on their way to the scripts, in a run whose market data reach these later than the exchange. What
// arrives is due in the schedule. Used on the run's thread.
class nxLateFeed
{
public:
    // All outlive it. take: shows a row to the scripts; the event is good until it returns.
    nxLateFeed(const nxRunOptions& options, nxSchedule& schedule,
               std::function<void(const nxFeedEvent&)> take);

    // Otherwise rows reach the scripts at their own time, and none comes here.
    bool IsOn() const { return _isOn; }
    bool IsEmpty() const { return _count == 0; }
    // Copies it.
    void Send(const nxFeedEvent& event);

private:
    struct Row
    {
        nxFeedEvent event;
        std::vector<nxFeedLevel> levels;  // to which the event points on arrival; good for depth alone
        long long due = 0;
    };

    void _Grow();
    void _TakeNext();
    void _Reschedule() { _schedule.Set(nxDue::LateRow, IsEmpty() ? nxTime::Never : _rows[_first].due); }

    const bool _isOn;
    nxSchedule& _schedule;
    const std::function<void(const nxFeedEvent&)> _take;
    nxFeedArrivals _arrivals;
    std::vector<Row> _rows;  // a ring, so that a row finds the storage of one before it
    std::size_t _first = 0;
    std::size_t _count = 0;
};

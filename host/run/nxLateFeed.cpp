#include "host/run/nxLateFeed.h"

#include <algorithm>

nxLateFeed::nxLateFeed(const nxRunOptions& options, nxSchedule& schedule,
                       std::function<void(const nxFeedEvent&)> take)
    : _isOn(options.feedLatency.most != 0), _schedule(schedule), _take(std::move(take)), _arrivals(options)
{
    _schedule.SetTask(nxDue::LateRow, [this] { _TakeNext(); });
}

void nxLateFeed::Send(const nxFeedEvent& event)
{
    if (_count == _rows.size()) _Grow();
    const std::size_t place = _first + _count++;
    Row& row = _rows[place < _rows.size() ? place : place - _rows.size()];
    row.event = event;
    row.due = _arrivals.GetNext(event.time);
    if (event.kind == nxFeedKind::Depth) row.levels.assign(event.levels.begin(), event.levels.end());
    row.event.time = nxFeedArrivals::GetTimeOf(event, row.due);
    if (_count == 1) _Reschedule();
}

void nxLateFeed::_Grow()
{
    std::ranges::rotate(_rows, _rows.begin() + static_cast<std::ptrdiff_t>(_first));
    _first = 0;
    _rows.resize(std::max<std::size_t>(16, 2 * _rows.size()));
}

// The place is free once the scripts have seen the row: what they do sends no other.
void nxLateFeed::_TakeNext()
{
    Row& row = _rows[_first];
    if (row.event.kind == nxFeedKind::Depth) row.event.levels = row.levels;
    _take(row.event);
    _first = _first + 1 < _rows.size() ? _first + 1 : 0;
    --_count;
    _Reschedule();
}

#include "scriptFramework/analytics/nxTimeSeries.h"

#include "base/threads/nxMutexGuard.h"
#include "base/time/nxTimeStamp.h"

void nxTimeSeries::AddValue(const nxDecimal& value)
{
    const Entry entry{nxTimeStamp().GetTotalSecondsAsDouble(), value};
    const nxMutexGuard guard(_mutex);
    _entries.push_back(entry);
}

void nxTimeSeries::Adjust()
{
    const nxMutexGuard guard(_mutex);
    if (_entries.empty()) return;
    const double now = nxTimeStamp().GetTotalSecondsAsDouble();
    while (!_entries.empty() && now - _entries.front().seconds > _duration)
        _entries.pop_front();
}

nxDecimal nxTimeSeries::GetMinValue()
{
    const nxMutexGuard guard(_mutex);
    nxDecimal lowest;
    for (const Entry& entry : _entries)
        if (lowest.IsNull() || entry.value < lowest) lowest = entry.value;
    return lowest;
}

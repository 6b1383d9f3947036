#pragma once

#include <algorithm>
#include <limits>

#include "host/feed/nxFeedEvent.h"
#include "host/run/nxRunOptions.h"

// When the rows of a run reach its scripts: none overtakes the one before it. Latencies are drawn from a
// state of their own, so that they change no other draw, and two of these give the same times for the same
// rows. A value, used by one thread.
class nxFeedArrivals
{
public:
    explicit nxFeedArrivals(const nxRunOptions& options)
        : _latency(options.feedLatency), _random(options.exchange.seed + 2)
    {
    }

    // Of the next row, recorded at that time.
    long long GetNext(long long time)
    {
        _last = std::max(_last, _latency.GetArrival(_random, time));
        return _last;
    }

    // What the scripts take for the time of a row that arrives then. A bar keeps its end, by which it is put
    // into larger bars.
    static long long GetTimeOf(const nxFeedEvent& event, long long arrival)
    {
        return event.kind == nxFeedKind::Bar ? event.time : arrival;
    }

private:
    const nxLatency _latency;
    nxExactRandom _random;
    long long _last = std::numeric_limits<long long>::min();
};

#pragma once

#include <limits>

// Units of the times that count nanoseconds since 1970-01-01 UTC.
inline constexpr long long nxNanosecondsPerMillisecond = 1'000'000;
inline constexpr long long nxNanosecondsPerSecond = 1'000'000'000;

// The last of all times: what is due then never comes.
inline constexpr long long nxNever = std::numeric_limits<long long>::max();

// That much later, a span of 0 or more; never beyond the end of all times.
constexpr long long nxGetLater(long long time, long long span)
{
    return time > nxNever - span ? nxNever : time + span;
}

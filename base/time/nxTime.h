#pragma once

#include <limits>

// Times as plain counts: nanoseconds since 1970-01-01 UTC, as nxTimeStamp::GetTotalNanoseconds gives them.
namespace nxTime {
inline constexpr long long NanosecondsPerMillisecond = 1'000'000;
inline constexpr long long NanosecondsPerSecond = 1'000'000'000;
inline constexpr long long SecondsPerDay = 86'400;
inline constexpr long long NanosecondsPerDay = SecondsPerDay * NanosecondsPerSecond;
// The last of all times, at which nothing is due.
inline constexpr long long Never = std::numeric_limits<long long>::max();

// That much later, a span of 0 or more; never beyond the end of all times.
constexpr long long GetLater(long long time, long long span)
{
    return time > Never - span ? Never : time + span;
}

// That much earlier; never before the first of all times.
constexpr long long GetEarlier(long long time, long long span)
{
    constexpr long long first = std::numeric_limits<long long>::min();
    return time < first + span ? first : time - span;
}
}  // namespace nxTime

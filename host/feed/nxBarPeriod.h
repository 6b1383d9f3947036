#pragma once

#include "base/time/nxTime.h"

// Whether bars of that period, in nanoseconds, are those of days, or longer. Sessions come a day apart; the
// shortest is no shorter than half a day after the one before.
constexpr bool nxIsDailyBar(long long period)
{
    return period > nxTime::NanosecondsPerDay / 2;
}

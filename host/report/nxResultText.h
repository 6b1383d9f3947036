#pragma once

#include <string>

// Times and dates of results as texts.
namespace nxResultText {
// "2013-10-07T13:31:00.25Z", of nanoseconds since 1970, with as many decimals as needed.
std::string GetTime(long long time);
// "2013-10-07", of days since 1970.
std::string GetDate(long long day);
// Milliseconds since 1970 with at most three decimals.
double GetMilliseconds(long long time);
}  // namespace nxResultText

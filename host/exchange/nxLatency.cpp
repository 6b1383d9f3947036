#include "host/exchange/nxLatency.h"

#include "base/values/nxDecimal.h"

namespace {

bool Read(const std::string& text, long long& nanoseconds)
{
    constexpr unsigned char places = 6;
    constexpr long long most = 3'600'000'000'000;
    nxDecimal number;
    if (text.empty() || text.front() == '+' || !number.SetFromString(text).IsSuccess()) return false;
    if (number < nxDecimalZero || number > nxDecimal::FromMantissa(most, places)) return false;
    number.Normalise(places);
    if (number.GetDecimalPlaces() > places) return false;
    nanoseconds = number.GetMantissa();
    return true;
}

}  // namespace

bool nxLatency::SetFromText(const std::string& text)
{
    const std::size_t dash = text.find('-');
    nxLatency wanted;
    if (!Read(text.substr(0, dash), wanted.least)) return false;
    wanted.most = wanted.least;
    if (dash != std::string::npos && !Read(text.substr(dash + 1), wanted.most)) return false;
    if (wanted.most < wanted.least) return false;
    *this = wanted;
    return true;
}

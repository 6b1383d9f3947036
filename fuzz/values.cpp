// Numbers and times as text: what is read is written and read again to the same value.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "base/time/nxDateTime.h"
#include "base/values/nxDecimal.h"
#include "base/values/nxStringHelper.h"
#include "host/feed/nxFeedTime.h"
#include "host/market/nxTradingHours.h"

namespace {

void Require(bool holds)
{
    if (!holds) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    nxDecimal decimal, again;
    if (decimal.SetFromString(text, '.').IsSuccess()) {
        Require(again.SetFromString(decimal.GetAsString('.'), '.').IsSuccess());
        Require(again == decimal && again.GetDecimalPlaces() == decimal.GetDecimalPlaces());
    } else {
        Require(decimal.IsNull());
    }
    long long time = 0;
    long long timeAgain = 0;
    if (nxFeedTime::SetFromText(text, time) == nullptr) {
        Require(nxFeedTime::SetFromText(nxFeedTime::GetAsString(time), timeAgain) == nullptr);
        Require(timeAgain == time);
    }
    double number = 0.0;
    double numberAgain = 0.0;
    if (nxStringHelper::SetFromString(text, number, '.').IsSuccess()) {
        Require(
            nxStringHelper::SetFromString(nxStringHelper::GetAsString(number), numberAgain, '.').IsSuccess());
        Require(number == numberAgain);
    }
    nxDateTime date;
    if (nxDateTime::SetFromString(text, date).IsSuccess()) Require(date.IsValid());
    nxTradingHours hours;
    if (nxTradingHours::SetFromText(text, hours) == nullptr) {
        const long long change = hours.GetNextChange(time);
        Require(change > time);
    }
    return 0;
}

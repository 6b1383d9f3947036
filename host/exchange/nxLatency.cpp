#include "host/exchange/nxLatency.h"

#include <algorithm>

#include "base/values/nxDecimal.h"

namespace {

constexpr std::string_view BareUnit = "ms";

// "5" and "ms".
std::string_view GetUnit(std::string_view text)
{
    const std::size_t end = text.find_last_not_of("nums");
    return text.substr(end == std::string_view::npos ? 0 : end + 1);
}

}  // namespace

bool nxLatency::ReadDuration(std::string_view text, std::string_view bareUnit, long long& nanoseconds)
{
    constexpr struct
    {
        std::string_view name;
        unsigned char places;  // down to nanoseconds
    } units[] = {{"s", 9}, {"ms", 6}, {"us", 3}, {"ns", 0}};
    constexpr long long most = 3'600'000'000'000;
    const std::string_view given = GetUnit(text);
    const auto unit = std::ranges::find(units, given.empty() ? bareUnit : given,
                                        &std::remove_cvref_t<decltype(*units)>::name);
    nxDecimal number;
    const std::string digits(text.substr(0, text.size() - given.size()));
    if (unit == std::end(units) || digits.empty() || digits.front() == '+' ||
        !number.SetFromString(digits).IsSuccess())
        return false;
    if (number < nxDecimalZero || number > nxDecimal::FromMantissa(most, unit->places)) return false;
    number.Normalise(unit->places);
    if (number.GetDecimalPlaces() > unit->places) return false;
    nanoseconds = number.GetMantissa();
    return true;
}

bool nxLatency::SetFromText(const std::string& text)
{
    const std::string_view whole = text;
    const std::size_t dots = whole.find("..");
    const std::size_t end = dots != std::string_view::npos ? dots : whole.find('-');
    nxLatency wanted;
    if (end == std::string_view::npos) {
        if (!ReadDuration(whole, BareUnit, wanted.least)) return false;
        wanted.most = wanted.least;
    } else {
        const std::string_view first = whole.substr(0, end);
        const std::string_view last = whole.substr(end + (dots != std::string_view::npos ? 2 : 1));
        const std::string_view unit = GetUnit(last);
        // "1s-2" might mean either.
        if (unit.empty() && !GetUnit(first).empty()) return false;
        if (!ReadDuration(first, unit.empty() ? BareUnit : unit, wanted.least) ||
            !ReadDuration(last, BareUnit, wanted.most) || wanted.most < wanted.least)
            return false;
    }
    *this = wanted;
    return true;
}

void nxLatency::SetSamples(Samples&& recorded)
{
    const auto [shortest, longest] = std::ranges::minmax_element(recorded, {}, &Sample::duration);
    least = shortest->duration;
    most = longest->duration;
    factor = 1;
    samples = std::make_shared<const Samples>(std::move(recorded));
}

long long nxLatency::_FindSample(long long now) const
{
    const auto after = std::ranges::upper_bound(*samples, now, {}, &Sample::time);
    return after == samples->begin() ? after->duration : std::prev(after)->duration;
}

#include "host/market/nxBarTerms.h"

#include <algorithm>

#include "base/time/nxTime.h"
#include "base/values/nxStringHelper.h"

namespace {

struct Unit
{
    std::string_view name;
    nxBarUnit unit;
    long long seconds;  // of Clock
    long long most;
};

constexpr Unit Units[] = {{"second", nxBarUnit::Clock, 1, 43'200},
                          {"minute", nxBarUnit::Clock, 60, 720},
                          {"hour", nxBarUnit::Clock, 3600, 12},
                          {"day", nxBarUnit::Day, 1, 1000},
                          {"week", nxBarUnit::Week, 1, 1000},
                          {"month", nxBarUnit::Month, 1, 1000},
                          {"trade", nxBarUnit::Trade, 1, 1'000'000'000},
                          {"lot", nxBarUnit::Lot, 1, 4'000'000'000},
                          {"point", nxBarUnit::Price, 1, 1'000'000'000}};

nxBarUnit GetUnit(const nxTickDataPeriodEnum& period)
{
    return period == nxTickDataPeriod_Session ? nxBarUnit::Session : nxBarUnit::Multiple;
}

long long GetSeconds(const nxTickDataPeriodEnum& period)
{
    switch (period.GetValue()) {
        case nxTickDataPeriod_Minute:
            return 60;
        case nxTickDataPeriod_5Minute:
            return 300;
        case nxTickDataPeriod_10Minute:
            return 600;
        case nxTickDataPeriod_30Minute:
            return 1800;
        case nxTickDataPeriod_Hour:
            return 3600;
        default:
            return 1;
    }
}

}  // namespace

nxBarTerms::nxBarTerms(const nxTickDataPeriodEnum& period) : unit(GetUnit(period)), count(GetSeconds(period))
{
}

const char* nxBarTerms::SetFromText(std::string_view text, nxBarTerms& terms)
{
    const std::size_t blank = text.find(' ');
    std::string_view name = blank == text.npos ? text : text.substr(blank + 1);
    const auto find = [&] { return std::ranges::find(Units, name, &Unit::name); };
    const Unit* unit = find();
    if (unit == std::end(Units) && name.ends_with('s')) {
        name.remove_suffix(1);
        unit = find();
    }
    if (unit == std::end(Units))
        return "bars are a count of seconds, minutes, hours, days, weeks, months, trades, lots or points, "
               "such as \"15 minutes\"";
    nxDecimal count = nxDecimalOne;
    if (blank != text.npos && !count.SetFromString(std::string(text.substr(0, blank))).IsSuccess())
        return "the count is no number";
    if (count <= nxDecimalZero || count > nxDecimal::FromMantissa(unit->most, 0))
        return unit->unit == nxBarUnit::Clock
                   ? "a bar of seconds, minutes or hours lasts 12 hours at most; days follow the sessions"
                   : "the count is not above 0, or too large";
    nxBarTerms read;
    read.unit = unit->unit;
    read.distance = count;
    count.Normalise(0);
    if (count.GetDecimalPlaces() != 0 && read.unit != nxBarUnit::Price)
        return "only points may have a fraction";
    if (read.unit != nxBarUnit::Price) read.count = count.GetMantissa() * unit->seconds;
    terms = read;
    return nullptr;
}

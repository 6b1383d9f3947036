#include "host/results/nxVerdict.h"

#include <fmt/format.h>

#include <algorithm>

namespace {

constexpr std::size_t FewDays = 20;
constexpr unsigned long long FewTrips = 30;

std::string Count(unsigned long long number, const char* one, const char* many)
{
    return fmt::format("{} {}", number, number == 1 ? one : many);
}

// A share that is not the whole must not be rounded to it.
std::string Percent(double share)
{
    if (share > 0.995 && share < 1.0) return fmt::format("{:.2f} %", std::min(100.0 * share, 99.99));
    return fmt::format("{:.0f} %", 100.0 * share);
}

}  // namespace

template <class... Parts>
void nxVerdict::_Say(const char* form, const Parts&... parts)
{
    _sentences.push_back(fmt::format(fmt::runtime(form), parts...));
}

std::string nxVerdict::_Money(double amount) const
{
    const auto& currency = _basis.data.currency;
    return (currency.IsUndefined() ? "" : currency.GetAsString() + " ") +
           fmt::format("{:.{}f}", amount, std::abs(amount) < 100.0 ? 2 : 0);
}

nxVerdict::nxVerdict(const nxMeasureBasis& basis, const nxResult& result)
    : _basis(basis), _result(result), _meanDay(basis.days.GetMeanInterval(result.run.seed))
{
    _JudgeLuck();
    _JudgeCosts();
    _JudgeBestTrips();
    _JudgeSource();
    _JudgeFills();
}

void nxVerdict::_JudgeLuck()
{
    const std::size_t days = _basis.data.days.size();
    const std::string over =
        Count(_basis.trips.count, "round trip", "round trips") + " over " + Count(days, "day", "days");
    if (_basis.data.fills == 0) return _Say("No order was filled, so there is nothing to judge.");
    if (days < FewDays || _basis.trips.count < FewTrips)
        _Say("{} are too few to tell skill from luck.", over);
    if (!_meanDay) return;
    const std::string range = _Money(_meanDay->first) + " to " + _Money(_meanDay->second);
    if (_meanDay->first > 0.0) {
        _Say("The mean day lies above 0 with 95 % confidence: {}, from {}.", range, over);
    } else if (_meanDay->second < 0.0) {
        _Say("The mean day lies below 0 with 95 % confidence: {}, from {}.", range, over);
    } else {
        _Say("The mean day may as well be 0: its 95 % interval goes from {}, from {}.", range, over);
    }
}

void nxVerdict::_JudgeCosts()
{
    const double fees = _basis.data.fees.GetAsDouble(), slippage = _basis.data.slippage.GetAsDouble();
    const double profit = _basis.data.profit.GetAsDouble();
    if (_basis.data.fills == 0) return;
    if (fees == 0.0) {
        _Say("The run paid no fees; real trading does.");
    } else if (const double before = profit + fees; fees > 0.0 && before > 0.0) {
        _Say("Fees of {} took {} of the profit before them.", _Money(fees), Percent(fees / before));
    } else {
        _Say("{} {}; before them the profit was {}.", fees < 0.0 ? "Rebates came to" : "Fees came to",
             _Money(std::abs(fees)), _Money(before));
    }
    if (slippage > 0.0 && slippage > std::abs(profit) / 2)
        _Say("The fills cost {} against the mid at which their orders were sent.", _Money(slippage));
}

void nxVerdict::_JudgeBestTrips()
{
    constexpr std::size_t best = 3;
    if (_basis.trips.count <= best || _basis.trips.profit.IsNegative() || _basis.trips.profit.IsZero())
        return;
    std::vector<double> profits;
    for (const nxRoundTrip& trip : _basis.data.trips)
        profits.push_back(trip.profit.GetAsDouble());
    std::ranges::sort(profits, std::ranges::greater());
    const double sum = profits[0] + profits[1] + profits[2];
    const double all = _basis.trips.profit.GetAsDouble();
    if (sum >= all) {
        _Say("Without its three best round trips, which made {}, it would have lost money or made none.",
             _Money(sum));
    } else if (sum > all / 3) {
        _Say("The three best round trips made {} of the profit of all round trips.", Percent(sum / all));
    }
}

// One product of several, or one day of several, that made most of the profit.
void nxVerdict::_JudgeSource()
{
    const double profit = _basis.data.profit.GetAsDouble();
    if (profit <= 0.0) return;
    std::vector<nxExactAmount> products(_result.products.size());
    for (const nxRoundTrip& trip : _basis.data.trips)
        products[trip.product] += trip.profit;
    const auto made = [](const nxExactAmount& amount) { return amount.GetAsDouble(); };
    const auto traded = std::ranges::count_if(products, [](const auto& sum) { return !sum.IsZero(); });
    const auto most = std::ranges::max_element(products, {}, made);
    if (traded > 1 && most->GetAsDouble() > profit / 2)
        _Say("Most of the profit came from one of {} products, {}.", traded,
             _result.products[static_cast<std::size_t>(most - products.begin())].name);
    const std::vector<double>& days = _basis.days.GetProfits();
    const auto bestDay = std::ranges::max_element(days);
    if (days.size() > 1 && *bestDay > profit / 2)
        _Say("One day of {} made {} of the profit.", days.size(), Percent(*bestDay / profit));
}

void nxVerdict::_JudgeFills()
{
    if (_basis.data.volume == 0) return;
    const double share =
        static_cast<double>(_basis.data.makerVolume) / static_cast<double>(_basis.data.volume);
    if (share >= 0.25 && !_result.envelope)
        _Say("{} of the volume was filled as a maker, which hangs on the fill model: run --envelope.",
             Percent(share));
}

#include "host/exchange/nxBarModel.h"

#include <algorithm>

#include "host/exchange/nxPriceDistance.h"

namespace {

nxDecimal GetMet(const nxFeedBar&, nxSide, const nxDecimal&, const nxDecimal& met)
{
    return met;
}

nxDecimal GetWorst(const nxFeedBar& bar, nxSide side, const nxDecimal&, const nxDecimal&)
{
    return nxGetFarEnd(bar, side);
}

// On a tick, to the side that is worse for the order, but never out of the bar, whose prices may be none of
// the ticks. What is too large to add up counts at its worst.
nxDecimal GetMean(const nxFeedBar& bar, nxSide side, const nxDecimal& tick, const nxDecimal&)
{
    constexpr unsigned int count = 4;
    const nxDecimal sum = bar.open + bar.high + bar.low + bar.close;
    const nxDecimal unit = tick.IsValid() ? tick : nxDecimal::FromMantissa(1, sum.GetDecimalPlaces());
    const nxDecimal step = nxGetDistance(unit, count);
    nxDecimal rounded = sum;
    rounded.Round(step, nxRoundingMethod_Nearest);
    if (nxIsBetter(side, sum, rounded)) rounded = nxGetPriceBeyond(side, rounded, step);
    const nxDecimal mean = nxDecimal::FromMantissa(rounded.GetMantissa() / count, rounded.GetDecimalPlaces());
    const nxDecimal& worst = nxGetFarEnd(bar, side);
    return rounded.IsValid() && nxIsBetter(side, worst, mean) ? mean : worst;
}

constexpr nxBarModel Models[] = {
    {"open", "at the open, a stop at its price", GetMet},
    {"mean", "at the mean of open, high, low and close", GetMean},
    {"worst", "at the high for a buy, at the low for a sell", GetWorst},
};

}  // namespace

std::span<const nxBarModel> nxBarModel::GetAll()
{
    return Models;
}

const nxBarModel* nxBarModel::Find(std::string_view name)
{
    const auto found = std::ranges::find(Models, name, &nxBarModel::name);
    return found == std::end(Models) ? nullptr : found;
}

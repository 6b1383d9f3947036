#include "host/accounts/nxProductAccount.h"

namespace {

// Scripts find 0 where there is no average.
nxDecimal OrZero(const nxDecimal& number)
{
    return number.IsValid() ? number : nxDecimalZero;
}

}  // namespace

nxDecimal nxProductAccount::GetMark(const nxPrice& price) const
{
    const long long net = _keeper.GetNet();
    nxDecimal side;
    nxVolume volume;
    if (net < 0) {
        price.GetBestAskPriceAndVolume(side, volume);
    } else if (net > 0) {
        price.GetBestBidPriceAndVolume(side, volume);
    }
    if (side.IsValid()) return side;
    return price.GetLastPrice().IsValid() ? price.GetLastPrice() : nxDecimal();
}

void nxProductAccount::FillTotal(nxAlgoPosition& position) const
{
    const nxPositionKeeper::Section& total = _keeper.GetTotal();
    const nxPositionKeeper::Section& day = _keeper.GetDay();
    position.SetTotalLong(total.bought);
    position.SetTotalShort(total.sold);
    position.SetTotalAverageBuyPrice(OrZero(total.GetAverageBuyPrice()));
    position.SetTotalAverageSellPrice(OrZero(total.GetAverageSellPrice()));
    position.SetTotalCost(total.cost.GetAsDecimal());
    position.SetTotalRevenue(total.revenue.GetAsDecimal());
    position.SetDayLong(static_cast<unsigned int>(day.bought));
    position.SetDayShort(static_cast<unsigned int>(day.sold));
    position.SetDayAverageBuyPrice(OrZero(day.GetAverageBuyPrice()));
    position.SetDayAverageSellPrice(OrZero(day.GetAverageSellPrice()));
    position.SetDayCost(day.cost.GetAsDecimal());
    position.SetDayRevenue(day.revenue.GetAsDecimal());
    position.SetRunningOpenDayAveragePrice(OrZero(_keeper.GetOpenAveragePrice()));
    position.SetOpenPos(static_cast<int>(_keeper.GetNet()));
    position.SetCurrency(_currency);
}

void nxProductAccount::FillLocal(nxAlgoPosition& position) const
{
    const nxPositionKeeper::Section& total = _keeper.GetTotal();
    position.SetLocalLong(total.bought);
    position.SetLocalShort(total.sold);
    position.SetLocalAverageBuyPrice(OrZero(total.GetAverageBuyPrice()));
    position.SetLocalAverageSellPrice(OrZero(total.GetAverageSellPrice()));
    position.SetLocalCost(total.cost.GetAsDecimal());
    position.SetLocalRevenue(total.revenue.GetAsDecimal());
}

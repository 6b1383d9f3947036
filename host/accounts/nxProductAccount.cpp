#include "host/accounts/nxProductAccount.h"

#include "host/market/nxBestQuote.h"

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
    if (net != 0) {
        const nxBestQuote best(price, net > 0 ? nxSide::Buy : nxSide::Sell);
        if (best.price.IsValid()) return best.price;
    }
    return price.GetLastPrice().IsValid() ? price.GetLastPrice() : nxDecimal();
}

void nxProductAccount::FillTotal(nxAlgoPosition& position) const
{
    const nxPositionKeeper::Section& total = _keeper.GetTotal();
    const nxPositionKeeper::Section& day = _keeper.GetDay();
    position.SetTotalLong(total.volume.buy);
    position.SetTotalShort(total.volume.sell);
    position.SetTotalAverageBuyPrice(OrZero(total.GetAveragePrice(nxSide::Buy)));
    position.SetTotalAverageSellPrice(OrZero(total.GetAveragePrice(nxSide::Sell)));
    position.SetTotalCost(total.money.buy.GetAsDecimal());
    position.SetTotalRevenue(total.money.sell.GetAsDecimal());
    position.SetDayLong(static_cast<unsigned int>(day.volume.buy));
    position.SetDayShort(static_cast<unsigned int>(day.volume.sell));
    position.SetDayAverageBuyPrice(OrZero(day.GetAveragePrice(nxSide::Buy)));
    position.SetDayAverageSellPrice(OrZero(day.GetAveragePrice(nxSide::Sell)));
    position.SetDayCost(day.money.buy.GetAsDecimal());
    position.SetDayRevenue(day.money.sell.GetAsDecimal());
    position.SetRunningOpenDayAveragePrice(OrZero(_keeper.GetOpenAveragePrice()));
    position.SetOpenPos(static_cast<int>(_keeper.GetNet()));
    position.SetCurrency(_currency);
}

void nxProductAccount::FillLocal(nxAlgoPosition& position) const
{
    const nxPositionKeeper::Section& total = _keeper.GetTotal();
    position.SetLocalLong(total.volume.buy);
    position.SetLocalShort(total.volume.sell);
    position.SetLocalAverageBuyPrice(OrZero(total.GetAveragePrice(nxSide::Buy)));
    position.SetLocalAverageSellPrice(OrZero(total.GetAveragePrice(nxSide::Sell)));
    position.SetLocalCost(total.money.buy.GetAsDecimal());
    position.SetLocalRevenue(total.money.sell.GetAsDecimal());
}

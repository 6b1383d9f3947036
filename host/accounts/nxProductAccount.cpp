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

nxAdjusted nxProductAccount::GetAdjusted(const nxAdjustment& adjustment, const nxDecimal& mark) const
{
    constexpr unsigned char places = 10;
    const long long net = _keeper.GetNet();
    const nxDecimal price = mark.IsValid() ? mark : _keeper.GetOpenAveragePrice();
    switch (adjustment.kind) {
        case nxAdjustmentKind::Funding:
            return {nxExactAmount(price, -net, _pointValue) * adjustment.value, net, net != 0};
        case nxAdjustmentKind::Dividend:
        case nxAdjustmentKind::Roll:
            return {nxExactAmount(adjustment.value, net, _pointValue), net, net != 0};
        case nxAdjustmentKind::Split:
            break;
    }
    // A part of a lot is paid out at the price that it has then.
    const long long part = net * adjustment.newLots % adjustment.oldLots;
    return {nxExactAmount(price, part, _pointValue).GetShare(1, adjustment.newLots, places),
            net * adjustment.newLots / adjustment.oldLots, net != 0};
}

void nxProductAccount::Adjust(const nxAdjustment& adjustment, const nxAdjusted& adjusted)
{
    if (adjustment.kind == nxAdjustmentKind::Roll) return _keeper.Roll(adjustment.value);
    _keeper.AddCash(adjusted.amount);
    if (adjustment.kind == nxAdjustmentKind::Split) _keeper.Split(adjustment, adjusted.lots);
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

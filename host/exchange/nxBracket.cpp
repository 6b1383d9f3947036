#include "host/exchange/nxBracket.h"

#include "host/exchange/nxPriceDistance.h"

namespace {

nxDecimal GetPrice(nxSide side, const nxDecimal& from, const nxDecimal& tick, unsigned int ticks)
{
    return nxGetPriceBeyond(side, from, nxGetDistance(tick.IsValid() ? tick : nxDecimalOne, ticks));
}

void MakeChild(nxExchangeOrder& child, const nxExchangeOrder& parent, const nxBracket::Fill& fill)
{
    child.parent = parent.id;
    child.kind = parent.kind;
    child.kind.side = nxGetOpposite(parent.kind.side);
    child.terms.volume = fill.volume;
    if (child.kind.duration == nxOrderDuration::Date) child.terms.expiry = parent.terms.expiry;
    if (child.kind.IsForOpening()) child.kind.duration = nxOrderDuration::Day;
}

}  // namespace

bool nxBracket::HasStop(const nxExchangeOrder& parent)
{
    return nxOrderTerms::GetOr(parent.terms.bracketStopLoss, 0) != 0;
}

bool nxBracket::HasProfit(const nxExchangeOrder& parent)
{
    return nxOrderTerms::GetOr(parent.terms.bracketProfit, 0) != 0;
}

void nxBracket::MakeStop(nxExchangeOrder& child, const nxExchangeOrder& parent, const Fill& fill,
                         const nxDecimal& tick)
{
    const nxOrderTerms& wanted = parent.terms;
    const unsigned int ticks = wanted.bracketStopLoss.GetValue();
    const bool trails = wanted.bracketStopTrails.value_or(false);
    MakeChild(child, parent, fill);
    child.kind.execution = trails ? nxOrderExecution::TrailingStop : nxOrderExecution::Stop;
    child.terms.stopPrice = GetPrice(child.kind.side, fill.price, tick, ticks);
    child.kind.isMarket = !wanted.bracketStopIsLimit.value_or(false);
    if (!child.kind.isMarket)
        child.terms.price = GetPrice(child.kind.side, child.terms.stopPrice, tick,
                                     nxOrderTerms::GetOr(wanted.bracketStopLimit, 0));
    if (trails) child.trailDistance = nxGetDistance(tick.IsValid() ? tick : nxDecimalOne, ticks);
    child.triggered = false;
}

void nxBracket::MakeProfit(nxExchangeOrder& child, const nxExchangeOrder& parent, const Fill& fill,
                           const nxDecimal& tick)
{
    MakeChild(child, parent, fill);
    child.kind.isMarket = false;
    child.kind.execution = nxOrderExecution::None;
    child.terms.price = GetPrice(parent.kind.side, fill.price, tick, parent.terms.bracketProfit.GetValue());
}

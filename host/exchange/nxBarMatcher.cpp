#include "host/exchange/nxBarMatcher.h"

#include <algorithm>

#include "host/exchange/nxPriceDistance.h"
#include "host/exchange/nxShownMarket.h"

// The price at which a stop is reached within the bar; null when it is not. One that trails is tried where it
// stands and then follows the bar's far end, from where the close may have come back to it.
nxDecimal nxBarMatcher::_FindStop(nxExchangeOrder& order, const nxFeedBar& bar) const
{
    const nxSide side = order.kind.side;
    const auto reaches = [side](const nxDecimal& price, const nxDecimal& stop) {
        return !nxIsBetter(side, stop, price);
    };
    nxDecimal& stop = order.terms.stopPrice;
    if (reaches(bar.open, stop)) return bar.open;
    if (reaches(nxGetFarEnd(bar, side), stop)) return stop;
    if (!order.trailDistance.IsValid()) return {};
    const nxDecimal moved =
        nxGetPriceBeyond(side, nxGetFarEnd(bar, nxGetOpposite(side)), order.trailDistance);
    if (reaches(moved, stop)) return {};
    stop = moved;
    return reaches(bar.close, moved) ? moved : nxDecimal();
}

// Whether a bar that comes to that price fills an order that is in the market.
bool nxBarMatcher::_IsReached(const nxExchangeOrder& order, const nxDecimal& price) const
{
    const bool isBeyond = !_rule.isThrough || order.kind.isMarket || price != order.terms.price;
    return isBeyond && order.IsWithin(price);
}

// Of an order that does not rest at its price. One that has named a price, a stop or a limit, is not filled
// better than where the bar met it, and never beyond its limit.
nxDecimal nxBarMatcher::_FindPrice(const nxExchangeOrder& order, const nxFeedBar& bar,
                                   const nxDecimal& met) const
{
    const nxSide side = order.kind.side;
    const nxDecimal price = _rule.model->findPrice(bar, side, _tick, met);
    const bool hasPrice = order.kind.IsStop() || !order.kind.isMarket;
    if (hasPrice && nxIsBetter(side, met, price)) return met;
    return order.IsWithin(price) ? price : order.terms.price;
}

// True when the order has left where it waited: it is filled, or was a stop.
bool nxBarMatcher::_Fill(nxExchangeOrder& order, const nxFeedBar& bar, unsigned int& budget)
{
    if (order.GetRemaining() == 0) return false;
    const bool waited = !order.triggered;
    nxDecimal met = bar.open;
    bool isMaker = false;
    if (waited) {
        met = _FindStop(order, bar);
        if (!met.IsValid()) return false;
        _listener.Trigger(order);
        // Nobody knows where the price went from the stop on, so a limit beyond it waits for the next bar.
        if (!order.IsWithin(met)) return true;
    } else if (!_IsReached(order, bar.open)) {
        if (!_IsReached(order, nxGetFarEnd(bar, nxGetOpposite(order.kind.side)))) return false;
        isMaker = true;
    }
    const unsigned int volume = std::min(order.GetRemaining(), budget);
    const bool isPart = order.kind.execution == nxOrderExecution::FillOrKill && volume < order.GetRemaining();
    if (volume == 0 || isPart) return waited;
    budget -= volume;
    const nxDecimal price = isMaker ? order.terms.price : _FindPrice(order, bar, met);
    _listener.Fill(order, price, volume, isMaker, nxFillCause::Bar);
    return waited || order.GetRemaining() == 0;
}

unsigned int nxBarMatcher::_GetBudget(const nxFeedBar& bar) const
{
    if (_participation == 0 || !bar.volume.IsValid()) return nxShownMarket::Unlimited;
    const unsigned long long share = 1ull * bar.volume.GetValue() * _participation / 100;
    return static_cast<unsigned int>(std::min<unsigned long long>(share, nxShownMarket::Unlimited));
}

void nxBarMatcher::_Match(const nxFeedBar& bar, long long time)
{
    constexpr long long first = std::numeric_limits<long long>::min();
    long long begin = std::exchange(_lastEnd, time);
    if (_period != 0) begin = nxTime::GetEarlier(time, _period);
    begin = std::min(begin, nxTime::GetEarlier(time, 1));
    if (_orders.IsEmpty()) return;
    unsigned int budget = _GetBudget(bar);
    _Match(bar, first, begin + 1, budget);
    const nxFeedBar close{bar.close, bar.close, bar.close, bar.close, bar.volume};
    _Match(close, begin + 1, time, budget);
}

// Market orders first, since they fill at the open; then stops, of which nobody knows whether the price came
// to a limit before it came to them; then limits from the best price on.
void nxBarMatcher::_Match(const nxFeedBar& bar, long long from, long long until, unsigned int& budget)
{
    const auto serve = [&](std::vector<nxExchangeOrder*>& orders) {
        std::erase_if(orders, [&](nxExchangeOrder* order) {
            const bool isMet = order->arrived >= from && order->arrived < until;
            if (!isMet || !_Fill(*order, bar, budget)) return false;
            if (order->GetRemaining() != 0) _triggered.push_back(order);
            return true;
        });
    };
    serve(_orders.GetUnlimited());
    serve(_orders.GetStops());
    for (const nxSide side : nxSides)
        _orders.ForEachLevel(side, [&](const nxDecimal&, nxOwnOrders::Level& level) {
            serve(level.orders);
            return true;
        });
}

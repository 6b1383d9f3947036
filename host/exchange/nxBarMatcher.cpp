#include "host/exchange/nxBarMatcher.h"

#include <algorithm>

#include "host/exchange/nxPriceDistance.h"
#include "host/exchange/nxShownMarket.h"

namespace {

// The bar's end that is farthest up for a buy, farthest down for a sell.
const nxDecimal& GetFarEnd(const nxFeedBar& bar, nxSide side)
{
    return side == nxSide::Buy ? bar.high : bar.low;
}

}  // namespace

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
    if (reaches(GetFarEnd(bar, side), stop)) return stop;
    if (!order.trailDistance.IsValid()) return {};
    const nxDecimal moved = nxGetPriceBeyond(side, GetFarEnd(bar, nxGetOpposite(side)), order.trailDistance);
    if (reaches(moved, stop)) return {};
    stop = moved;
    return reaches(bar.close, moved) ? moved : nxDecimal();
}

// True when the order has left where it waited: it is filled, or was a stop.
bool nxBarMatcher::_Fill(nxExchangeOrder& order, const nxFeedBar& bar, unsigned int& budget)
{
    if (order.GetRemaining() == 0) return false;
    const bool waited = !order.triggered;
    nxDecimal price = bar.open;
    if (waited) {
        price = _FindStop(order, bar);
        if (!price.IsValid()) return false;
        _listener.Trigger(order);
        // Nobody knows where the price went from the stop on, so a limit beyond it waits for the next bar.
        if (!order.IsWithin(price)) return true;
    } else if (!order.IsWithin(bar.open)) {
        if (!order.IsWithin(GetFarEnd(bar, nxGetOpposite(order.kind.side)))) return false;
        price = order.terms.price;
    }
    const unsigned int volume = std::min(order.GetRemaining(), budget);
    const bool isPart = order.kind.execution == nxOrderExecution::FillOrKill && volume < order.GetRemaining();
    if (volume == 0 || isPart) return waited;
    budget -= volume;
    const bool isMaker = !waited && !order.kind.isMarket && price != bar.open;
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

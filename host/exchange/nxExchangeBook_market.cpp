// What recorded trades, quotes and depth do to the orders of a book.
#include <algorithm>
#include <cassert>
#include <utility>

#include "host/exchange/nxExchangeBook.h"
#include "host/exchange/nxPriceDistance.h"

namespace {

// Unknown places, whose raw value is the largest, are the last ones.
[[maybe_unused]] bool IsQueue(const std::vector<nxExchangeOrder*>& orders)
{
    return std::ranges::is_sorted(orders, {}, [](const nxExchangeOrder* order) { return order->ahead; });
}

// A buyer does not trade with bids at the price he pays, but one who paid less than a bid did.
bool HitsAtPrice(nxSide side, const nxBuySellEnum& aggressor)
{
    return aggressor != nxGetBuySell(side);
}

}  // namespace

// Everybody at this price was reached: no queue counts, and icebergs come round with peak after peak.
void nxExchangeBook::_FillThrough(Level& level, const nxDecimal& price, unsigned int& budget,
                                  nxFillCause cause)
{
    for (std::size_t index = 0; budget != 0 && index < level.orders.size();)
        _FillResting(level, index, price, budget, cause);
}

void nxExchangeBook::_FillWhole(Level& level, const nxDecimal& price)
{
    unsigned int endless = nxShownMarket::Unlimited;
    _FillThrough(level, price, endless, nxFillCause::Touched);
}

// A trade at the level's own price. What stood in front of an order goes first, as far as the budget, which
// is what better own orders left of the trade; whether they are filled or only move up is the model's to say.
void nxExchangeBook::_FillQueue(Level& level, const nxDecimal& price, unsigned int traded,
                                unsigned int budget)
{
    assert(IsQueue(level.orders));
    unsigned int consumed = 0;  // of the recorded volume
    for (std::size_t i = 0; _rules.fills->rule.fillsAtPrice && budget != 0 && i < level.orders.size();) {
        const nxVolume ahead = level.orders[i]->ahead;
        if (!ahead.IsValid()) {
            ++i;
            continue;
        }
        const unsigned int gone = std::min(ahead.GetValue() - std::min(ahead.GetValue(), consumed), budget);
        consumed += gone;
        budget -= gone;
        // An iceberg's new peak stands behind all that was shown before this trade, like every `ahead` here.
        _FillResting(level, i, price, budget, nxFillCause::Queue);
    }
    consumed += budget;
    if (level.shown.IsValid())
        level.shown = level.shown.GetValue() - std::min(level.shown.GetValue(), traded);
    for (nxExchangeOrder* order : level.orders) {
        const nxVolume ahead = order->ahead;
        if (!ahead.IsValid() || ahead.GetValue() == 0) continue;
        unsigned int left = ahead.GetValue() - std::min(ahead.GetValue(), consumed);
        if (level.shown.IsValid()) left = std::min(left, level.shown.GetValue());
        order->ahead = left;
        if (order->ahead != ahead) _listener.OnQueueMoved(*order, ahead, nxQueueMove::Traded);
    }
}

// Nobody is in front any more of those that a trade went beyond.
void nxExchangeBook::_PassQueue(Level& level)
{
    if (level.shown.IsValid()) level.shown = 0u;
    for (nxExchangeOrder* order : level.orders) {
        const nxVolume ahead = order->ahead;
        if (!ahead.IsValid() || ahead.GetValue() == 0) continue;
        order->ahead = 0u;
        _listener.OnQueueMoved(*order, ahead, nxQueueMove::Traded);
    }
}

void nxExchangeBook::_OnTrade(const nxDecimal& price, const nxVolume& traded, const nxBuySellEnum& aggressor)
{
    for (const nxSide side : nxSides) {
        // A trade of unknown size fills all that it went beyond, and takes nothing from a queue.
        unsigned int budget = traded.IsValid() ? traded.GetValue() : nxShownMarket::Unlimited;
        unsigned int explained = 0;  // of it, by what the data show already
        const bool hitsAtPrice = HitsAtPrice(side, aggressor);
        _orders.ForEachLevel(side, [&](const nxDecimal& own, Level& level) {
            const bool isThrough = nxIsBetter(side, own, price);
            if (!isThrough && own != price) return false;
            if (!isThrough && hitsAtPrice && traded.IsValid())
                explained = _RecallCancelled(level, traded.GetValue());
            if (_rules.fills->rule.fillsWhole && (isThrough || hitsAtPrice)) {
                _FillWhole(level, own);
            } else if (isThrough) {
                _FillThrough(level, own, budget, nxFillCause::TradedThrough);
                _PassQueue(level);
            } else if (hitsAtPrice && traded.IsValid()) {
                _FillQueue(level, own, traded.GetValue(), budget);
            }
            return isThrough;
        });
        _TakeTraded(side, price, traded.IsValid() ? nxVolume(traded.GetValue() - explained) : traded,
                    aggressor);
    }
}

void nxExchangeBook::_TakeTraded(nxSide side, const nxDecimal& price, const nxVolume& traded,
                                 const nxBuySellEnum& aggressor)
{
    _shown.TakeTraded(side, price, HitsAtPrice(side, aggressor) ? traded : nxVolume(0u));
}

void nxExchangeBook::_RefreshLevel(Level& level, const nxVolume& shown)
{
    assert(IsQueue(level.orders));
    const nxVolume before = std::exchange(level.shown, shown);
    const bool isLess = shown.IsValid() && before.IsValid() && shown.GetValue() < before.GetValue();
    const unsigned int gone = isLess ? before.GetValue() - shown.GetValue() : 0;
    if (!shown.IsValid() || (isLess && level.cancelledAt < nxTime::GetEarlier(_time, _rules.lateTrades)))
        level.ForgetCancelled();
    if (!shown.IsValid()) return;
    if (isLess && _rules.lateTrades > 0) level.NoteCancelled(gone, _time);
    const unsigned int now = shown.GetValue();
    unsigned int least = 0;  // by the power model a later order may move up by more, but passes nobody
    for (nxExchangeOrder* order : level.orders) {
        const nxVolume ahead = order->ahead;
        unsigned int left = ahead.IsValid() ? ahead.GetValue() : now;
        if (ahead.IsValid() && isLess) left = _rules.queue.Advance(left, before.GetValue(), gone);
        least = std::max(least, std::min(left, now));
        order->ahead = least;
        if (isLess && ahead.IsValid()) order->movedUp += ahead.GetValue() - order->ahead.GetValue();
        if (order->ahead != ahead) _listener.OnQueueMoved(*order, ahead, nxQueueMove::Shown);
    }
}

// A trade at the level's price that is recorded after the change of size that it caused: what counted as
// cancelled stands in the queue again, as far as the trade explains it.
unsigned int nxExchangeBook::_RecallCancelled(Level& level, unsigned int traded)
{
    ++_lateTrades.all;
    if (level.cancelled == 0 || level.cancelledAt < nxTime::GetEarlier(_time, _rules.lateTrades)) return 0;
    ++_lateTrades.late;
    const unsigned int back = std::min(traded, level.cancelled);
    for (nxExchangeOrder* order : level.orders) {
        if (!order->ahead.IsValid()) continue;
        const unsigned long long share = 1ull * order->movedUp * back + level.cancelled - 1;
        const auto part = static_cast<unsigned int>(share / level.cancelled);
        order->movedUp -= part;
        order->ahead = order->ahead.GetValue() + part;
    }
    level.cancelled -= back;
    if (level.shown.IsValid()) level.shown = level.shown.GetValue() + back;
    return back;
}

void nxExchangeBook::_RefreshAll(nxSide side)
{
    const auto refresh = [&](auto& entry) {
        _RefreshLevel(entry.second, _shown.GetVolume(side, entry.first));
    };
    nxOwnOrders::Levels& levels = _orders.GetLevels(side);
    // From the lowest price on; listeners are told in this order.
    if (side == nxSide::Buy) {
        std::for_each(levels.rbegin(), levels.rend(), refresh);
    } else {
        std::ranges::for_each(levels, refresh);
    }
}

// Of data that show the best price alone: better levels are empty, worse ones are not shown. True when the
// data have shown it anew. isGiven: they named it, be it as before.
bool nxExchangeBook::_RefreshBest(nxSide side, bool isGiven)
{
    const bool isAnew = _shown.ShowBest(side, isGiven) || isGiven;
    if (isAnew) _RefreshAll(side);
    return isAnew;
}

// Resting orders that a quote of the other side has come to.
void nxExchangeBook::_MeetQuotes(nxSide side)
{
    std::vector<nxExchangeOrder*>& unlimited = _orders.GetUnlimited();
    for (std::size_t i = 0; i < unlimited.size();) {
        nxExchangeOrder& order = *unlimited[i];
        if (order.kind.side == side) _Take(order);
        if (order.GetRemaining() == 0 || !order.IsAlive()) {
            unlimited.erase(unlimited.begin() + static_cast<std::ptrdiff_t>(i));
        } else {
            ++i;
        }
    }
    if (_orders.GetLevels(side).empty()) return;
    const nxSide other = nxGetOpposite(side);
    _shown.ForEach(other, [&](const nxDecimal& quote, unsigned int free) {
        if (nxIsBetter(side, quote, _orders.GetLevels(side).begin()->first)) return false;
        if (free != 0) _shown.Take(other, quote, _MeetQuote(side, quote, free));
        return !_orders.GetLevels(side).empty();
    });
}

// What orders take of the free volume of a quote.
unsigned int nxExchangeBook::_MeetQuote(nxSide side, const nxDecimal& quote, unsigned int free)
{
    unsigned int budget = _rules.fills->rule.fillsWhole ? nxShownMarket::Unlimited : free;
    const unsigned int begin = budget;
    _orders.ForEachLevel(side, [&](const nxDecimal& own, Level& level) {
        if (nxIsBetter(side, quote, own)) return false;
        _FillThrough(level, own, budget,
                     _rules.fills->rule.fillsWhole ? nxFillCause::Touched : nxFillCause::Crossed);
        return budget != 0;
    });
    return std::min(free, begin - budget);
}

nxDecimal nxExchangeBook::GetStopReference(nxSide side) const
{
    const nxDecimal& last = _market.GetPrice().GetLastPrice();
    if (last.IsValid() || _isOfBars) return last;
    return _shown.GetBestPrice(nxGetOpposite(side));
}

// Whether the market has come to the stop; else one that trails follows.
bool nxExchangeBook::_TryStop(nxExchangeOrder& order)
{
    const nxSide side = order.kind.side;
    const nxDecimal price = GetStopReference(side);
    if (!price.IsValid() || order.GetRemaining() == 0) return false;
    nxDecimal& stop = order.terms.stopPrice;
    if (!nxIsBetter(side, stop, price)) return true;
    if (!order.trailDistance.IsValid()) return false;
    const nxDecimal followed = nxGetPriceBeyond(side, price, order.trailDistance);
    if (nxIsBetter(side, stop, followed)) stop = followed;
    return false;
}

void nxExchangeBook::_TryStops()
{
    std::vector<nxExchangeOrder*>& stops = _orders.GetStops();
    for (std::size_t i = 0; i < stops.size();) {
        nxExchangeOrder& order = *stops[i];
        if (!_TryStop(order)) {
            ++i;
            continue;
        }
        stops.erase(stops.begin() + static_cast<std::ptrdiff_t>(i));
        _Trigger(order);
    }
}

void nxExchangeBook::_Trigger(nxExchangeOrder& order)
{
    order.isResting = false;
    _listener.Trigger(order);
    Enter(order);
}

void nxExchangeBook::OnQuote(const nxFeedQuote& quote, long long time)
{
    if (_isOfBars) return;
    _time = time;
    const nxDecimal& last = _market.GetPrice().GetLastPrice();
    const bool isTrade = quote.IsTrade() && last.IsValid();
    if (isTrade) _OnTrade(last, quote.lastVolume, quote.side);
    if (!_shown.UsesDepth()) {
        // What the row of a trade repeats is the quote before it: the trade is counted already. What was
        // shown before an opening is no longer known to hold.
        const bool counts = std::exchange(_isFirstRow, false) || !isTrade;
        const bool bid = counts && (!quote.bid.IsNoChange() || !quote.bidVolume.IsNoChange());
        const bool ask = counts && (!quote.ask.IsNoChange() || !quote.askVolume.IsNoChange());
        const nxBySide<bool> isAnew{_RefreshBest(nxSide::Buy, bid), _RefreshBest(nxSide::Sell, ask)};
        for (const nxSide side : nxSides)
            if (isAnew[nxGetOpposite(side)]) _MeetQuotes(side);
    }
    if (isTrade || !last.IsValid()) _TryStops();
}

void nxExchangeBook::OnDepth(std::span<const nxFeedLevel> levels, long long time)
{
    if (_isOfBars) return;
    _time = time;
    if (_shown.UseDepth()) Resume();
    for (const nxFeedLevel& level : levels) {
        _shown.ShowLevel(level.side, level.price, level.volume.GetValue());
        nxOwnOrders::Levels& own = _orders.GetLevels(level.side);
        if (own.empty()) continue;
        const auto found = own.find(level.price);
        if (found != own.end()) _RefreshLevel(found->second, level.volume);
    }
    for (const nxSide side : nxSides)
        _MeetQuotes(side);
    if (!_market.GetPrice().GetLastPrice().IsValid()) _TryStops();
}

void nxExchangeBook::Join()
{
    _shown.Join();
    // What the latest trade took is not shown yet.
    const nxPrice& price = _market.GetPrice();
    for (const nxSide side : nxSides)
        if (_market.GetTraded().IsValid())
            _TakeTraded(side, price.GetLastPrice(), _market.GetTraded(),
                        price.GetLastPriceBuySellIndicator());
}

void nxExchangeBook::Resume()
{
    _isFirstRow = true;
    _shown.Forget();
    for (const nxSide side : nxSides)
        _RefreshAll(side);
}

void nxExchangeBook::OnBar(const nxFeedBar& bar, long long time)
{
    _isOfBars = true;
    _bars.Match(bar, _tickSize, time, [this](nxExchangeOrder& order) { _Rest(order); });
}

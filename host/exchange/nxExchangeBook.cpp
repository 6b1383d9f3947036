#include "host/exchange/nxExchangeBook.h"

#include <algorithm>
#include <utility>

namespace {

void Erase(std::vector<nxExchangeOrder*>& orders, const nxExchangeOrder& order)
{
    const auto found = std::ranges::find(orders, &order);
    if (found != orders.end()) orders.erase(found);
}

// What an order shows of itself at once.
unsigned int GetVisible(const nxExchangeOrder& order)
{
    return order.kind.execution == nxOrderExecution::Iceberg ? std::min(order.displayed, order.GetRemaining())
                                                             : order.GetRemaining();
}

}  // namespace

nxExchangeBook::nxExchangeBook(const nxMarketProduct& market, nxFillModel model, nxExactRandom& random,
                               Listener& listener)
    : _market(market), _model(model), _random(random), _listener(listener)
{
}

template <class Visit>
void nxExchangeBook::_ForEachShown(bool asks, Visit visit) const
{
    if (_isOfBars) return;
    if (_usesDepth) {
        const nxMarketDepth& depth = _market.GetDepth();
        if (asks) {
            for (const auto& [price, entry] : depth.GetAskMap())
                if (!visit(price, entry.volume)) return;
        } else {
            const auto& bids = depth.GetBidMap();
            for (auto level = bids.rbegin(); level != bids.rend(); ++level)
                if (!visit(level->first, level->second.volume)) return;
        }
        return;
    }
    const nxPrice& price = _market.GetPrice();
    const nxDecimal& best = asks ? price.GetAskPrice() : price.GetBidPrice();
    const nxVolume& volume = asks ? price.GetAskVolume() : price.GetBidVolume();
    // Data without sizes do not say how much there is.
    if (best.IsValid()) visit(best, volume.IsValid() ? volume.GetValue() : Unlimited);
}

template <class Visit>
void nxExchangeBook::_ForEachOwn(bool buys, Visit visit)
{
    Levels& levels = _GetLevels(buys);
    if (buys) {
        for (auto next = levels.end(); next != levels.begin();) {
            const auto current = std::prev(next);
            const bool more = visit(current->first, current->second);
            if (current->second.orders.empty()) {
                next = levels.erase(current);
            } else {
                next = current;
            }
            if (!more) return;
        }
    } else {
        for (auto current = levels.begin(); current != levels.end();) {
            const bool more = visit(current->first, current->second);
            current = current->second.orders.empty() ? levels.erase(current) : std::next(current);
            if (!more) return;
        }
    }
}

nxVolume nxExchangeBook::_GetShown(bool bids, const nxDecimal& price) const
{
    if (_usesDepth) {
        const auto& levels = bids ? _market.GetDepth().GetBidMap() : _market.GetDepth().GetAskMap();
        const auto level = levels.find(price);
        return level == levels.end() ? 0u : level->second.volume;
    }
    const nxDecimal& best = bids ? _market.GetPrice().GetBidPrice() : _market.GetPrice().GetAskPrice();
    if (!best.IsValid()) return {};
    if (price == best) {
        const nxVolume& volume = bids ? _market.GetPrice().GetBidVolume() : _market.GetPrice().GetAskVolume();
        return volume.IsValid() ? volume : nxVolume();
    }
    // Better than the best: nobody else is there.
    return (bids ? price > best : price < best) ? nxVolume(0u) : nxVolume();
}

unsigned int nxExchangeBook::_GetFree(bool asks, const nxDecimal& price, unsigned int shown) const
{
    const auto taken = _taken[asks].find(price);
    return taken == _taken[asks].end() ? shown : shown - std::min(shown, taken->second);
}

void nxExchangeBook::_Fill(nxExchangeOrder& order, const nxDecimal& price, unsigned int volume, bool isMaker,
                           nxFillCause cause)
{
    order.executed += volume;
    order.status = order.GetRemaining() == 0 ? nxOrderStatus_Filled : nxOrderStatus_PartiallyFilled;
    if (order.GetRemaining() == 0) order.isResting = false;
    _listener.OnFill(order, price, volume, isMaker, cause);
}

bool nxExchangeBook::CanFill(const nxExchangeOrder& order) const
{
    unsigned long long sum = 0;
    _ForEachShown(order.kind.isBuy, [&](const nxDecimal& price, unsigned int shown) {
        if (!order.IsWithin(price)) return false;
        sum += _GetFree(order.kind.isBuy, price, shown);
        return sum < order.GetRemaining();
    });
    if (!order.kind.crossProtected)
        for (const auto& [price, level] : _GetLevels(!order.kind.isBuy))
            for (const nxExchangeOrder* own : level.orders)
                if (own->kind.owner == order.kind.owner && order.IsWithin(price)) sum += own->GetRemaining();
    return sum >= order.GetRemaining();
}

const nxExchangeOrder* nxExchangeBook::FindOwnCounterpart(const nxExchangeOrder& order) const
{
    for (const auto& [price, level] : _GetLevels(!order.kind.isBuy))
        for (const nxExchangeOrder* own : level.orders)
            if (own->kind.owner == order.kind.owner && order.IsWithin(price)) return own;
    return nullptr;
}

nxDecimal nxExchangeBook::GetOwnBest(bool isBuy, unsigned int owner) const
{
    const auto has = [owner](const auto& entry) {
        return std::ranges::any_of(entry.second.orders,
                                   [owner](const nxExchangeOrder* own) { return own->kind.owner == owner; });
    };
    if (isBuy) {
        const auto found = std::find_if(_buys.rbegin(), _buys.rend(), has);
        return found == _buys.rend() ? nxDecimal() : found->first;
    }
    const auto found = std::find_if(_sells.begin(), _sells.end(), has);
    return found == _sells.end() ? nxDecimal() : found->first;
}

void nxExchangeBook::Enter(nxExchangeOrder& order)
{
    if (!order.triggered) {
        _stops.push_back(&order);
        order.isResting = true;
        if (_isOfBars) return;
        const nxDecimal& last = _market.GetPrice().GetLastPrice();
        if (_hasTraded) {
            _Trigger(last, last);
        } else {
            _TriggerByQuote();
        }
        return;
    }
    // An order of bars is filled by a later bar.
    if (!_isOfBars) _Take(order);
    const bool isImmediate = order.kind.execution == nxOrderExecution::ImmediateOrCancel ||
                             order.kind.execution == nxOrderExecution::FillOrKill;
    if (order.GetRemaining() != 0 && (_isOfBars || !isImmediate)) _Rest(order);
}

void nxExchangeBook::_Take(nxExchangeOrder& order)
{
    const bool asks = order.kind.isBuy;
    _ForEachShown(asks, [&](const nxDecimal& price, unsigned int shown) {
        if (!order.IsWithin(price)) return false;
        _TakeOwn(order, &price);
        const unsigned int volume = std::min(order.GetRemaining(), _GetFree(asks, price, shown));
        if (volume != 0) {
            if (shown != Unlimited) _taken[asks][price] += volume;
            _Fill(order, price, volume, false, nxFillCause::Took);
        }
        return order.GetRemaining() != 0;
    });
    if (order.GetRemaining() != 0) _TakeOwn(order, nullptr);
}

// Own orders of the other side whose price is better than the bound, or any within the limit without one.
void nxExchangeBook::_TakeOwn(nxExchangeOrder& order, const nxDecimal* bound)
{
    if (order.kind.crossProtected || _GetLevels(!order.kind.isBuy).empty()) return;
    _ForEachOwn(!order.kind.isBuy, [&](const nxDecimal& price, Level& level) {
        if (order.GetRemaining() == 0 || !order.IsWithin(price)) return false;
        if (bound != nullptr && !(order.kind.isBuy ? price < *bound : price > *bound)) return false;
        for (std::size_t i = 0; i < level.orders.size() && order.GetRemaining() != 0;) {
            nxExchangeOrder& own = *level.orders[i];
            if (own.kind.owner != order.kind.owner || own.kind.crossProtected) {
                ++i;
                continue;
            }
            const unsigned int volume = std::min(order.GetRemaining(), own.GetRemaining());
            _Fill(own, price, volume, true, nxFillCause::OwnOrder);
            _Fill(order, price, volume, false, nxFillCause::OwnOrder);
            if (own.GetRemaining() == 0) {
                level.orders.erase(level.orders.begin() + static_cast<std::ptrdiff_t>(i));
            } else {
                _Replenish(level, i);
                ++i;
            }
        }
        return true;
    });
}

void nxExchangeBook::_Rest(nxExchangeOrder& order)
{
    order.isResting = true;
    if (order.kind.isMarket) {
        _unlimited.push_back(&order);
        return;
    }
    Level& level = _GetLevels(order.kind.isBuy)[order.terms.price];
    if (level.orders.empty()) level.shown = _GetShown(order.kind.isBuy, order.terms.price);
    order.ahead = level.shown;
    level.orders.push_back(&order);
    if (order.kind.execution == nxOrderExecution::Iceberg) {
        order.displayed = 0;
        _Replenish(level, level.orders.size() - 1);
    }
    _listener.OnQueueMoved(order);
}

void nxExchangeBook::Remove(nxExchangeOrder& order)
{
    order.isResting = false;
    if (!order.triggered) return Erase(_stops, order);
    if (order.kind.isMarket) return Erase(_unlimited, order);
    Levels& levels = _GetLevels(order.kind.isBuy);
    const auto level = levels.find(order.terms.price);
    if (level == levels.end()) return;
    Erase(level->second.orders, order);
    if (level->second.orders.empty()) levels.erase(level);
}

void nxExchangeBook::Shrink(nxExchangeOrder& order)
{
    order.displayed = std::min(order.displayed, order.GetRemaining());
}

// A new peak for an iceberg whose old one is used up to its threshold; it goes to the end of the queue. True
// when the order at index is another one now.
bool nxExchangeBook::_Replenish(Level& level, std::size_t index)
{
    nxExchangeOrder& order = *level.orders[index];
    if (order.kind.execution != nxOrderExecution::Iceberg) return false;
    const nxOrderTerms& terms = order.terms;
    const unsigned int threshold = terms.icebergThreshold.IsValid() ? terms.icebergThreshold.GetValue() : 0;
    if (order.displayed > threshold) return false;
    const unsigned int least = terms.icebergMinPeak.GetValue();
    const unsigned int most = terms.icebergMaxPeak.IsValid() ? terms.icebergMaxPeak.GetValue() : least;
    const auto peak = static_cast<unsigned int>(least + _random.GetBelow(most - least + 1ull));
    order.displayed = std::min(peak, order.GetRemaining());
    order.ahead = level.shown;
    std::rotate(level.orders.begin() + static_cast<std::ptrdiff_t>(index),
                level.orders.begin() + static_cast<std::ptrdiff_t>(index) + 1, level.orders.end());
    return level.orders[index] != &order;
}

// Fills the order at index with what it shows, at most the budget, and moves index on. Answers the order when
// it now stands at the end with a new peak, else null.
nxExchangeOrder* nxExchangeBook::_FillResting(Level& level, std::size_t& index, const nxDecimal& price,
                                              unsigned int& budget, nxFillCause cause)
{
    nxExchangeOrder& order = *level.orders[index];
    const unsigned int offered = cause == nxFillCause::Touched ? order.GetRemaining() : GetVisible(order);
    const unsigned int volume = std::min(budget, offered);
    budget -= volume;
    order.displayed -= std::min(order.displayed, volume);
    _Fill(order, price, volume, true, cause);
    if (order.GetRemaining() == 0) {
        level.orders.erase(level.orders.begin() + static_cast<std::ptrdiff_t>(index));
    } else if (_Replenish(level, index)) {
        return &order;
    } else {
        ++index;
    }
    return nullptr;
}

// Everybody at this price was reached: no queue counts, and icebergs come round with peak after peak.
void nxExchangeBook::_FillThrough(Level& level, const nxDecimal& price, unsigned int& budget,
                                  nxFillCause cause)
{
    for (std::size_t index = 0; budget != 0 && index < level.orders.size();)
        _FillResting(level, index, price, budget, cause);
}

// A trade at the level's own price: what stood in front goes first.
void nxExchangeBook::_FillQueue(Level& level, const nxDecimal& price, unsigned int budget)
{
    if (level.shown.IsValid())
        level.shown = level.shown.GetValue() - std::min(level.shown.GetValue(), budget);
    unsigned int consumed = 0;  // of the recorded volume; taken off every order's queue in the end
    for (std::size_t i = 0; i < level.orders.size() && budget != 0;) {
        nxExchangeOrder& order = *level.orders[i];
        if (!order.ahead.IsValid()) {
            ++i;
            continue;
        }
        const unsigned int inFront = order.ahead.GetValue() - std::min(order.ahead.GetValue(), consumed);
        const unsigned int gone = std::min(inFront, budget);
        consumed += gone;
        budget -= gone;
        if (budget == 0) break;
        nxExchangeOrder* renewed = _FillResting(level, i, price, budget, nxFillCause::Queue);
        if (renewed != nullptr && renewed->ahead.IsValid())
            renewed->ahead = renewed->ahead.GetValue() + consumed;
    }
    for (nxExchangeOrder* order : level.orders) {
        if (!order->ahead.IsValid() || order->ahead.GetValue() == 0) continue;
        order->ahead = order->ahead.GetValue() - std::min(order->ahead.GetValue(), consumed);
        _listener.OnQueueMoved(*order);
    }
}

void nxExchangeBook::_OnTrade(const nxDecimal& price, unsigned int volume, const nxBuySellEnum& aggressor)
{
    _hasTraded = true;
    for (const bool buys : {true, false}) {
        unsigned int budget = volume;
        // A buyer does not trade with bids at the price he pays, but one who paid less than a bid did.
        const bool hitsAtPrice = aggressor != (buys ? nxBuySell_Buy : nxBuySell_Sell);
        _ForEachOwn(buys, [&](const nxDecimal& own, Level& level) {
            const bool isThrough = buys ? own > price : own < price;
            if (!isThrough && (own != price || !hitsAtPrice)) return false;
            if (_model == nxFillModel::Touch) {
                unsigned int unlimited = Unlimited;
                _FillThrough(level, own, unlimited, nxFillCause::Touched);
                return true;
            }
            if (isThrough) {
                _FillThrough(level, own, budget, nxFillCause::TradedThrough);
                return budget != 0;
            }
            if (_model == nxFillModel::Queue) {
                _FillQueue(level, own, budget);
            }
            return false;
        });
    }
    _Trigger(price, price);
}

void nxExchangeBook::_RefreshLevel(Level& level, const nxVolume& shown)
{
    const nxVolume before = std::exchange(level.shown, shown);
    if (!shown.IsValid()) return;
    const unsigned int now = shown.GetValue();
    for (nxExchangeOrder* order : level.orders) {
        const nxVolume ahead = order->ahead;
        if (!ahead.IsValid()) {
            order->ahead = now;
        } else if (ahead.GetValue() != 0) {
            unsigned long long left = ahead.GetValue();
            if (before.IsValid() && now < before.GetValue())
                left -= (before.GetValue() - now) * left / before.GetValue();
            order->ahead = static_cast<unsigned int>(std::min<unsigned long long>(left, now));
        }
        if (order->ahead != ahead) _listener.OnQueueMoved(*order);
    }
}

// Of data that show the best price alone: better levels are empty, worse ones are not shown.
void nxExchangeBook::_RefreshBest(bool bids)
{
    for (auto& [price, level] : _GetLevels(bids))
        _RefreshLevel(level, _GetShown(bids, price));
}

// Resting orders that a quote of the other side has come to.
void nxExchangeBook::_MeetQuotes(bool buys)
{
    for (std::size_t i = 0; i < _unlimited.size();) {
        nxExchangeOrder& order = *_unlimited[i];
        if (order.kind.isBuy == buys) _Take(order);
        if (order.GetRemaining() == 0) {
            _unlimited.erase(_unlimited.begin() + static_cast<std::ptrdiff_t>(i));
        } else {
            ++i;
        }
    }
    if (_GetLevels(buys).empty()) return;
    const bool asks = buys;
    _ForEachShown(asks, [&](const nxDecimal& quote, unsigned int shown) {
        bool met = false;
        unsigned int budget = _GetFree(asks, quote, shown);
        _ForEachOwn(buys, [&](const nxDecimal& own, Level& level) {
            if (buys ? own < quote : own > quote) return false;
            met = true;
            if (_model == nxFillModel::Touch) {
                unsigned int unlimited = Unlimited;
                _FillThrough(level, own, unlimited, nxFillCause::Touched);
                return true;
            }
            const unsigned int before = budget;
            _FillThrough(level, own, budget, nxFillCause::Crossed);
            if (shown != Unlimited && budget != before) _taken[asks][quote] += before - budget;
            return budget != 0;
        });
        return met;
    });
}

void nxExchangeBook::_Trigger(const nxDecimal& up, const nxDecimal& down)
{
    for (std::size_t i = 0; i < _stops.size();) {
        nxExchangeOrder& order = *_stops[i];
        const bool buys = order.kind.isBuy;
        const nxDecimal& price = buys ? up : down;
        if (!price.IsValid() || (buys ? price < order.terms.stopPrice : price > order.terms.stopPrice)) {
            if (price.IsValid() && order.trailDistance.IsValid()) {
                const nxDecimal stop = buys ? price + order.trailDistance : price - order.trailDistance;
                if (buys ? stop < order.terms.stopPrice : stop > order.terms.stopPrice)
                    order.terms.stopPrice = stop;
            }
            ++i;
            continue;
        }
        _stops.erase(_stops.begin() + static_cast<std::ptrdiff_t>(i));
        order.triggered = true;
        order.isResting = false;
        order.status = nxOrderStatus_Working;
        _listener.OnTriggered(order);
        Enter(order);
    }
}

// Where no trade has ever been recorded: a buy stop looks at the ask, a sell stop at the bid.
void nxExchangeBook::_TriggerByQuote()
{
    if (_stops.empty()) return;
    nxDecimal ask, bid;
    _ForEachShown(true, [&](const nxDecimal& price, unsigned int) {
        ask = price;
        return false;
    });
    _ForEachShown(false, [&](const nxDecimal& price, unsigned int) {
        bid = price;
        return false;
    });
    _Trigger(ask, bid);
}

void nxExchangeBook::OnQuote(const nxFeedQuote& quote)
{
    if (quote.IsTrade() && _market.GetPrice().GetLastPrice().IsValid())
        _OnTrade(_market.GetPrice().GetLastPrice(),
                 quote.lastVolume.IsValid() ? quote.lastVolume.GetValue() : 0, quote.side);
    if (_usesDepth) return;
    const bool bid = !quote.bid.IsNoChange() || !quote.bidVolume.IsNoChange();
    const bool ask = !quote.ask.IsNoChange() || !quote.askVolume.IsNoChange();
    if (bid) {
        _taken[0].clear();
        if (!_buys.empty()) _RefreshBest(true);
    }
    if (ask) {
        _taken[1].clear();
        if (!_sells.empty()) _RefreshBest(false);
    }
    if (ask) _MeetQuotes(true);
    if (bid) _MeetQuotes(false);
    if (!_hasTraded) _TriggerByQuote();
}

void nxExchangeBook::OnDepth(std::span<const nxFeedLevel> levels)
{
    const bool first = !std::exchange(_usesDepth, true);
    for (const nxFeedLevel& level : levels) {
        _taken[!level.isBid].erase(level.price);
        Levels& own = _GetLevels(level.isBid);
        if (own.empty()) continue;
        const auto found = own.find(level.price);
        if (found != own.end()) _RefreshLevel(found->second, level.volume);
    }
    if (first)
        for (const bool bids : {true, false})
            _RefreshBest(bids);
    _MeetQuotes(true);
    _MeetQuotes(false);
    if (!_hasTraded) _TriggerByQuote();
}

// True when the order is done.
bool nxExchangeBook::_FillByBar(nxExchangeOrder& order, const nxFeedBar& bar, unsigned int& budget)
{
    const bool buys = order.kind.isBuy;
    nxDecimal price = bar.open;
    if (!order.triggered) {
        const nxDecimal& stop = order.terms.stopPrice;
        if (buys ? bar.high < stop : bar.low > stop) {
            if (order.trailDistance.IsValid()) {
                const nxDecimal moved = buys ? bar.low + order.trailDistance : bar.high - order.trailDistance;
                if (buys ? moved < stop : moved > stop) order.terms.stopPrice = moved;
            }
            return false;
        }
        // The open may lie beyond the stop already.
        price = buys ? std::max(bar.open, stop) : std::min(bar.open, stop);
        order.triggered = true;
        order.status = nxOrderStatus_Working;
        _listener.OnTriggered(order);
        if (!order.IsWithin(price)) return false;
    } else if (!order.IsWithin(bar.open)) {
        if (buys ? bar.low > order.terms.price : bar.high < order.terms.price) return false;
        price = order.terms.price;
    }
    const unsigned int volume = std::min(order.GetRemaining(), budget);
    if (volume == 0) return false;
    budget -= volume;
    const bool isMaker = !order.kind.isMarket && price == order.terms.price && price != bar.open;
    _Fill(order, price, volume, isMaker, nxFillCause::Bar);
    return order.GetRemaining() == 0;
}

void nxExchangeBook::OnBar(const nxFeedBar& bar)
{
    _isOfBars = true;
    unsigned int budget = Unlimited;
    if (_participation != 0 && bar.volume.IsValid())
        budget = static_cast<unsigned int>(static_cast<unsigned long long>(bar.volume.GetValue()) *
                                           _participation / 100);

    // Market orders first, since they fill at the open; then stops, of which nobody knows whether the price
    // came to a limit before it came to them; then limits from the best price on.
    // A limit behind a stop is only known to be met where the stop was, so it rests for the next bar.
    std::vector<nxExchangeOrder*> triggered;
    const auto serve = [&](std::vector<nxExchangeOrder*>& orders) {
        for (std::size_t i = 0; i < orders.size();) {
            nxExchangeOrder& order = *orders[i];
            const bool waited = !order.triggered;
            const bool done = _FillByBar(order, bar, budget);
            if (!done && (!waited || !order.triggered)) {
                ++i;
                continue;
            }
            orders.erase(orders.begin() + static_cast<std::ptrdiff_t>(i));
            if (!done) triggered.push_back(&order);
        }
    };
    serve(_unlimited);
    serve(_stops);
    for (const bool buys : {true, false})
        _ForEachOwn(buys, [&](const nxDecimal&, Level& level) {
            serve(level.orders);
            return true;
        });
    for (nxExchangeOrder* order : triggered)
        _Rest(*order);
}

void nxExchangeBook::ForEachOrder(const std::function<void(const nxExchangeOrder&)>& visit) const
{
    for (const Levels* levels : {&_buys, &_sells})
        for (const auto& [price, level] : *levels)
            for (const nxExchangeOrder* order : level.orders)
                visit(*order);
    for (const auto* orders : {&_unlimited, &_stops})
        for (const nxExchangeOrder* order : *orders)
            visit(*order);
}

#include "host/exchange/nxExchangeBook.h"

#include <algorithm>
#include <cassert>

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

nxExchangeBook::nxExchangeBook(const nxMarketProduct& market, const nxFillRule& rule, nxExactRandom& random,
                               Listener& listener)
    : _market(market), _rule(rule), _random(random), _listener(listener)
{
}

nxVolume nxExchangeBook::_GetShown(nxSide side, const nxDecimal& price) const
{
    if (_usesDepth) {
        const nxMarketDepth::Map& levels = _market.GetLevels(side);
        const auto level = levels.find(price);
        return level == levels.end() ? 0u : level->second.volume;
    }
    const nxBestQuote best = _market.GetBest(side);
    if (!best.price.IsValid()) return {};
    if (price == best.price) return best.volume.IsValid() ? best.volume : nxVolume();
    // Better than the best: nobody else is there.
    return nxIsBetter(side, price, best.price) ? nxVolume(0u) : nxVolume();
}

unsigned int nxExchangeBook::_GetFree(nxSide side, const nxDecimal& price, unsigned int shown) const
{
    const auto taken = _taken[side].find(price);
    return taken == _taken[side].end() || taken->second.shown != shown ? shown : shown - taken->second.volume;
}

void nxExchangeBook::_NoteTaken(nxSide side, const nxDecimal& price, unsigned int shown, unsigned int volume)
{
    if (shown == Unlimited || volume == 0) return;
    Taken& taken = _taken[side][price];
    if (taken.shown != shown) taken = {shown, 0};
    taken.volume += volume;
    assert(taken.volume <= shown);
}

bool nxExchangeBook::CanFill(const nxExchangeOrder& order) const
{
    const nxSide other = nxGetOpposite(order.kind.side);
    unsigned long long sum = 0;
    _ForEachShown(other, [&](const nxDecimal& price, unsigned int shown) {
        if (!order.IsWithin(price)) return false;
        sum += _GetFree(other, price, shown);
        return sum < order.GetRemaining();
    });
    if (!order.kind.crossProtected) {
        _ForEachReached(order, [&](const nxExchangeOrder& own) {
            if (own.kind.owner == order.kind.owner && !own.kind.crossProtected) sum += own.GetRemaining();
            return sum < order.GetRemaining();
        });
    }
    return sum >= order.GetRemaining();
}

const nxExchangeOrder* nxExchangeBook::FindOwnCounterpart(const nxExchangeOrder& order) const
{
    const nxExchangeOrder* found = nullptr;
    _ForEachReached(order, [&](const nxExchangeOrder& own) {
        if (own.kind.owner == order.kind.owner) found = &own;
        return found == nullptr;
    });
    return found;
}

nxVolume nxExchangeBook::GetAhead(const nxExchangeOrder& order) const
{
    if (order.kind.isMarket || _isOfBars) return {};
    const Levels& levels = _levels[order.kind.side];
    const auto level = levels.find(order.terms.price);
    return level == levels.end() ? _GetShown(order.kind.side, order.terms.price) : level->second.shown;
}

nxDecimal nxExchangeBook::GetOwnBest(nxSide side, unsigned int owner) const
{
    for (const auto& [price, level] : _levels[side])
        for (const nxExchangeOrder* own : level.orders)
            if (own->kind.owner == owner) return price;
    return {};
}

void nxExchangeBook::Enter(nxExchangeOrder& order)
{
    if (!order.triggered) {
        order.isResting = true;
        if (_isOfBars || !_TryStop(order)) {
            _stops.push_back(&order);
        } else {
            _Trigger(order);
        }
        return;
    }
    // An order of bars is filled by a later bar.
    if (!_isOfBars) _Take(order);
    if (order.GetRemaining() != 0 && (_isOfBars || !order.kind.IsImmediate())) _Rest(order);
}

void nxExchangeBook::_Take(nxExchangeOrder& order)
{
    const nxSide other = nxGetOpposite(order.kind.side);
    _ForEachShown(other, [&](const nxDecimal& price, unsigned int shown) {
        if (!order.IsWithin(price)) return false;
        if (order.noBetterThan.IsValid() && nxIsBetter(other, price, order.noBetterThan)) return true;
        _TakeOwn(order, &price);
        const unsigned int volume = std::min(order.GetRemaining(), _GetFree(other, price, shown));
        if (volume != 0) {
            _NoteTaken(other, price, shown, volume);
            _Fill(order, price, volume, false, nxFillCause::Took);
        }
        return order.GetRemaining() != 0;
    });
    if (order.GetRemaining() != 0) _TakeOwn(order, nullptr);
}

// Own orders of the other side whose price is better than the bound, or any within the limit without one.
void nxExchangeBook::_TakeOwn(nxExchangeOrder& order, const nxDecimal* bound)
{
    if (order.kind.crossProtected) return;
    const nxSide other = nxGetOpposite(order.kind.side);
    _ForEachOwn(other, [&](const nxDecimal& price, Level& level) {
        if (order.GetRemaining() == 0 || !order.IsWithin(price)) return false;
        if (bound != nullptr && !nxIsBetter(other, price, *bound)) return false;
        for (std::size_t i = 0; i < level.orders.size() && order.GetRemaining() != 0;) {
            nxExchangeOrder& own = *level.orders[i];
            const unsigned int volume = std::min(order.GetRemaining(), own.GetRemaining());
            if (own.kind.owner != order.kind.owner || own.kind.crossProtected || volume == 0) {
                ++i;
                continue;
            }
            own.displayed -= std::min(own.displayed, volume);
            _Fill(own, price, volume, true, nxFillCause::OwnOrder);
            _Fill(order, price, volume, false, nxFillCause::OwnOrder);
            // Of two one is done now: either the own one goes or the loop ends.
            if (own.GetRemaining() == 0) {
                level.orders.erase(level.orders.begin() + static_cast<std::ptrdiff_t>(i));
            } else {
                _Replenish(level, i);
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
    Level& level = _levels[order.kind.side][order.terms.price];
    if (level.orders.empty()) level.shown = _GetShown(order.kind.side, order.terms.price);
    order.ahead = level.shown;
    order.displayed = 0;
    level.orders.push_back(&order);
    _Replenish(level, level.orders.size() - 1);
    _listener.OnQueueMoved(order, {}, nxQueueMove::Joined);
}

void nxExchangeBook::Remove(nxExchangeOrder& order)
{
    order.isResting = false;
    if (!order.triggered) return Erase(_stops, order);
    if (order.kind.isMarket) return Erase(_unlimited, order);
    Levels& levels = _levels[order.kind.side];
    const auto level = levels.find(order.terms.price);
    if (level == levels.end()) return;
    Erase(level->second.orders, order);
    if (level->second.orders.empty()) levels.erase(level);
}

void nxExchangeBook::_Fill(nxExchangeOrder& order, const nxDecimal& price, unsigned int volume, bool isMaker,
                           nxFillCause cause)
{
    assert(volume != 0 && volume <= order.GetRemaining() && order.IsWithin(price) && order.triggered);
    order.executed += volume;
    order.status = order.GetRemaining() == 0 ? nxOrderStatus_Filled : nxOrderStatus_PartiallyFilled;
    if (order.GetRemaining() == 0) order.isResting = false;
    _listener.OnFill(order, price, volume, isMaker, cause);
}

// A new peak for an iceberg whose old one is used up to its threshold and which has more than that; it goes
// to the end of the queue. True when it did.
bool nxExchangeBook::_Replenish(Level& level, std::size_t index)
{
    nxExchangeOrder& order = *level.orders[index];
    if (order.kind.execution != nxOrderExecution::Iceberg) return false;
    const nxOrderTerms& terms = order.terms;
    const unsigned int threshold = nxOrderTerms::GetOr(terms.icebergThreshold, 0);
    if (order.displayed > threshold || order.displayed >= order.GetRemaining()) return false;
    const unsigned int least = terms.icebergMinPeak.GetValue();
    const unsigned int most = nxOrderTerms::GetOr(terms.icebergMaxPeak, least);
    const auto peak = static_cast<unsigned int>(least + _random.GetBelow(most - least + 1ull));
    order.displayed = std::min(peak, order.GetRemaining());
    order.ahead = level.shown;
    const auto position = level.orders.begin() + static_cast<std::ptrdiff_t>(index);
    std::rotate(position, position + 1, level.orders.end());
    return true;
}

// Fills the order at index with what it shows, at most the budget, and makes index that of the next one.
void nxExchangeBook::_FillResting(Level& level, std::size_t& index, const nxDecimal& price,
                                  unsigned int& budget, nxFillCause cause)
{
    nxExchangeOrder& order = *level.orders[index];
    const unsigned int offered = cause == nxFillCause::Touched ? order.GetRemaining() : GetVisible(order);
    const unsigned int volume = std::min(budget, offered);
    budget -= volume;
    order.displayed -= std::min(order.displayed, volume);
    if (volume != 0) _Fill(order, price, volume, true, cause);
    if (volume != 0 && order.GetRemaining() == 0) {
        level.orders.erase(level.orders.begin() + static_cast<std::ptrdiff_t>(index));
    } else if (volume == 0 || !_Replenish(level, index)) {
        ++index;
    }
}

void nxExchangeBook::ForEachOrder(const std::function<void(const nxExchangeOrder&)>& visit) const
{
    for (const nxSide side : nxSides)
        for (const auto& [price, level] : _levels[side])
            for (const nxExchangeOrder* order : level.orders)
                visit(*order);
    for (const auto* orders : {&_unlimited, &_stops})
        for (const nxExchangeOrder* order : *orders)
            visit(*order);
}

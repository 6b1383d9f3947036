#include "host/exchange/nxExchangeBook.h"

#include <algorithm>
#include <cassert>

namespace {

// What an order shows of itself at once.
unsigned int GetVisible(const nxExchangeOrder& order)
{
    return order.kind.execution == nxOrderExecution::Iceberg ? std::min(order.displayed, order.GetRemaining())
                                                             : order.GetRemaining();
}

}  // namespace

nxExchangeBook::nxExchangeBook(const nxMarketProduct& market, const nxDecimal& tickSize,
                               const nxBookRules& rules, nxExactRandom& random, nxBookListener& listener)
    : _market(market),
      _tickSize(tickSize),
      _rules(rules),
      _random(random),
      _listener(listener),
      _shown(market),
      _bars(_orders, listener, rules.bars)
{
}

template <class Visit>
void nxExchangeBook::_ForEachOffered(const nxExchangeOrder& order, Visit visit)
{
    const nxSide other = nxGetOpposite(order.kind.side);
    bool isMore = true;
    _shown.ForEach(other, [&](const nxDecimal& price, unsigned int free) {
        return isMore = order.IsWithin(price) && visit(price, free, false);
    });
    if (!isMore || !order.kind.isMarket || !_rules.walksBeyond) return;
    _shown.ForEachAssumed(
        other, _tickSize.IsValid() ? _tickSize : nxDecimalOne,
        [&](const nxDecimal& price, unsigned int free) { return visit(price, free, true); });
}

bool nxExchangeBook::CanFill(const nxExchangeOrder& order)
{
    const nxSide other = nxGetOpposite(order.kind.side);
    const nxExchangeOrder* const end =
        _rules.selfTrade == nxSelfTrade::CancelNewest ? _FindMet(order) : nullptr;
    unsigned long long sum = 0;
    _ForEachOffered(order, [&](const nxDecimal& price, unsigned int free, bool) {
        if (end != nullptr && nxIsBetter(other, end->terms.price, price)) return false;
        sum += free;
        return sum < order.GetRemaining();
    });
    if (_rules.selfTrade == nxSelfTrade::Meet) {
        _orders.ForEachReached(order, [&](const nxExchangeOrder& own) {
            if (_Meets(order, own)) sum += own.GetRemaining() - _GetSharedWithBetter(own);
            return sum < order.GetRemaining();
        });
    }
    return sum >= order.GetRemaining();
}

// The first own order that the order would come to; null for none.
const nxExchangeOrder* nxExchangeBook::_FindMet(const nxExchangeOrder& order) const
{
    const nxExchangeOrder* found = nullptr;
    _orders.ForEachReached(order, [&](const nxExchangeOrder& own) {
        if (_Meets(order, own)) found = &own;
        return found == nullptr;
    });
    return found;
}

bool nxExchangeBook::_Meets(const nxExchangeOrder& order, const nxExchangeOrder& own) const
{
    return own.kind.owner == order.kind.owner && !own.kind.crossProtected && !order.kind.crossProtected;
}

// Of what an order has left, the part that it gives up when the other child of its bracket, which is met
// first, is filled.
unsigned int nxExchangeBook::_GetSharedWithBetter(const nxExchangeOrder& own) const
{
    unsigned int shared = 0;
    if (own.sibling == 0) return shared;
    _orders.ForEachLimit(own.kind.side, [&](const nxExchangeOrder& other) {
        if (other.id == own.sibling) shared = std::min(own.GetRemaining(), other.GetRemaining());
        return other.id != own.sibling && &other != &own;
    });
    return shared;
}

// What the market shows is met before own orders at the same price, and may be enough.
const nxExchangeOrder* nxExchangeBook::FindOwnCounterpart(const nxExchangeOrder& order)
{
    const nxSide other = nxGetOpposite(order.kind.side);
    const nxExchangeOrder* found = nullptr;
    _orders.ForEachReached(order, [&](const nxExchangeOrder& own) {
        if (own.kind.owner == order.kind.owner) found = &own;
        return found == nullptr;
    });
    if (found == nullptr || order.GetRemaining() == 0) return nullptr;
    if (_isOfBars) return found;
    unsigned long long before = 0;
    _ForEachOffered(order, [&](const nxDecimal& price, unsigned int free, bool) {
        if (nxIsBetter(other, found->terms.price, price)) return false;
        before += free;
        return before < order.GetRemaining();
    });
    return before < order.GetRemaining() ? found : nullptr;
}

nxVolume nxExchangeBook::GetAhead(const nxExchangeOrder& order) const
{
    if (order.kind.isMarket || _isOfBars) return {};
    const Level* const level = _orders.FindLevel(order.kind.side, order.terms.price);
    return level == nullptr ? _shown.GetVolume(order.kind.side, order.terms.price) : level->shown;
}

void nxExchangeBook::Enter(nxExchangeOrder& order)
{
    if (!order.triggered) {
        if (!_TryStop(order)) return AddStop(order);
        return _Trigger(order);
    }
    // An order of bars is filled by a later bar.
    if (!_isOfBars) _Take(order);
    const bool isLeft = order.GetRemaining() != 0 && order.IsAlive();
    if (isLeft && (_isOfBars || !order.kind.IsImmediate())) _Rest(order);
}

void nxExchangeBook::AddStop(nxExchangeOrder& order)
{
    order.isResting = true;
    _orders.GetStops().push_back(&order);
}

void nxExchangeBook::_Take(nxExchangeOrder& order)
{
    const nxSide other = nxGetOpposite(order.kind.side);
    _ForEachOffered(order, [&](const nxDecimal& price, unsigned int free, bool isAssumed) {
        _TakeOwn(order, &price);
        if (!order.IsAlive()) return false;
        const unsigned int volume = std::min(order.GetRemaining(), free);
        if (volume != 0) {
            isAssumed ? _shown.TakeAssumed(other, volume) : _shown.Take(other, price, volume);
            _listener.Fill(order, price, volume, false, isAssumed ? nxFillCause::Assumed : nxFillCause::Took);
        }
        return order.GetRemaining() != 0;
    });
    _TakeOwn(order, nullptr);
}

// Own orders of the other side whose price is better than the bound, or any within the limit without one.
void nxExchangeBook::_TakeOwn(nxExchangeOrder& order, const nxDecimal* bound)
{
    if (order.kind.crossProtected) return;
    const nxSide other = nxGetOpposite(order.kind.side);
    _orders.ForEachLevel(other, [&](const nxDecimal& price, Level& level) {
        if (order.GetRemaining() == 0 || !order.IsAlive() || !order.IsWithin(price)) return false;
        if (bound != nullptr && !nxIsBetter(other, price, *bound)) return false;
        for (std::size_t i = 0; i < level.orders.size() && order.GetRemaining() != 0;)
            if (!_Meets(order, *level.orders[i]) || level.orders[i]->GetRemaining() == 0) {
                ++i;
            } else if (!_MeetOwn(order, level, i, price)) {
                return false;
            }
        return true;
    });
}

// Does with the order, and the one at the index, what the rule says. False when the order has ended.
bool nxExchangeBook::_MeetOwn(nxExchangeOrder& order, Level& level, std::size_t& index,
                              const nxDecimal& price)
{
    nxExchangeOrder& own = *level.orders[index];
    switch (_rules.selfTrade) {
        case nxSelfTrade::CancelNewest:
        case nxSelfTrade::Refuse:
            order.isResting = false;
            _listener.OnSelfTrade(order, own);
            return false;
        case nxSelfTrade::CancelOldest:
            level.Erase(index);
            own.isResting = false;
            _listener.OnSelfTrade(own, order);
            return true;
        case nxSelfTrade::Meet:
            break;
    }
    const unsigned int volume = std::min(order.GetRemaining(), own.GetRemaining());
    own.displayed -= std::min(own.displayed, volume);
    _listener.Fill(own, price, volume, true, nxFillCause::OwnOrder);
    _listener.Fill(order, price, volume, false, nxFillCause::OwnOrder);
    // Of two one is done now: either the own one goes or the loop ends.
    if (own.GetRemaining() == 0) {
        level.Erase(index);
    } else {
        _Replenish(level, index);
    }
    return true;
}

void nxExchangeBook::_Rest(nxExchangeOrder& order)
{
    order.isResting = true;
    if (order.kind.isMarket) {
        _orders.GetUnlimited().push_back(&order);
        return;
    }
    Level& level = _orders.GetLevels(order.kind.side)[order.terms.price];
    if (level.orders.empty()) level.shown = _shown.GetVolume(order.kind.side, order.terms.price);
    level.Join(order);
    order.displayed = 0;
    level.orders.push_back(&order);
    _Replenish(level, level.orders.size() - 1);
    _listener.OnQueueMoved(order, {}, nxQueueMove::Joined);
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
    level.Join(order);
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
    if (volume != 0) _listener.Fill(order, price, volume, true, cause);
    if (volume != 0 && order.GetRemaining() == 0) {
        level.Erase(index);
    } else if (volume == 0 || !_Replenish(level, index)) {
        ++index;
    }
}

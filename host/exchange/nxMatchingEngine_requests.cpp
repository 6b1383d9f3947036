// Requests as they arrive: what is refused and why, and what becomes of an order.
#include "host/exchange/nxMatchingEngine.h"

using nxOrderChecks::Refusal;

// Why an order that is about to be matched must not be; empty when it may.
Refusal nxMatchingEngine::_FindOwnTrade(const nxExchangeOrder& order) const
{
    Market& market = *_markets[order.kind.product];
    if (!order.kind.crossProtected || !order.triggered || market.Holds()) return {};
    const nxExchangeOrder* own = market.book.FindOwnCounterpart(order);
    if (own == nullptr) return {};
    return nxOrderChecks::GetSelfTrade(own->id);
}

Refusal nxMatchingEngine::_FindObstacle(const nxExchangeOrder& order) const
{
    if (_gate == nullptr) return {};
    return {nxError_OrderBeyondMargin, _gate->FindObstacle(order)};
}

// Gives a stop that trails its distance from the market; why it cannot have one, empty when it can.
Refusal nxMatchingEngine::_SetTrail(nxExchangeOrder& order) const
{
    if (order.kind.execution != nxOrderExecution::TrailingStop) return {};
    const nxDecimal reference = _markets[order.kind.product]->book.GetStopReference(order.kind.side);
    const nxDecimal& stop = order.terms.stopPrice;
    if (!nxIsBetter(order.kind.side, stop, reference) || !reference.IsValid())
        return {nxError_OrderStopMisplaced, "the stopPrice does not lie behind the market's price"};
    order.trailDistance = order.kind.side == nxSide::Buy ? stop - reference : reference - stop;
    if (order.trailDistance.IsValid()) return {};
    return {nxError_OrderStopMisplaced, "the stopPrice is too far from the market's price"};
}

// An order for the day upon bars is for the day in which its next bar lies, which only that bar tells.
void nxMatchingEngine::_SetExpiry(nxExchangeOrder& order)
{
    Market& market = *_markets[order.kind.product];
    const bool isForDay =
        order.kind.duration == nxOrderDuration::Day || order.kind.duration == nxOrderDuration::PreOpen;
    if (isForDay && market.book.IsOfBars()) {
        order.expires = nxTime::Never;
        market.dayless.push_back(order.id);
        return;
    }
    order.expires = nxOrderExpiries::GetEnd(order, market.product.GetHours(), _time);
    _expiries.Add(order);
}

void nxMatchingEngine::_SetDays(Market& market, long long barEnd)
{
    std::erase_if(market.dayless, [&](unsigned int id) {
        nxExchangeOrder* const order = _orders.Find(id);
        if (order == nullptr || !order->IsAlive()) return true;
        if (order->arrived >= barEnd) return false;
        order->expires = nxOrderExpiries::GetEndOfDay(barEnd, market.product.GetHours());
        _expiries.Add(*order);
        return true;
    });
}

void nxMatchingEngine::Expire()
{
    for (const unsigned int id : _expiries.TakeNext())
        _End(_orders.Get(id), "its time is over");
    _Settle();
}

void nxMatchingEngine::Describe(unsigned int id, const nxOrderKind& kind, const nxOrderTerms& terms)
{
    nxExchangeOrder& order = _orders.Get(id);
    order.kind = kind;
    if (_options.rules.selfTrade == nxSelfTrade::Refuse) order.kind.crossProtected = true;
    order.terms = terms;
}

void nxMatchingEngine::Place(unsigned int id)
{
    _Arrive(_orders.Get(id));
    _Settle();
}

void nxMatchingEngine::TakeAtOnce(unsigned int id, long long time)
{
    nxExchangeOrder& order = _orders.Get(id);
    order.arrived = _time = time;
    order.status = nxOrderStatus_Working;
    _Tell(order, nxExchangeEvent::Kind::Accepted);
    _Start(order);
    _Settle();
}

void nxMatchingEngine::_Arrive(nxExchangeOrder& order)
{
    const Market& market = *_markets[order.kind.product];
    order.arrived = _time;
    order.triggered = !order.kind.IsStop();
    Refusal refusal = nxOrderChecks::FindRefusal(order, order.terms, market.product.tickSize, _time);
    if (refusal.text.empty() && order.kind.IsForOpening() && market.isOpen && !market.opens)
        refusal = {nxError_OrderMarketState, "the market is open already"};
    if (refusal.text.empty() && !order.kind.IsForOpening() && !market.isOpen)
        refusal = {nxError_OrderMarketState, "the market is not open"};
    if (refusal.text.empty()) refusal = _SetTrail(order);
    if (refusal.text.empty()) refusal = _FindOwnTrade(order);
    if (refusal.text.empty()) refusal = _FindObstacle(order);
    if (!refusal.text.empty()) {
        order.status = nxOrderStatus_Rejected;
        _TellRefusal(order, nxExchangeEvent::Kind::Rejected, std::move(refusal));
        return;
    }
    _SetExpiry(order);
    _Enter(order);
}

// An order whose terms are good gets into the market, or waits for it.
void nxMatchingEngine::_Enter(nxExchangeOrder& order)
{
    Market& market = *_markets[order.kind.product];
    const bool waits = market.Holds();
    order.status = waits || !order.triggered ? nxOrderStatus_Held : nxOrderStatus_Working;
    _Tell(order, nxExchangeEvent::Kind::Accepted, [&](nxExchangeEvent& event) {
        if (!waits && order.triggered && !order.kind.IsImmediate()) event.ahead = market.book.GetAhead(order);
    });
    if (waits) {
        market.opening.push_back(&order);
    } else {
        _Start(order);
    }
}

void nxMatchingEngine::_Start(nxExchangeOrder& order)
{
    Market& market = *_markets[order.kind.product];
    const bool isOfBars = market.book.IsOfBars();
    const bool isKilled =
        order.kind.execution == nxOrderExecution::FillOrKill && !isOfBars && !market.book.CanFill(order);
    if (!isKilled) market.book.Enter(order);
    if (order.GetRemaining() == 0 || !order.IsAlive()) return;
    if (!order.kind.IsImmediate() && order.kind.duration != nxOrderDuration::Open) return;
    if (isOfBars) {
        market.immediates.push_back(&order);
    } else {
        _End(order, nxOrderChecks::GetEndOfImmediate(order));
    }
}

void nxMatchingEngine::_End(nxExchangeOrder& order, std::string_view reason, bool isRequested,
                            nxErrorEnum error)
{
    Market& market = *_markets[order.kind.product];
    if (order.isResting) market.book.Remove(order);
    std::erase(market.opening, &order);
    std::erase(market.immediates, &order);
    order.status = nxOrderStatus_Deleted;
    _Tell(order, nxExchangeEvent::Kind::Cancelled, [&](nxExchangeEvent& event) {
        event.reason = reason;
        event.isRequested = isRequested;
        event.error = error;
    });
}

void nxMatchingEngine::Cancel(unsigned int id)
{
    nxExchangeOrder& order = _orders.Get(id);
    if (order.IsAlive()) {
        _End(order, "", true);
    } else {
        _TellRefusal(order, nxExchangeEvent::Kind::CancelRejected, nxOrderChecks::FindEnd(order));
    }
    _Settle();
}

void nxMatchingEngine::Amend(unsigned int id, const nxOrderTerms& changes)
{
    _Amend(_orders.Get(id), changes);
    _Settle();
}

// Nothing of the order is touched before it is sure that the change can be.
void nxMatchingEngine::_Amend(nxExchangeOrder& order, const nxOrderTerms& changes)
{
    Market& market = *_markets[order.kind.product];
    nxExchangeBook& book = market.book;
    nxExchangeOrder wanted = order;
    wanted.terms.Merge(changes);
    const bool movesStop = wanted.terms.stopPrice != order.terms.stopPrice;
    const bool keepsPlace = !movesStop && wanted.terms.price == order.terms.price &&
                            wanted.terms.volume.GetValue() <= order.terms.volume.GetValue();
    Refusal refusal = nxOrderChecks::FindEnd(order);
    if (refusal.text.empty())
        refusal = nxOrderChecks::FindRefusal(wanted, changes, market.product.tickSize, _time);
    if (refusal.text.empty() && movesStop && order.triggered)
        refusal = {nxError_OrderStopMisplaced, "the stop is triggered already"};
    if (refusal.text.empty() && movesStop) refusal = _SetTrail(wanted);
    if (refusal.text.empty() && !keepsPlace) refusal = _FindOwnTrade(wanted);
    if (refusal.text.empty() && !keepsPlace) refusal = _FindObstacle(wanted);
    if (!refusal.text.empty()) {
        _TellRefusal(order, nxExchangeEvent::Kind::AmendRejected, std::move(refusal));
        return;
    }
    if (!keepsPlace) {
        if (order.isResting) book.Remove(order);
        std::erase(market.opening, &order);
        if (std::erase(market.immediates, &order) != 0) market.immediates.push_back(&order);
        order.arrived = _time;
    }
    const bool isDated = wanted.terms.expiry != order.terms.expiry;
    order.terms = wanted.terms;
    order.trailDistance = wanted.trailDistance;
    if (isDated) _SetExpiry(order);
    // What a closed market shows is from before: the order waits as a new one does.
    const bool waits = !keepsPlace && market.Holds();
    if (waits) order.status = nxOrderStatus_Held;
    _Tell(order, nxExchangeEvent::Kind::Amended, [&](nxExchangeEvent& event) {
        event.isRequested = true;
        if (!keepsPlace && !waits && order.triggered) event.ahead = book.GetAhead(order);
    });
    if (order.GetRemaining() == 0) return _End(order, "the volume is executed");
    if (waits) market.opening.push_back(&order);
    if (!keepsPlace && !waits) book.Enter(order);
}

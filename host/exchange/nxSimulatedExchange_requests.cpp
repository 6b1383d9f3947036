// Requests as they arrive: what is refused and why, and what becomes of an order.
#include <fmt/format.h>

#include "host/exchange/nxSimulatedExchange.h"

using nxOrderChecks::Refusal;

Refusal nxSimulatedExchange::_FindRefusal(const nxExchangeOrder& order, const nxOrderTerms& given) const
{
    return nxOrderChecks::FindRefusal(order, given, _markets[order.kind.product]->product.tickSize, _time);
}

// Why an order that is about to be matched must not be; empty when it may.
Refusal nxSimulatedExchange::_FindOwnTrade(const nxExchangeOrder& order) const
{
    if (!order.kind.crossProtected || !order.triggered) return {};
    const nxExchangeOrder* own = _markets[order.kind.product]->book.FindOwnCounterpart(order);
    if (own == nullptr) return {};
    return {nxError_OrderMeetsOwn, fmt::format("it would trade with the own order {}", own->id)};
}

// Gives a stop that trails its distance from the market; why it cannot have one, empty when it can.
Refusal nxSimulatedExchange::_SetTrail(nxExchangeOrder& order) const
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

void nxSimulatedExchange::_SetExpiry(nxExchangeOrder& order)
{
    order.expires = nxOrderExpiries::GetEnd(order, _markets[order.kind.product]->product.hours, _time);
    _expiries.Add(order);
}

void nxSimulatedExchange::_Expire()
{
    for (const unsigned int id : _expiries.TakeNext())
        _End(_orders.Get(id), "its time is over");
}

void nxSimulatedExchange::_Carry(const Request& request)
{
    nxExchangeOrder& order = _orders.Get(request.order);
    switch (request.kind) {
        case nxOrderRequest::New:
            return _Arrive(order);
        case nxOrderRequest::Amend:
            return _ArriveAmend(order, request.terms);
        case nxOrderRequest::Cancel:
            return _ArriveCancel(order);
    }
}

void nxSimulatedExchange::_Arrive(nxExchangeOrder& order)
{
    const Market& market = *_markets[order.kind.product];
    order.arrived = _time;
    order.triggered = !order.kind.IsStop();
    Refusal refusal = _FindRefusal(order, order.terms);
    if (refusal.text.empty() && order.kind.IsForOpening() && market.isOpen && !market.opens)
        refusal = {nxError_OrderMarketState, "the market is open already"};
    if (refusal.text.empty() && !order.kind.IsForOpening() && !market.isOpen)
        refusal = {nxError_OrderMarketState, "the market is not open"};
    if (refusal.text.empty()) refusal = _SetTrail(order);
    if (refusal.text.empty()) refusal = _FindOwnTrade(order);
    if (!refusal.text.empty()) {
        order.status = nxOrderStatus_Rejected;
        _TellRefusal(order, nxExchangeEvent::Kind::Rejected, std::move(refusal));
        return;
    }
    _SetExpiry(order);
    _Enter(order);
}

// An order whose terms are good gets into the market, or waits for it.
void nxSimulatedExchange::_Enter(nxExchangeOrder& order)
{
    Market& market = *_markets[order.kind.product];
    const bool waits = market.opens || !market.isOpen;
    order.status = waits || !order.triggered ? nxOrderStatus_Held : nxOrderStatus_Working;
    _Tell(order, nxExchangeEvent::Kind::Accepted, [&](nxExchangeEvent& event) {
        if (!waits && order.triggered) event.ahead = market.book.GetAhead(order);
    });
    if (waits) {
        market.opening.push_back(&order);
    } else {
        _Start(order);
    }
}

const char* nxSimulatedExchange::_GetEndOfImmediate(const nxExchangeOrder& order)
{
    if (order.kind.duration == nxOrderDuration::Open) return "the opening is over";
    return order.kind.execution == nxOrderExecution::FillOrKill ? "it could not be filled at once"
                                                                : "the rest could not be filled at once";
}

void nxSimulatedExchange::_Start(nxExchangeOrder& order)
{
    Market& market = *_markets[order.kind.product];
    const bool isOfBars = market.book.IsOfBars();
    const bool isKilled =
        order.kind.execution == nxOrderExecution::FillOrKill && !isOfBars && !market.book.CanFill(order);
    if (!isKilled) market.book.Enter(order);
    if (order.GetRemaining() == 0) return;
    if (!order.kind.IsImmediate() && order.kind.duration != nxOrderDuration::Open) return;
    if (isOfBars) {
        market.immediates.push_back(&order);
    } else {
        _End(order, _GetEndOfImmediate(order));
    }
}

void nxSimulatedExchange::_End(nxExchangeOrder& order, const char* reason, bool isRequested)
{
    Market& market = *_markets[order.kind.product];
    if (order.isResting) market.book.Remove(order);
    std::erase(market.opening, &order);
    std::erase(market.immediates, &order);
    order.status = nxOrderStatus_Deleted;
    _Tell(order, nxExchangeEvent::Kind::Cancelled, [&](nxExchangeEvent& event) {
        event.reason = reason;
        event.isRequested = isRequested;
    });
}

void nxSimulatedExchange::_ArriveCancel(nxExchangeOrder& order)
{
    if (order.IsAlive()) return _End(order, "", true);
    _TellRefusal(order, nxExchangeEvent::Kind::CancelRejected, nxOrderChecks::FindEnd(order));
}

// Nothing of the order is touched before it is sure that the change can be.
void nxSimulatedExchange::_ArriveAmend(nxExchangeOrder& order, const nxOrderTerms& changes)
{
    nxExchangeBook& book = _markets[order.kind.product]->book;
    nxExchangeOrder wanted = order;
    wanted.terms.Merge(changes);
    const bool movesStop = wanted.terms.stopPrice != order.terms.stopPrice;
    const bool keepsPlace =
        !order.isResting || (!movesStop && wanted.terms.price == order.terms.price &&
                             wanted.terms.volume.GetValue() <= order.terms.volume.GetValue());
    Refusal refusal = nxOrderChecks::FindEnd(order);
    if (refusal.text.empty()) refusal = _FindRefusal(wanted, changes);
    if (refusal.text.empty() && movesStop && order.triggered)
        refusal = {nxError_OrderStopMisplaced, "the stop is triggered already"};
    if (refusal.text.empty() && movesStop) refusal = _SetTrail(wanted);
    if (refusal.text.empty() && !keepsPlace) refusal = _FindOwnTrade(wanted);
    if (!refusal.text.empty()) {
        _TellRefusal(order, nxExchangeEvent::Kind::AmendRejected, std::move(refusal));
        return;
    }
    if (!keepsPlace) {
        book.Remove(order);
        order.arrived = _time;
        order.noBetterThan.SetNull();
    }
    const bool isDated = wanted.terms.expiry != order.terms.expiry;
    order.terms = wanted.terms;
    order.trailDistance = wanted.trailDistance;
    if (isDated) _SetExpiry(order);
    _Tell(order, nxExchangeEvent::Kind::Amended, [&](nxExchangeEvent& event) {
        event.isRequested = true;
        if (!keepsPlace && order.triggered) event.ahead = book.GetAhead(order);
    });
    if (order.GetRemaining() == 0) return _End(order, "the volume is executed");
    if (!keepsPlace) book.Enter(order);
}

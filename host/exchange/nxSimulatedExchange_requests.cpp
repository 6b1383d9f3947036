// Requests as they arrive: what is refused and why, and what becomes of an order.
#include <fmt/format.h>

#include <algorithm>

#include "base/time/nxTime.h"
#include "host/exchange/nxSimulatedExchange.h"
#include "host/feed/nxFeedTime.h"

namespace {

using nxTime::NanosecondsPerDay;
using nxTime::NanosecondsPerSecond;
using nxTime::Never;
constexpr unsigned int LargestVolume = 1'000'000'000;
constexpr unsigned int MostTicks = 1'000'000;

// The end of an order's last day; one after the last of all times never ends.
long long GetEnd(const nxDateTime& date)
{
    if (date.GetAsTimeValue() >= (Never - NanosecondsPerDay) / NanosecondsPerSecond) return Never;
    return nxFeedTime::GetNextMidnight(date.GetAsTimeValue() * NanosecondsPerSecond);
}

const char* FindVolumeFault(const nxVolume& volume)
{
    if (!volume.IsValid()) return "the order has no volume";
    if (volume.GetValue() == 0) return "the volume is 0";
    if (volume.GetValue() > LargestVolume) return "the volume is above 1000000000";
    return nullptr;
}

const char* FindIcebergFault(const nxOrderKind& kind, const nxOrderTerms& terms)
{
    const unsigned int least = nxOrderTerms::GetOr(terms.icebergMinPeak, 0);
    if (kind.isMarket) return "an ICEBERG order is a LIMIT order";
    if (least == 0) return "an ICEBERG order needs an icebergMinPeakSize above 0";
    if (nxOrderTerms::GetOr(terms.icebergMaxPeak, least) < least)
        return "icebergMaxPeakSize is below icebergMinPeakSize";
    if (least > terms.volume.GetValue()) return "the peak is larger than the order";
    if (nxOrderTerms::GetOr(terms.icebergThreshold, 0) >= least)
        return "icebergThreshold is not below icebergMinPeakSize";
    return nullptr;
}

const char* FindBracketFault(const nxOrderTerms& terms)
{
    const unsigned int profit = nxOrderTerms::GetOr(terms.bracketProfit, 0);
    const unsigned int stopLoss = nxOrderTerms::GetOr(terms.bracketStopLoss, 0);
    if (profit == 0 && stopLoss == 0) return "a BRACKET order needs bracketProfit or bracketStopLoss";
    if (std::max({profit, stopLoss, nxOrderTerms::GetOr(terms.bracketStopLimit, 0)}) > MostTicks)
        return "a bracket reaches at most 1000000 ticks";
    return nullptr;
}

}  // namespace

const char* nxSimulatedExchange::FindFault(const nxOrderKind& kind, const nxOrderTerms& terms)
{
    const bool isIceberg = kind.execution == nxOrderExecution::Iceberg;
    const bool isBracket = kind.execution == nxOrderExecution::Bracket;
    const bool isDated = kind.duration == nxOrderDuration::Date;
    if (const char* fault = FindVolumeFault(terms.volume)) return fault;
    if (kind.isMarket && terms.price.IsValid()) return "a MARKET order has no price";
    if (!kind.isMarket && !terms.price.IsValid()) return "a LIMIT order needs a price";
    if (kind.IsStop() && !terms.stopPrice.IsValid()) return "a stop order needs a stopPrice";
    if (!kind.IsStop() && terms.stopPrice.IsValid())
        return "only STOP and TRAILING_STOP orders have a stopPrice";
    if (kind.IsImmediate() && kind.duration != nxOrderDuration::Day) return "an IOC or FOK order is GFD";
    if (kind.IsForOpening() && kind.execution != nxOrderExecution::None)
        return "an order for the opening is a plain MARKET or LIMIT order";
    if (isIceberg) {
        if (const char* fault = FindIcebergFault(kind, terms)) return fault;
    } else if (terms.icebergMinPeak.IsValid() || terms.icebergMaxPeak.IsValid() ||
               terms.icebergThreshold.IsValid())
    {
        return "only ICEBERG orders have peaks";
    }
    if (isBracket) {
        if (const char* fault = FindBracketFault(terms)) return fault;
    } else if (terms.bracketProfit.IsValid() || terms.bracketStopLoss.IsValid()) {
        return "only BRACKET orders have a bracketProfit or bracketStopLoss";
    }
    if (isDated && !terms.expiry.IsValid()) return "a GTD order needs an expiryDate";
    if (!isDated && terms.expiry.IsValid()) return "only GTD orders have an expiryDate";
    return nullptr;
}

// Why the order cannot be as its terms say now, `given` being those that the request names; empty when it
// can.
nxSimulatedExchange::Refusal nxSimulatedExchange::_FindRefusal(const nxExchangeOrder& order,
                                                               const nxOrderTerms& given) const
{
    if (const char* fault = FindFault(order.kind, order.terms)) return {nxError_OrderTermsInvalid, fault};
    const nxDecimal& tick = _markets[order.kind.product]->product.tickSize;
    for (const nxDecimal* price : {&given.price, &given.stopPrice}) {
        if (!price->IsValid() || !tick.IsValid()) continue;
        nxDecimal rounded = *price;
        rounded.Round(tick, nxRoundingMethodEnum(nxRoundingMethod_Nearest));
        if (rounded != *price)
            return {nxError_OrderPriceOffTick, fmt::format("{} is no multiple of the tick size {}",
                                                           price->GetAsString(), tick.GetAsString())};
    }
    if (order.terms.expiry.IsValid() && GetEnd(order.terms.expiry) <= _time)
        return {nxError_OrderDateInPast, "the expiryDate is in the past"};
    if (order.executed > order.terms.volume.GetValue())
        return {nxError_OrderIsExecuted, fmt::format("{} of the order are executed already", order.executed)};
    return {};
}

// Why an order that is about to be matched must not be; empty when it may.
nxSimulatedExchange::Refusal nxSimulatedExchange::_FindOwnTrade(const nxExchangeOrder& order) const
{
    if (!order.kind.crossProtected || !order.triggered) return {};
    const nxExchangeOrder* own = _markets[order.kind.product]->book.FindOwnCounterpart(order);
    if (own == nullptr) return {};
    return {nxError_OrderMeetsOwn, fmt::format("it would trade with the own order {}", own->id)};
}

// Gives a stop that trails its distance from the market; why it cannot have one, empty when it can.
nxSimulatedExchange::Refusal nxSimulatedExchange::_SetTrail(nxExchangeOrder& order) const
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
    const nxTradingHours& hours = _markets[order.kind.product]->product.hours;
    order.expires = Never;
    switch (order.kind.duration) {
        case nxOrderDuration::Day:
        case nxOrderDuration::PreOpen:
            if (hours.IsEmpty()) {
                order.expires = nxFeedTime::GetNextMidnight(_time);
            } else {
                order.expires = hours.GetNextChange(_time);
                // Before the opening the next change is that; the day ends with the one behind it.
                if (!hours.IsOpen(_time) && order.expires != Never)
                    order.expires = hours.GetNextChange(order.expires);
            }
            break;
        case nxOrderDuration::Date:
            order.expires = GetEnd(order.terms.expiry);
            break;
        case nxOrderDuration::Cancelled:
        case nxOrderDuration::Open:
            break;
    }
    if (order.expires == Never) return;
    Expiry& expiry = _expiries[order.expires];
    if (expiry.orders.size() == expiry.sweepAt) {
        std::erase_if(expiry.orders, [&](unsigned int id) { return !_ExpiresAt(id, order.expires); });
        expiry.sweepAt = std::max<std::size_t>(expiry.sweepAt, 2 * expiry.orders.size());
    }
    expiry.orders.push_back(order.id);
}

// False for one that is over; one that is on its way may come to live.
bool nxSimulatedExchange::_ExpiresAt(unsigned int id, long long time) const
{
    const nxExchangeOrder* const order = FindOrder(id);
    return order != nullptr && order->expires == time &&
           (order->IsAlive() || order->status == nxOrderStatus_Pending);
}

void nxSimulatedExchange::_Expire(long long time)
{
    const auto due = _expiries.extract(_expiries.begin());
    for (const unsigned int id : due.mapped().orders)
        if (_ExpiresAt(id, time)) _End(_GetOrder(id), "its time is over");
}

void nxSimulatedExchange::_Carry(const Request& request)
{
    nxExchangeOrder& order = _GetOrder(request.order);
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
    _TellRefusal(order, nxExchangeEvent::Kind::CancelRejected, _FindEnd(order));
}

// Why nothing can be done to an order any more; empty while it is alive.
nxSimulatedExchange::Refusal nxSimulatedExchange::_FindEnd(const nxExchangeOrder& order)
{
    if (order.IsAlive()) return {};
    return {nxError_OrderIsOver,
            order.status == nxOrderStatus_Filled ? "the order is filled" : "the order is no longer working"};
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
    Refusal refusal = _FindEnd(order);
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

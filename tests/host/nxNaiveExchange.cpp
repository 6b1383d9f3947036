// Orders: what becomes of requests, of fills and of time.
#include "tests/host/nxNaiveExchange.h"

#include <fmt/format.h>

#include <algorithm>

namespace {

constexpr long long Day = nxTime::NanosecondsPerDay;
constexpr char OtherFilled[] = "the other side of the bracket was filled";

std::string GetSelfTrade(const nxExchangeOrder& other)
{
    return fmt::format("it would trade with the own order {}", other.id);
}

bool IsOver(const nxExchangeOrder& order)
{
    return !order.IsAlive() && order.status != nxOrderStatus_Pending;
}

nxDecimal GetDistance(const nxDecimal& a, const nxDecimal& b)
{
    return a > b ? a - b : b - a;
}

long long GetEnd(const nxDateTime& lastDay)
{
    return lastDay.GetAsTimeValue() * nxTime::NanosecondsPerSecond + Day;
}

}  // namespace

nxNaiveExchange::Order& nxNaiveExchange::_Add(const Order& order)
{
    _orders.push_back(order);
    _orders.back().id = GetCount();
    return _orders.back();
}

std::vector<unsigned int> nxNaiveExchange::_Copy(bool (*is)(const Order&)) const
{
    std::vector<unsigned int> copy;
    for (const unsigned int id : _line)
        if (is(Get(id))) copy.push_back(id);
    return copy;
}

void nxNaiveExchange::_ToTheEnd(unsigned int id)
{
    std::erase(_line, id);
    _line.push_back(id);
}

nxExchangeEvent& nxNaiveExchange::_Tell(Kind kind, const Order& order, const std::string& reason)
{
    const long long due = std::max(_now + _options.answer.least, told.empty() ? 0 : told.back().due);
    nxExchangeEvent& event = told.emplace_back();
    event.kind = kind;
    event.order = order.id;
    event.owner = order.kind.owner;
    event.time = _now;
    event.due = due;
    event.status = order.status;
    event.price = order.terms.price;
    event.stopPrice = order.terms.stopPrice;
    event.volume = order.terms.volume.GetValue();
    event.executed = order.executed;
    event.reason = reason;
    return event;
}

void nxNaiveExchange::_End(Order& order, const std::string& reason, bool isRequested)
{
    std::erase(_line, order.id);
    order.isResting = order.waitsForOpening = false;
    order.triggered = true;
    order.status = nxOrderStatus_Deleted;
    _Tell(Kind::Cancelled, order, reason).isRequested = isRequested;
}

void nxNaiveExchange::_EndForNow(Order& order)
{
    _End(order, order.kind.duration == nxOrderDuration::Open ? "the opening is over"
                : order.IsFok()                              ? "it could not be filled at once"
                                                             : "the rest could not be filled at once");
}

void nxNaiveExchange::_Fill(Order& order, const nxDecimal& price, unsigned int volume, bool isMaker,
                            nxFillCause cause)
{
    order.executed += volume;
    order.displayed -= std::min(order.displayed, volume);
    order.status = order.GetRemaining() == 0 ? nxOrderStatus_Filled : nxOrderStatus_PartiallyFilled;
    if (order.GetRemaining() == 0) std::erase(_line, order.id);
    nxExchangeEvent& event = _Tell(Kind::Filled, order);
    event.fillPrice = price;
    event.fillVolume = volume;
    event.isMaker = isMaker;
    event.cause = cause;
    if (order.kind.execution == nxOrderExecution::Bracket) _fills.push_back({order.id, price, volume});
    if (order.sibling == 0 || IsOver(Get(order.sibling))) return;
    Order& sibling = _Of(order.sibling);
    sibling.terms.volume = sibling.terms.volume.GetValue() - std::min(volume, sibling.GetRemaining());
    if (sibling.GetRemaining() == 0) std::erase(_line, sibling.id);
    _fills.push_back({order.id, price, volume});
}

// What fills lead to is told and done after the matching that made them.
void nxNaiveExchange::_Settle()
{
    _ForgetLate();
    while (!_fills.empty()) {
        const Fill fill = _fills.front();
        _fills.pop_front();
        const Order& order = Get(fill.order);
        if (order.kind.execution == nxOrderExecution::Bracket) _MakeChildren(order, fill.price, fill.volume);
        if (order.sibling == 0 || IsOver(Get(order.sibling))) continue;
        Order& sibling = _Of(order.sibling);
        if (sibling.GetRemaining() == 0) {
            _End(sibling, OtherFilled);
        } else {
            _Tell(Kind::Amended, sibling);
        }
    }
}

void nxNaiveExchange::_MakeChildren(const Order& parent, const nxDecimal& price, unsigned int volume)
{
    const nxOrderTerms& terms = parent.terms;
    const nxSide loss = nxGetOpposite(parent.kind.side);
    Order child;
    child.parent = parent.id;
    child.kind = {0, parent.kind.owner, loss};
    child.kind.crossProtected = parent.kind.crossProtected;
    child.kind.duration = parent.kind.IsForOpening() ? nxOrderDuration::Day : parent.kind.duration;
    child.terms.volume = volume;
    child.terms.expiry = terms.expiry;
    std::vector<unsigned int> made;
    const auto make = [&](const Order& order) {
        made.push_back(_Add(order).id);
        _Tell(Kind::ChildCreated, Get(made.back()));
    };
    if (terms.bracketStopLoss.IsValid()) {
        Order stop = child;
        stop.kind.execution =
            terms.bracketStopTrails.value_or(false) ? nxOrderExecution::TrailingStop : nxOrderExecution::Stop;
        stop.kind.isMarket = !terms.bracketStopIsLimit.value_or(false);
        stop.terms.stopPrice = _Move(loss, price, terms.bracketStopLoss.GetValue());
        const unsigned int further = nxOrderTerms::GetOr(terms.bracketStopLimit, 0);
        if (!stop.kind.isMarket) stop.terms.price = _Move(loss, stop.terms.stopPrice, further);
        stop.trailDistance = GetDistance(price, stop.terms.stopPrice);
        make(stop);
    }
    if (terms.bracketProfit.IsValid()) {
        child.terms.price = _Move(parent.kind.side, price, terms.bracketProfit.GetValue());
        make(child);
    }
    if (made.size() == 2) {
        _Of(made[0]).sibling = made[1];
        _Of(made[1]).sibling = made[0];
    }
    for (const unsigned int id : made) {
        // The first one may have taken all of it on its arrival.
        Get(id).GetRemaining() != 0 ? _Arrive(_Of(id)) : _End(_Of(id), OtherFilled);
    }
}

void nxNaiveExchange::Submit(const nxOrderKind& kind, const nxOrderTerms& terms, long long now)
{
    Order order;
    order.kind = kind;
    order.terms = terms;
    Send(nxOrderRequest::New, _Add(order).id, {}, now);
}

void nxNaiveExchange::Send(nxOrderRequest kind, unsigned int id, const nxOrderTerms& changes, long long now)
{
    _requests.push_back({kind, id, changes, now + _options.request.least});
}

void nxNaiveExchange::Advance(long long time, long long lastEnd)
{
    for (;;) {
        Order* ends = nullptr;
        for (Order& order : _orders)
            if (order.expires <= lastEnd && order.IsAlive() &&
                (ends == nullptr || order.expires < ends->expires))
                ends = &order;
        const long long request = _requests.empty() ? nxTime::Never : _requests.front().due;
        if (ends != nullptr && ends->expires <= request) {
            _now = std::max(_now, ends->expires);
            _End(*ends, "its time is over");
            continue;
        }
        if (request > time) return;
        const Request next = _requests.front();
        _requests.pop_front();
        _now = std::max(_now, request);
        Order& order = _Of(next.order);
        if (next.kind == nxOrderRequest::New) {
            _DoNew(order);
        } else if (!order.IsAlive()) {
            _Tell(next.kind == nxOrderRequest::Amend ? Kind::AmendRejected : Kind::CancelRejected, order,
                  order.status == nxOrderStatus_Filled ? "the order is filled"
                                                       : "the order is no longer working");
        } else if (next.kind == nxOrderRequest::Amend) {
            _DoAmend(order, next.terms);
        } else {
            _End(order, "", true);
        }
        _Settle();
    }
}

// Bars of a day and longer do not ask for hours.
long long nxNaiveExchange::_GetDayEnd(long long time) const
{
    const bool hasHours = !_product.hours.IsEmpty() && _product.barPeriod < Day;
    const long long first = hasHours ? Closing : 0;
    return first + ((time - first) / Day + 1) * Day;
}

void nxNaiveExchange::_SetEnd(Order& order)
{
    if (order.kind.duration == nxOrderDuration::Date) order.expires = GetEnd(order.terms.expiry);
    // Over bars the day is that of the next bar.
    if (!_product.isOfBars && order.EndsWithDay()) order.expires = _GetDayEnd(_now);
}

void nxNaiveExchange::_DoNew(Order& order)
{
    order.triggered = !order.kind.IsStop();
    const std::string refusal = _FindRefusal(order, order.terms, true, true);
    if (refusal.empty()) return _Arrive(order);
    order.status = nxOrderStatus_Rejected;
    _Tell(Kind::Rejected, order, refusal);
}

void nxNaiveExchange::_DoAmend(Order& order, const nxOrderTerms& changes)
{
    const nxOrderTerms was = order.terms;
    Order changed = order;
    changed.terms.Merge(changes);
    const nxOrderTerms& terms = changed.terms;
    const bool isOtherStop = terms.stopPrice != was.stopPrice;
    const bool losesPlace = terms.price != was.price || isOtherStop || terms.volume > was.volume;
    const std::string refusal = _FindRefusal(changed, changes, false, losesPlace);
    if (!refusal.empty()) {
        _Tell(Kind::AmendRejected, order, refusal);
        return;
    }
    order = changed;
    if (order.kind.duration == nxOrderDuration::Date) _SetEnd(order);
    order.displayed = std::min(order.displayed, order.GetRemaining());
    if (losesPlace) {
        order.isResting = false;
        _ForgetLate();
        order.ahead.SetNull();
        order.arrived = _now;
        order.waitsForOpening = _IsHeldNow();
        if (order.waitsForOpening) order.status = nxOrderStatus_Held;
        const nxDecimal market = _GetMarketPrice(order.kind.side);
        if (isOtherStop && order.kind.execution == nxOrderExecution::TrailingStop && market.IsValid())
            order.trailDistance = GetDistance(market, order.terms.stopPrice);
    }
    _Tell(Kind::Amended, order).isRequested = true;
    if (order.GetRemaining() == 0) return _End(order, "the volume is executed");
    if (losesPlace) _Enter(order);
}

std::string nxNaiveExchange::_FindRefusal(const Order& order, const nxOrderTerms& given, bool isNew,
                                          bool enters) const
{
    const nxDecimal& stop = order.terms.stopPrice;
    const bool stopChanges = !isNew && given.stopPrice.IsValid() && stop != Get(order.id).terms.stopPrice;
    if (given.expiry.IsValid() && GetEnd(given.expiry) <= _now) return "the expiryDate is in the past";
    if (order.terms.volume.GetValue() < order.executed)
        return fmt::format("{} of the order are executed already", order.executed);
    if (isNew && order.kind.IsForOpening() && !_IsHeldNow()) return "the market is open already";
    if (isNew && !order.kind.IsForOpening() && !_isOpen) return "the market is not open";
    if (stopChanges && order.triggered) return "the stop is triggered already";
    const bool isTrailing = order.kind.execution == nxOrderExecution::TrailingStop && !order.triggered;
    const nxDecimal market = _GetMarketPrice(order.kind.side);
    if (isTrailing && (isNew || stopChanges) &&
        (!market.IsValid() || !nxIsBetter(order.kind.side, stop, market)))
        return "the stopPrice does not lie behind the market's price";
    if (!enters || !_IsProtected(order) || !order.triggered || _IsHeldNow()) return {};
    const unsigned int met = _FindMet(order);
    return met != 0 ? GetSelfTrade(Get(met)) : "";
}

// It may come in.
void nxNaiveExchange::_Arrive(Order& order)
{
    order.arrived = _now;
    order.triggered = !order.kind.IsStop();
    _SetEnd(order);
    const nxDecimal market = _GetMarketPrice(order.kind.side);
    if (order.kind.execution == nxOrderExecution::TrailingStop && market.IsValid() && order.parent == 0)
        order.trailDistance = GetDistance(order.terms.stopPrice, market);
    order.waitsForOpening = _IsHeldNow();
    const bool isHeld = !order.triggered || order.waitsForOpening;
    order.status = isHeld ? nxOrderStatus_Held : nxOrderStatus_Working;
    _Tell(Kind::Accepted, order);
    _Enter(order);
}

void nxNaiveExchange::_Enter(Order& order)
{
    _ToTheEnd(order.id);
    if (order.waitsForOpening) return;
    order.triggered ? _TakeAll(order) : _TryStop(order);
}

void nxNaiveExchange::_Trigger(Order& order)
{
    order.triggered = true;
    order.status = nxOrderStatus_Working;
    _Tell(Kind::Triggered, order);
}

// The stops among them enter as what they are.
void nxNaiveExchange::_OpenWaiting()
{
    for (const unsigned int id : _Copy([](const Order& order) { return order.waitsForOpening; })) {
        Order& order = _Of(id);
        if (!order.waitsForOpening || order.GetRemaining() == 0) continue;
        order.waitsForOpening = false;
        if (order.triggered) {
            order.status = order.executed == 0 ? nxOrderStatus_Working : nxOrderStatus_PartiallyFilled;
            _Tell(Kind::Triggered, order);
            _TakeAll(order);
        } else if (!_product.isOfBars) {
            _TryStop(order);
        }
    }
}

void nxNaiveExchange::_TakeAll(Order& order)
{
    order.isResting = _product.isOfBars;
    if (order.isResting) return;
    if (order.IsFok() && _CountForFok(order) < order.GetRemaining()) return _EndForNow(order);
    _Take(order);
    if (!order.IsAlive() || order.GetRemaining() == 0) return;
    if (order.IsForNow()) return _EndForNow(order);
    order.isResting = true;
    if (order.kind.isMarket) return;
    order.displayed = 0;
    _StandAtTheEnd(order);
    _Renew(order);
}

// The best price first, what is shown before own orders at the same.
void nxNaiveExchange::_Take(Order& order)
{
    const nxSide other = nxGetOpposite(order.kind.side);
    while (order.IsAlive() && order.GetRemaining() != 0) {
        bool isAssumed = false;
        const nxDecimal free = _FindBestFree(order, isAssumed);
        const unsigned int own = _FindOwn(order, false);
        if (own == 0 && !free.IsValid()) return;
        if (own != 0 && (!free.IsValid() || nxIsBetter(other, Get(own).terms.price, free))) {
            _MeetOwn(_Of(own), order);
            continue;
        }
        const unsigned int most = isAssumed ? _GetAssumed(other, free) : _GetFree(other, free);
        const unsigned int volume = std::min(order.GetRemaining(), most);
        (isAssumed ? _assumed : _shown)[other][free].taken += volume;
        _Fill(order, free, volume, false, isAssumed ? nxFillCause::Assumed : nxFillCause::Took);
    }
}

void nxNaiveExchange::_MeetOwn(Order& own, Order& order)
{
    if (_options.selfTrade == nxSelfTrade::CancelNewest) return _End(order, GetSelfTrade(own));
    if (_options.selfTrade == nxSelfTrade::CancelOldest) return _End(own, GetSelfTrade(order));
    const unsigned int volume = std::min(own.GetRemaining(), order.GetRemaining());
    const nxDecimal price = own.terms.price;
    _Fill(own, price, volume, true, nxFillCause::OwnOrder);
    _Fill(order, price, volume, false, nxFillCause::OwnOrder);
    if (own.GetRemaining() != 0) _Renew(own);
}

bool nxNaiveExchange::_IsProtected(const Order& order) const
{
    return order.kind.crossProtected || _options.selfTrade == nxSelfTrade::Refuse;
}

bool nxNaiveExchange::_Meets(const Order& order, const Order& own) const
{
    return own.isResting && !own.kind.isMarket && own.kind.side != order.kind.side &&
           own.kind.owner == order.kind.owner && order.Reaches(own.terms.price);
}

// The own resting order that it would meet first; 0: none.
unsigned int nxNaiveExchange::_FindOwn(const Order& order, bool evenIfProtected) const
{
    unsigned int best = 0;
    for (const unsigned int id : _line) {
        const Order& own = Get(id);
        if (!_Meets(order, own)) continue;
        if (!evenIfProtected && (_IsProtected(own) || _IsProtected(order))) continue;
        if (best == 0 || nxIsBetter(own.kind.side, own.terms.price, Get(best).terms.price)) best = id;
    }
    return best;
}

// As an order without protection; what the market has at its price and better may be enough.
unsigned int nxNaiveExchange::_FindMet(const Order& order) const
{
    const unsigned int own = _FindOwn(order, true);
    return own != 0 && _CountFree(order, own) < order.GetRemaining() ? own : 0;
}

// What the market has for it, up to the price of that own order; 0: all that it reaches.
unsigned long long nxNaiveExchange::_CountFree(const Order& order, unsigned int upTo) const
{
    const nxSide other = nxGetOpposite(order.kind.side);
    Order reach = order;
    if (upTo != 0) {
        reach.terms.price = Get(upTo).terms.price;
        reach.kind.isMarket = false;
    }
    unsigned long long sum = 0;
    for (const auto& [price, level] : _shown[other])
        if (reach.Reaches(price)) sum += _GetFree(other, price);
    for (int i = 1; order.kind.isMarket && _Assumes(other) && i <= 1000; ++i) {
        const nxDecimal price = _Move(order.kind.side, _GetBest(other), i);
        if (reach.Reaches(price)) sum += _GetAssumed(other, price);
    }
    return sum;
}

// Up to the first own order where that one would end this one.
unsigned long long nxNaiveExchange::_CountForFok(const Order& order) const
{
    const bool endsAtOwn = _options.selfTrade == nxSelfTrade::CancelNewest;
    unsigned long long sum = _CountFree(order, endsAtOwn ? _FindOwn(order, false) : 0);
    if (_options.selfTrade != nxSelfTrade::Meet || _IsProtected(order)) return sum;
    for (const unsigned int id : _line) {
        const Order& own = Get(id);
        if (_IsProtected(own) || !_Meets(order, own)) continue;
        sum += own.GetRemaining();
        // Of two children the larger counts: the smaller is taken off where the second is met.
        if (own.sibling == 0 || own.sibling > own.id) continue;
        const Order& other = Get(own.sibling);
        if (other.IsAlive() && _Meets(order, other))
            sum -= std::min(own.GetRemaining(), other.GetRemaining());
    }
    return sum;
}

// Orders: what becomes of requests, of fills and of time.
#include "tests/host/nxNaiveExchange.h"

#include <fmt/format.h>

#include <algorithm>

namespace {

constexpr long long Day = nxTime::NanosecondsPerDay;
constexpr unsigned int Endless = ~0u;
constexpr char OtherFilled[] = "the other side of the bracket was filled";

template <class Value>
void Merge(Value& value, const Value& change)
{
    if (change) value = change;
}

}  // namespace

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

void nxNaiveExchange::_Tell(Kind kind, const Order& order, const std::string& reason, bool isRequested)
{
    Event event;
    event.kind = kind;
    event.order = order.id;
    event.owner = order.owner;
    event.time = _now;
    event.due = std::max(_now + _options.answerLatency, told.empty() ? 0 : told.back().due);
    event.status = order.status;
    event.price = order.terms.price;
    event.stop = order.terms.stop;
    event.volume = order.terms.volume.value_or(0);
    event.executed = order.executed;
    event.reason = reason;
    event.isRequested = isRequested;
    told.push_back(event);
}

void nxNaiveExchange::_End(Order& order, const std::string& reason, bool isRequested)
{
    std::erase(_line, order.id);
    order.rests = order.isStopWaiting = order.waitsForOpening = false;
    order.status = Status::Deleted;
    _Tell(Kind::Cancelled, order, reason, isRequested);
}

void nxNaiveExchange::_Fill(Order& order, int price, unsigned int volume, bool isMaker, Cause cause)
{
    order.executed += volume;
    order.displayed -= std::min(order.displayed, volume);
    order.status = order.GetRest() == 0 ? Status::Filled : Status::Partial;
    if (order.GetRest() == 0) std::erase(_line, order.id);
    _Tell(Kind::Filled, order);
    told.back().fillPrice = price;
    told.back().fillVolume = volume;
    told.back().isMaker = isMaker;
    told.back().cause = cause;
    if (order.execution == nxOrderExecution::Bracket) _fills.push_back({order.id, price, volume});
    if (order.sibling == 0) return;
    Order& sibling = _Of(order.sibling);
    if (!sibling.IsAlive() && sibling.status != Status::Pending) return;
    sibling.terms.volume = *sibling.terms.volume - std::min(volume, sibling.GetRest());
    if (sibling.GetRest() == 0) std::erase(_line, sibling.id);
    _fills.push_back({order.id, price, volume});
}

// What fills lead to is told and done after the matching that made them.
void nxNaiveExchange::_Settle()
{
    _ForgetLate();
    while (!_fills.empty()) {
        const Fill fill = _fills.front();
        _fills.pop_front();
        const Order order = Get(fill.order);
        if (order.execution == nxOrderExecution::Bracket) _MakeChildren(order, fill.price, fill.volume);
        if (order.sibling == 0) continue;
        Order& sibling = _Of(order.sibling);
        if (!sibling.IsAlive() && sibling.status != Status::Pending) continue;
        if (sibling.GetRest() == 0) {
            _End(sibling, OtherFilled);
        } else {
            _Tell(Kind::Amended, sibling);
        }
    }
}

void nxNaiveExchange::_MakeChildren(const Order& parent, int price, unsigned int volume)
{
    const int sign = parent.isBuy ? _options.tick : -_options.tick;
    const auto ticks = [](const Volume& field) { return static_cast<int>(field.value_or(0)); };
    Order child;
    child.owner = parent.owner;
    child.isBuy = !parent.isBuy;
    child.isProtected = parent.isProtected;
    child.isChild = true;
    child.duration = parent.duration == nxOrderDuration::Open || parent.duration == nxOrderDuration::PreOpen
                         ? nxOrderDuration::Day
                         : parent.duration;
    child.terms.volume = volume;
    child.terms.lastDay = parent.terms.lastDay;
    std::vector<unsigned int> made;
    const auto make = [&](const Order& order) {
        _orders.push_back(order);
        _orders.back().id = GetCount();
        made.push_back(GetCount());
        _Tell(Kind::ChildCreated, _orders.back());
    };
    const bool hasBoth = parent.terms.stopLoss && parent.terms.profit;
    if (parent.terms.stopLoss) {
        Order stop = child;
        stop.execution =
            parent.terms.stopTrails.value_or(false) ? nxOrderExecution::TrailingStop : nxOrderExecution::Stop;
        stop.isMarket = !parent.terms.stopIsLimit.value_or(false);
        stop.terms.stop = price - sign * ticks(parent.terms.stopLoss);
        if (!stop.isMarket) stop.terms.price = *stop.terms.stop - sign * ticks(parent.terms.stopLimit);
        stop.trail = std::abs(*stop.terms.stop - price);
        if (hasBoth) stop.sibling = GetCount() + 2;
        make(stop);
    }
    if (parent.terms.profit) {
        Order limit = child;
        limit.terms.price = price + sign * ticks(parent.terms.profit);
        if (hasBoth) limit.sibling = GetCount();
        make(limit);
    }
    for (const unsigned int id : made) {
        if (Get(id).GetRest() != 0) {
            _Arrive(id);
        } else {
            _End(_Of(id), OtherFilled);  // by the first one, on its arrival
        }
    }
}

unsigned int nxNaiveExchange::Submit(Order order, long long now)
{
    order.id = GetCount() + 1;
    _orders.push_back(order);
    _requests.push_back({'N', order.id, {}, now + _options.requestLatency});
    return order.id;
}

void nxNaiveExchange::Amend(unsigned int id, const Terms& changes, long long now)
{
    _requests.push_back({'A', id, changes, now + _options.requestLatency});
}

void nxNaiveExchange::Cancel(unsigned int id, long long now)
{
    _requests.push_back({'C', id, {}, now + _options.requestLatency});
}

void nxNaiveExchange::Advance(long long time, long long lastEnd)
{
    for (;;) {
        Order* ends = nullptr;
        for (Order& order : _orders)
            if (order.IsAlive() && order.ends <= lastEnd && (ends == nullptr || order.ends < ends->ends))
                ends = &order;
        const long long request = _requests.empty() ? nxTime::Never : _requests.front().due;
        if (ends != nullptr && ends->ends <= request) {
            _now = std::max(_now, ends->ends);
            _End(*ends, "its time is over");
            continue;
        }
        if (request > time) return;
        const Request next = _requests.front();
        _requests.pop_front();
        _now = std::max(_now, request);
        Order& order = _Of(next.order);
        if (next.kind == 'N') {
            _DoNew(order);
        } else if (!order.IsAlive()) {
            _Tell(next.kind == 'A' ? Kind::AmendRejected : Kind::CancelRejected, order,
                  order.status == Status::Filled ? "the order is filled" : "the order is no longer working");
        } else if (next.kind == 'A') {
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
    const bool hasHours = _options.day != 0 && !(_options.hasBars && _options.barPeriod > Day / 2);
    long long end = hasHours ? (_options.open + _options.day) % Day : 0;
    while (end <= time)
        end += Day;
    return end;
}

void nxNaiveExchange::_SetEnd(Order& order)
{
    if (order.duration == nxOrderDuration::Date) order.ends = (*order.terms.lastDay + 1) * Day;
    // Over bars the day is that of the next bar.
    if (!_options.hasBars &&
        (order.duration == nxOrderDuration::Day || order.duration == nxOrderDuration::PreOpen))
        order.ends = _GetDayEnd(_now);
}

void nxNaiveExchange::_DoNew(Order& order)
{
    order.arrived = _now;
    order.isStopWaiting = order.IsStop();
    std::string refusal = _FindFault(order, order.terms);
    if (refusal.empty()) refusal = _FindRefusal(order, order.terms, true, true);
    if (!refusal.empty()) {
        order.status = Status::Rejected;
        return _Tell(Kind::Rejected, order, refusal);
    }
    _Arrive(order.id);
}

void nxNaiveExchange::_DoAmend(Order& order, const Terms& changes)
{
    Order changed = order;
    Terms& terms = changed.terms;
    for (const auto field : {&Terms::volume, &Terms::minPeak, &Terms::maxPeak, &Terms::threshold,
                             &Terms::profit, &Terms::stopLoss, &Terms::stopLimit})
        Merge(terms.*field, changes.*field);
    Merge(terms.price, changes.price);
    Merge(terms.stop, changes.stop);
    Merge(terms.stopIsLimit, changes.stopIsLimit);
    Merge(terms.stopTrails, changes.stopTrails);
    Merge(terms.lastDay, changes.lastDay);
    const Price was = order.terms.stop;
    const bool losesPlace = terms.price != order.terms.price || terms.stop != order.terms.stop ||
                            *terms.volume > *order.terms.volume;
    std::string refusal = _FindFault(changed, changes);
    if (refusal.empty()) refusal = _FindRefusal(changed, changes, false, losesPlace);
    if (!refusal.empty()) return _Tell(Kind::AmendRejected, order, refusal);
    order = changed;
    if (order.duration == nxOrderDuration::Date) _SetEnd(order);
    order.displayed = std::min(order.displayed, order.GetRest());
    if (losesPlace) {
        order.rests = false;
        _ForgetLate();
        order.ahead.reset();
        order.arrived = _now;
        order.waitsForOpening = _IsHeldNow();
        if (order.waitsForOpening) order.status = Status::Held;
        const Price market = _GetMarketPrice(order.isBuy);
        if (changes.stop && order.terms.stop != was && order.execution == nxOrderExecution::TrailingStop &&
            market)
            order.trail = std::abs(*market - *order.terms.stop);
    }
    _Tell(Kind::Amended, order, "", true);
    if (order.GetRest() == 0) return _End(order, "the volume is executed");
    if (losesPlace) _Enter(order.id);
}

std::string nxNaiveExchange::_FindFault(const Order& order, const Terms& given) const
{
    const Terms& terms = order.terms;
    const bool isIceberg = order.execution == nxOrderExecution::Iceberg;
    const bool isForOpening =
        order.duration == nxOrderDuration::Open || order.duration == nxOrderDuration::PreOpen;
    if (!terms.volume) return "the order has no volume";
    if (*terms.volume == 0) return "the volume is 0";
    if (order.isMarket && terms.price) return "a MARKET order has no price";
    if (!order.isMarket && !terms.price) return "a LIMIT order needs a price";
    if (order.IsStop() && !terms.stop) return "a stop order needs a stopPrice";
    if (!order.IsStop() && terms.stop) return "only STOP and TRAILING_STOP orders have a stopPrice";
    const bool isForNow = order.IsFok() || order.execution == nxOrderExecution::ImmediateOrCancel;
    if (isForNow && order.duration != nxOrderDuration::Day) return "an IOC or FOK order is GFD";
    if (isForOpening && order.execution != nxOrderExecution::None)
        return "an order for the opening is a plain MARKET or LIMIT order";
    if (isIceberg) {
        if (terms.minPeak.value_or(0) == 0) return "an ICEBERG order needs an icebergMinPeakSize above 0";
        const unsigned int most = terms.maxPeak.value_or(*terms.minPeak);
        if (most < *terms.minPeak) return "icebergMaxPeakSize is below icebergMinPeakSize";
        if (most > *terms.volume) return "the peak is larger than the order";
        if (terms.threshold.value_or(0) >= *terms.minPeak)
            return "icebergThreshold is not below icebergMinPeakSize";
    } else if (terms.minPeak || terms.maxPeak || terms.threshold) {
        return "only ICEBERG orders have peaks";
    }
    const bool hasBracket = terms.profit.value_or(0) != 0 || terms.stopLoss.value_or(0) != 0;
    if (order.execution == nxOrderExecution::Bracket && !hasBracket)
        return "a BRACKET order needs bracketProfit or bracketStopLoss";
    if (order.execution != nxOrderExecution::Bracket && (terms.profit || terms.stopLoss))
        return "only BRACKET orders have a bracketProfit or bracketStopLoss";
    if (order.duration == nxOrderDuration::Date && !terms.lastDay) return "a GTD order needs an expiryDate";
    if (order.duration != nxOrderDuration::Date && terms.lastDay) return "only GTD orders have an expiryDate";
    for (const Price& price : {given.price, given.stop})
        if (price && *price % _options.tick != 0)
            return fmt::format("{} is no multiple of the tick size {}", *price, _options.tick);
    return {};
}

std::string nxNaiveExchange::_FindRefusal(const Order& order, const Terms& given, bool isNew,
                                          bool enters) const
{
    const bool stopChanges = !isNew && given.stop && given.stop != Get(order.id).terms.stop;
    if (given.lastDay && (*given.lastDay + 1) * Day <= _now) return "the expiryDate is in the past";
    if (*order.terms.volume < order.executed)
        return fmt::format("{} of the order are executed already", order.executed);
    const bool isForOpening =
        order.duration == nxOrderDuration::Open || order.duration == nxOrderDuration::PreOpen;
    if (isNew && isForOpening && !_IsHeldNow()) return "the market is open already";
    if (isNew && !isForOpening && !_isOpen) return "the market is not open";
    if (stopChanges && !order.isStopWaiting) return "the stop is triggered already";
    if (order.execution == nxOrderExecution::TrailingStop && order.isStopWaiting && (isNew || stopChanges)) {
        const Price market = _GetMarketPrice(order.isBuy);
        if (!market || (order.isBuy ? *order.terms.stop <= *market : *order.terms.stop >= *market))
            return "the stopPrice does not lie behind the market's price";
    }
    if (enters && _IsProtected(order) && !order.isStopWaiting && !_IsHeldNow())
        if (const unsigned int met = _FindMet(order); met != 0)
            return fmt::format("it would trade with the own order {}", met);
    return {};
}

// It makes sense.
void nxNaiveExchange::_Arrive(unsigned int id)
{
    Order& order = _Of(id);
    order.arrived = _now;
    order.isStopWaiting = order.IsStop();
    _SetEnd(order);
    const Price market = _GetMarketPrice(order.isBuy);
    if (order.execution == nxOrderExecution::TrailingStop && market && !order.isChild)
        order.trail = std::abs(*order.terms.stop - *market);
    order.waitsForOpening = _IsHeldNow();
    order.status = order.isStopWaiting || order.waitsForOpening ? Status::Held : Status::Working;
    _Tell(Kind::Accepted, order);
    _Enter(id);
}

void nxNaiveExchange::_Enter(unsigned int id)
{
    const Order& order = Get(id);
    _ToTheEnd(id);
    if (order.waitsForOpening) return;
    if (!order.isStopWaiting) {
        _TakeAll(id);
    } else {
        _TryStop(id);
    }
}

void nxNaiveExchange::_Trigger(Order& order)
{
    order.isStopWaiting = false;
    order.status = Status::Working;
    _Tell(Kind::Triggered, order);
}

// The stops among them enter as what they are.
void nxNaiveExchange::_OpenWaiting()
{
    for (const unsigned int id : _Copy([](const Order& order) { return order.waitsForOpening; })) {
        Order& order = _Of(id);
        if (!order.waitsForOpening || order.GetRest() == 0) continue;
        order.waitsForOpening = false;
        if (order.isStopWaiting) {
            if (!_options.hasBars) _TryStop(id);
        } else {
            order.status = order.executed == 0 ? Status::Working : Status::Partial;
            _Tell(Kind::Triggered, order);
            _TakeAll(id);
        }
    }
}

void nxNaiveExchange::_TakeAll(unsigned int id)
{
    Order& order = _Of(id);
    if (_options.hasBars) {
        order.rests = true;
        return;
    }
    if (order.IsFok() && _CountForFok(order) < order.GetRest())
        return _End(order, "it could not be filled at once");
    _Take(id);
    if (!order.IsAlive() || order.GetRest() == 0) return;
    if (order.IsForNow())
        return _End(order, order.duration == nxOrderDuration::Open ? "the opening is over"
                           : order.IsFok()                         ? "it could not be filled at once"
                                                                   : "the rest could not be filled at once");
    order.rests = true;
    if (order.isMarket) return;
    order.ahead = _GetLeft(order.isBuy, *order.terms.price);
    order.displayed = 0;
    order.part = _GetLate(order);
    _Renew(order);
}

// The best price first, what is shown before own orders at the same.
void nxNaiveExchange::_Take(unsigned int id)
{
    Order& order = _Of(id);
    while (order.IsAlive() && order.GetRest() != 0) {
        bool isAssumed = false;
        const Price free = _FindBestFree(order, isAssumed);
        const unsigned int own = _FindOwn(order, false);
        if (own == 0 && !free) return;
        if (own != 0) {
            const int price = *Get(own).terms.price;
            if (!free || (order.isBuy ? price < *free : price > *free)) {
                _MeetOwn(_Of(own), order);
                continue;
            }
        }
        Shown& level = (isAssumed ? _assumed : _shown)[!order.isBuy][*free];
        const unsigned int volume = std::min(
            order.GetRest(), isAssumed ? _GetAssumed(!order.isBuy, *free) : _GetFree(!order.isBuy, *free));
        level.taken += volume;
        _Fill(order, *free, volume, false, isAssumed ? Cause::Assumed : Cause::Took);
    }
}

void nxNaiveExchange::_MeetOwn(Order& own, Order& order)
{
    const auto reason = [](const Order& other) {
        return fmt::format("it would trade with the own order {}", other.id);
    };
    if (_options.selfTrade == SelfTrade::CancelNewest) return _End(order, reason(own));
    if (_options.selfTrade == SelfTrade::CancelOldest) return _End(own, reason(order));
    const unsigned int volume = std::min(own.GetRest(), order.GetRest());
    const int price = *own.terms.price;
    _Fill(own, price, volume, true, Cause::OwnOrder);
    _Fill(order, price, volume, false, Cause::OwnOrder);
    if (own.GetRest() != 0) _Renew(own);
}

// The own resting order that it would meet first; 0: none.
unsigned int nxNaiveExchange::_FindOwn(const Order& order, bool evenIfProtected) const
{
    unsigned int best = 0;
    for (const unsigned int id : _line) {
        const Order& own = Get(id);
        if (!own.rests || own.isMarket || own.isBuy == order.isBuy || own.owner != order.owner) continue;
        if (!order.Reaches(*own.terms.price)) continue;
        if (!evenIfProtected && (_IsProtected(own) || _IsProtected(order))) continue;
        const int price = *own.terms.price;
        if (best == 0 || (order.isBuy ? price < *Get(best).terms.price : price > *Get(best).terms.price))
            best = id;
    }
    return best;
}

// As an order without protection; what the market has at its price and better may be enough.
unsigned int nxNaiveExchange::_FindMet(const Order& order) const
{
    const unsigned int own = _FindOwn(order, true);
    if (own == 0) return 0;
    Order upToIt = order;
    upToIt.terms.price = Get(own).terms.price;
    upToIt.isMarket = false;
    unsigned long long free = 0;
    for (const auto& [price, level] : _shown[!order.isBuy])
        if (upToIt.Reaches(price)) free += _GetFree(!order.isBuy, price);
    for (int price = 0, i = 1; order.isMarket && i <= 1000 && _GetBest(!order.isBuy); ++i) {
        price = *_GetBest(!order.isBuy) + (order.isBuy ? i : -i) * _options.tick;
        if (upToIt.Reaches(price)) free += _GetAssumed(!order.isBuy, price);
    }
    return free >= order.GetRest() ? 0 : own;
}

unsigned int nxNaiveExchange::_CountForFok(const Order& order) const
{
    // What the market has, up to the first own order where that one would end this one.
    Order reach = order;
    if (const unsigned int own = _FindOwn(order, false);
        own != 0 && _options.selfTrade == SelfTrade::CancelNewest)
    {
        reach.terms.price = Get(own).terms.price;
        reach.isMarket = false;
    }
    unsigned long long sum = 0;
    for (const auto& [price, level] : _shown[!order.isBuy])
        if (reach.Reaches(price)) sum += _GetFree(!order.isBuy, price);
    for (int i = 1; order.isMarket && i <= 1000 && _GetBest(!order.isBuy); ++i) {
        const int price = *_GetBest(!order.isBuy) + (order.isBuy ? i : -i) * _options.tick;
        if (reach.Reaches(price)) sum += _GetAssumed(!order.isBuy, price);
    }
    for (const unsigned int id : _line) {
        const Order& own = Get(id);
        if (_options.selfTrade != SelfTrade::Meet || _IsProtected(own) || _IsProtected(order)) continue;
        if (!own.rests || own.isMarket || own.isBuy == order.isBuy || own.owner != order.owner) continue;
        if (!order.Reaches(*own.terms.price)) continue;
        sum += own.GetRest();
        // Of two children the larger counts: the smaller is taken off where the second is met.
        if (own.sibling == 0 || own.sibling > own.id) continue;
        const Order& other = Get(own.sibling);
        if (other.IsAlive() && other.rests && !other.isMarket && order.Reaches(*other.terms.price))
            sum -= std::min(own.GetRest(), other.GetRest());
    }
    return static_cast<unsigned int>(std::min<unsigned long long>(sum, Endless));
}

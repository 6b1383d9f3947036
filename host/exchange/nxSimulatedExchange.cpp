#include "host/exchange/nxSimulatedExchange.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <utility>

namespace {

constexpr long long NanosecondsPerSecond = 1'000'000'000;
constexpr long long NanosecondsPerDay = 86'400 * NanosecondsPerSecond;
constexpr long long Never = std::numeric_limits<long long>::max();
constexpr unsigned int LargestVolume = 1'000'000'000;

bool IsImmediate(const nxOrderKind& kind)
{
    return kind.execution == nxOrderExecution::ImmediateOrCancel ||
           kind.execution == nxOrderExecution::FillOrKill;
}

bool IsStop(const nxOrderKind& kind)
{
    return kind.execution == nxOrderExecution::Stop || kind.execution == nxOrderExecution::TrailingStop;
}

bool IsForOpening(const nxOrderKind& kind)
{
    return kind.duration == nxOrderDuration::Open || kind.duration == nxOrderDuration::PreOpen;
}

unsigned int GetOr(const nxVolume& volume, unsigned int fallback)
{
    return volume.IsValid() ? volume.GetValue() : fallback;
}

// count ticks, as a distance.
nxDecimal GetTicks(const nxDecimal& tick, unsigned int count)
{
    return nxDecimal::FromMantissa(tick.GetMantissa() * static_cast<long long>(count),
                                   tick.GetDecimalPlaces());
}

long long GetNextMidnight(long long time)
{
    const long long into = time % NanosecondsPerDay;
    return time - into + (into < 0 ? 0 : NanosecondsPerDay);
}

std::string Show(const nxDecimal& number)
{
    return number.GetAsString('.');
}

}  // namespace

struct nxSimulatedExchange::Market
{
    Market(const Product& which, nxFillModel model, nxExactRandom& random, nxExchangeBook::Listener& listener)
        : product(which), book(*which.market, model, random, listener)
    {
    }

    Product product;
    nxExchangeBook book;
    bool isOpen = false;
    bool opens = false;                        // with the next event of its data
    std::vector<nxExchangeOrder*> opening;     // orders that wait for that
    std::vector<nxExchangeOrder*> immediates;  // of bars, until the next one
};

nxSimulatedExchange::nxSimulatedExchange(const nxExchangeOptions& options)
    : _options(options), _latencyRandom(options.seed), _peakRandom(options.seed + 1)
{
}

nxSimulatedExchange::~nxSimulatedExchange() = default;

unsigned int nxSimulatedExchange::AddProduct(const Product& product)
{
    nxExchangeBook::Listener& listener = *this;
    _markets.push_back(std::make_unique<Market>(product, _options.fills, _peakRandom, listener));
    if (product.isOfBars) _markets.back()->book.SetOfBars();
    _markets.back()->book.SetParticipation(_options.participation);
    return static_cast<unsigned int>(_markets.size() - 1);
}

void nxSimulatedExchange::SetTickSize(unsigned int product, const nxDecimal& tickSize)
{
    _markets[product]->product.tickSize = tickSize;
}

const nxExchangeBook& nxSimulatedExchange::GetBook(unsigned int product) const
{
    return _markets[product]->book;
}

long long nxSimulatedExchange::_Draw(const nxLatency& latency)
{
    const long long span = latency.most - latency.least;
    if (span <= 0) return latency.least;
    return latency.least +
           static_cast<long long>(_latencyRandom.GetBelow(static_cast<unsigned long long>(span) + 1));
}

void nxSimulatedExchange::_Send(RequestKind kind, unsigned int order, long long now,
                                const nxOrderTerms& terms)
{
    // One line: a request does not overtake the one before it.
    long long due = now + _Draw(_options.request);
    if (!_requests.empty()) due = std::max(due, _requests.back().due);
    _requests.push_back({kind, order, due, terms});
}

unsigned int nxSimulatedExchange::Submit(const nxOrderKind& kind, const nxOrderTerms& terms, long long now)
{
    nxExchangeOrder& order = _orders.emplace_back();
    order.id = static_cast<unsigned int>(_orders.size());
    order.kind = kind;
    order.terms = terms;
    _Send(RequestKind::New, order.id, now, {});
    return order.id;
}

void nxSimulatedExchange::Amend(unsigned int order, const nxOrderTerms& changes, long long now)
{
    _Send(RequestKind::Amend, order, now, changes);
}

void nxSimulatedExchange::Cancel(unsigned int order, long long now)
{
    _Send(RequestKind::Cancel, order, now, {});
}

nxExchangeEvent& nxSimulatedExchange::_Tell(const nxExchangeOrder& order, nxExchangeEvent::Kind kind,
                                            std::string reason)
{
    long long due = _time + _Draw(_options.answer);
    if (!_events.empty()) due = std::max(due, _events.back().due);
    nxExchangeEvent& event = _events.emplace_back();
    event.kind = kind;
    event.order = order.id;
    event.owner = order.kind.owner;
    event.time = _time;
    event.due = due;
    event.status = order.status;
    event.price = order.terms.price;
    event.stopPrice = order.terms.stopPrice;
    event.volume = GetOr(order.terms.volume, 0);
    event.executed = order.executed;
    event.ahead = order.isResting ? order.ahead : nxVolume();
    event.reason = std::move(reason);
    return event;
}

long long nxSimulatedExchange::GetNextTime() const
{
    long long next = Never;
    if (!_requests.empty()) next = std::min(next, _requests.front().due);
    if (!_events.empty()) next = std::min(next, _events.front().due);
    if (!_expiries.empty()) next = std::min(next, _expiries.top().time);
    return next;
}

void nxSimulatedExchange::Advance(long long time)
{
    for (;;) {
        const long long expiry = _expiries.empty() ? Never : _expiries.top().time;
        const long long request = _requests.empty() ? Never : _requests.front().due;
        if (std::min(expiry, request) > time || (expiry == Never && request == Never)) break;
        _time = std::max(_time, std::min(expiry, request));
        if (expiry <= request) {
            nxExchangeOrder& order = _GetOrder(_expiries.top().order);
            _expiries.pop();
            if (order.IsAlive()) _End(order, "its time is over");
        } else {
            Request next = std::move(_requests.front());
            _requests.pop_front();
            _Carry(next);
        }
        _Settle();
    }
    _time = std::max(_time, time);
}

bool nxSimulatedExchange::PopEvent(nxExchangeEvent& event, long long time)
{
    if (_events.empty() || _events.front().due > time) return false;
    event = std::move(_events.front());
    _events.pop_front();
    return true;
}

void nxSimulatedExchange::_Carry(Request& request)
{
    nxExchangeOrder& order = _GetOrder(request.order);
    switch (request.kind) {
        case RequestKind::New:
            return _Arrive(order);
        case RequestKind::Amend:
            return _ArriveAmend(order, request.terms);
        case RequestKind::Cancel:
            return _ArriveCancel(order);
    }
}

const char* nxSimulatedExchange::FindFault(const nxOrderKind& kind, const nxOrderTerms& terms)
{
    const bool isIceberg = kind.execution == nxOrderExecution::Iceberg;
    const bool isBracket = kind.execution == nxOrderExecution::Bracket;
    const bool hasPeak =
        terms.icebergMinPeak.IsValid() || terms.icebergMaxPeak.IsValid() || terms.icebergThreshold.IsValid();
    const unsigned int volume = GetOr(terms.volume, 0);
    if (!terms.volume.IsValid()) return "the order has no volume";
    if (volume == 0) return "the volume is 0";
    if (volume > LargestVolume) return "the volume is above 1000000000";
    if (kind.isMarket && terms.price.IsValid()) return "a MARKET order has no price";
    if (!kind.isMarket && !terms.price.IsValid()) return "a LIMIT order needs a price";
    if (IsStop(kind) && !terms.stopPrice.IsValid()) return "a stop order needs a stopPrice";
    if (!IsStop(kind) && terms.stopPrice.IsValid())
        return "only STOP and TRAILING_STOP orders have a stopPrice";
    if (IsImmediate(kind) && kind.duration != nxOrderDuration::Day) return "an IOC or FOK order is GFD";
    if (IsForOpening(kind) && kind.execution != nxOrderExecution::None)
        return "an order for the opening is a plain MARKET or LIMIT order";
    if (isIceberg && kind.isMarket) return "an ICEBERG order is a LIMIT order";
    if (isIceberg && GetOr(terms.icebergMinPeak, 0) == 0)
        return "an ICEBERG order needs an icebergMinPeakSize above 0";
    if (!isIceberg && hasPeak) return "only ICEBERG orders have peaks";
    if (isIceberg &&
        GetOr(terms.icebergMaxPeak, terms.icebergMinPeak.GetValue()) < terms.icebergMinPeak.GetValue())
        return "icebergMaxPeakSize is below icebergMinPeakSize";
    if (isIceberg && terms.icebergMinPeak.GetValue() > volume) return "the peak is larger than the order";
    if (isIceberg && GetOr(terms.icebergThreshold, 0) >= terms.icebergMinPeak.GetValue())
        return "icebergThreshold is not below icebergMinPeakSize";
    if (isBracket && GetOr(terms.bracketProfit, 0) == 0 && GetOr(terms.bracketStopLoss, 0) == 0)
        return "a BRACKET order needs bracketProfit or bracketStopLoss";
    if (!isBracket && (terms.bracketProfit.IsValid() || terms.bracketStopLoss.IsValid()))
        return "only BRACKET orders have a bracketProfit or bracketStopLoss";
    if (kind.duration == nxOrderDuration::Date && !terms.expiry.IsValid())
        return "a GTD order needs an expiryDate";
    if (kind.duration != nxOrderDuration::Date && terms.expiry.IsValid())
        return "only GTD orders have an expiryDate";
    return nullptr;
}

std::string nxSimulatedExchange::_FindRefusal(const nxExchangeOrder& order, const nxOrderTerms& terms) const
{
    if (const char* fault = FindFault(order.kind, terms)) return fault;
    const Market& market = *_markets[order.kind.product];
    const nxDecimal& tick = market.product.tickSize;
    for (const nxDecimal* price : {&terms.price, &terms.stopPrice}) {
        if (!price->IsValid() || !tick.IsValid()) continue;
        nxDecimal rounded = *price;
        rounded.Round(tick, nxRoundingMethodEnum(nxRoundingMethod_Nearest));
        if (rounded != *price)
            return fmt::format("{} is no multiple of the tick size {}", Show(*price), Show(tick));
    }
    if (terms.expiry.IsValid() &&
        (terms.expiry.GetAsTimeValue() * NanosecondsPerSecond + NanosecondsPerDay) <= _time)
        return "the expiryDate is in the past";
    if (order.executed > terms.volume.GetValue())
        return fmt::format("{} of the order are executed already", order.executed);
    return {};
}

bool nxSimulatedExchange::_SetTrail(nxExchangeOrder& order) const
{
    if (order.kind.execution != nxOrderExecution::TrailingStop) return true;
    const nxPrice& price = _markets[order.kind.product]->product.market->GetPrice();
    nxDecimal reference = price.GetLastPrice();
    if (!reference.IsValid()) reference = order.kind.isBuy ? price.GetAskPrice() : price.GetBidPrice();
    if (!reference.IsValid()) return false;
    order.trailDistance =
        order.kind.isBuy ? order.terms.stopPrice - reference : reference - order.terms.stopPrice;
    return order.trailDistance > nxDecimalZero;
}

void nxSimulatedExchange::_SetExpiry(const nxExchangeOrder& order)
{
    const nxTradingHours& hours = _markets[order.kind.product]->product.hours;
    long long time = Never;
    switch (order.kind.duration) {
        case nxOrderDuration::Day:
        case nxOrderDuration::PreOpen:
            time = GetNextMidnight(_time);
            if (!hours.IsEmpty()) {
                time = hours.GetNextChange(_time);
                // Before the opening the next change is that; the day ends with the one behind it.
                if (!hours.IsOpen(_time) && time != Never) time = hours.GetNextChange(time);
            }
            break;
        case nxOrderDuration::Date:
            time = order.terms.expiry.GetAsTimeValue() * NanosecondsPerSecond;
            time = time - time % NanosecondsPerDay + NanosecondsPerDay;
            break;
        case nxOrderDuration::Cancelled:
        case nxOrderDuration::Open:
            break;
    }
    if (time != Never) _expiries.push({time, order.id});
}

void nxSimulatedExchange::_Arrive(nxExchangeOrder& order)
{
    Market& market = *_markets[order.kind.product];
    order.arrived = _time;
    std::string refusal = _FindRefusal(order, order.terms);
    if (refusal.empty()) {
        if (IsForOpening(order.kind)) {
            if (market.isOpen && !market.opens) refusal = "the market is open already";
        } else if (!market.isOpen) {
            refusal = "the market is not open";
        }
    }
    if (refusal.empty() && !_SetTrail(order))
        refusal = "the stopPrice does not lie behind the market's price";
    if (refusal.empty() && order.kind.crossProtected && !IsStop(order.kind))
        if (const nxExchangeOrder* own = market.book.FindOwnCounterpart(order))
            refusal = fmt::format("it would trade with the own order {}", own->id);
    if (!refusal.empty()) {
        order.status = nxOrderStatus_Rejected;
        _Tell(order, nxExchangeEvent::Kind::Rejected, std::move(refusal));
        return;
    }
    _SetExpiry(order);
    _Enter(order);
}

// An order whose terms are good gets into the market, or waits for it.
void nxSimulatedExchange::_Enter(nxExchangeOrder& order)
{
    Market& market = *_markets[order.kind.product];
    order.triggered = !IsStop(order.kind);
    const bool waits = IsForOpening(order.kind) && (!market.isOpen || market.opens);
    order.status = waits || !order.triggered ? nxOrderStatus_Held
                   : order.executed != 0     ? nxOrderStatus_PartiallyFilled
                                             : nxOrderStatus_Working;
    _Tell(order, nxExchangeEvent::Kind::Accepted);
    if (waits) {
        market.opening.push_back(&order);
        return;
    }
    if (order.kind.execution == nxOrderExecution::FillOrKill && !market.book.IsOfBars() &&
        !market.book.CanFill(order))
        return _End(order, "it could not be filled at once");
    market.book.Enter(order);
    if (!IsImmediate(order.kind) || order.GetRemaining() == 0) return;
    if (market.book.IsOfBars()) {
        market.immediates.push_back(&order);
    } else {
        _End(order, "the rest could not be filled at once");
    }
}

void nxSimulatedExchange::_End(nxExchangeOrder& order, const char* reason)
{
    Market& market = *_markets[order.kind.product];
    if (order.isResting) market.book.Remove(order);
    std::erase(market.opening, &order);
    order.status = nxOrderStatus_Deleted;
    _Tell(order, nxExchangeEvent::Kind::Cancelled, reason);
}

void nxSimulatedExchange::_ArriveCancel(nxExchangeOrder& order)
{
    if (order.IsAlive()) return _End(order, "");
    _Tell(order, nxExchangeEvent::Kind::CancelRejected,
          order.status == nxOrderStatus_Filled ? "the order is filled" : "the order is no longer working");
}

void nxSimulatedExchange::_ArriveAmend(nxExchangeOrder& order, const nxOrderTerms& changes)
{
    Market& market = *_markets[order.kind.product];
    nxOrderTerms terms = order.terms;
    terms.Merge(changes);
    // A stop that was triggered is an order like any other.
    std::string refusal;
    if (!order.IsAlive()) {
        refusal =
            order.status == nxOrderStatus_Filled ? "the order is filled" : "the order is no longer working";
    } else if (IsStop(order.kind) && order.triggered && terms.stopPrice != order.terms.stopPrice) {
        refusal = "the stop is triggered already";
    } else {
        refusal = _FindRefusal(order, terms);
    }
    if (!refusal.empty()) {
        _Tell(order, nxExchangeEvent::Kind::AmendRejected, std::move(refusal));
        return;
    }
    const unsigned int before = order.terms.volume.GetValue();
    const bool keepsPlace = terms.price == order.terms.price && terms.stopPrice == order.terms.stopPrice &&
                            terms.volume.GetValue() <= before;
    const bool redated = terms.expiry != order.terms.expiry;
    if (keepsPlace || !order.isResting) {
        order.terms = terms;
        market.book.Shrink(order);
        _Tell(order, nxExchangeEvent::Kind::Amended);
    } else {
        market.book.Remove(order);
        const nxOrderTerms previous = order.terms;
        order.terms = terms;
        const nxExchangeOrder* own =
            order.kind.crossProtected && order.triggered ? market.book.FindOwnCounterpart(order) : nullptr;
        const bool isTrailed = order.triggered || terms.stopPrice == previous.stopPrice || _SetTrail(order);
        if (own != nullptr || !isTrailed) {
            // As it was, but it has lost nothing by trying: the exchange refused before it moved.
            order.terms = previous;
            market.book.Enter(order);
            _Tell(order, nxExchangeEvent::Kind::AmendRejected,
                  own != nullptr ? fmt::format("it would trade with the own order {}", own->id)
                                 : "the stopPrice does not lie behind the market's price");
            return;
        }
        _Tell(order, nxExchangeEvent::Kind::Amended);
        market.book.Enter(order);
    }
    if (redated) _SetExpiry(order);
    if (order.GetRemaining() == 0 && order.IsAlive()) _End(order, "the volume is executed");
}

void nxSimulatedExchange::OnFill(nxExchangeOrder& order, const nxDecimal& price, unsigned int volume,
                                 bool isMaker, nxFillCause cause)
{
    nxExchangeEvent& event = _Tell(order, nxExchangeEvent::Kind::Filled);
    event.fillPrice = price;
    event.fillVolume = volume;
    event.isMaker = isMaker;
    event.cause = cause;
    if (order.kind.execution == nxOrderExecution::Bracket || order.sibling != 0)
        _consequences.push_back({order.id, price, volume});
}

void nxSimulatedExchange::OnTriggered(nxExchangeOrder& order)
{
    _Tell(order, nxExchangeEvent::Kind::Triggered);
}

void nxSimulatedExchange::OnQueueMoved(nxExchangeOrder& order)
{
    if (_options.reportQueue) _Tell(order, nxExchangeEvent::Kind::QueueMoved);
}

// Brackets: each fill of the parent makes its children, and what one child executes the other gives up.
void nxSimulatedExchange::_Settle()
{
    for (std::size_t i = 0; i < _consequences.size(); ++i) {
        const Consequence fill = _consequences[i];
        const nxExchangeOrder& order = _GetOrder(fill.order);
        if (order.kind.execution == nxOrderExecution::Bracket) {
            const auto first = static_cast<unsigned int>(_orders.size()) + 1;
            const bool both =
                GetOr(order.terms.bracketProfit, 0) != 0 && GetOr(order.terms.bracketStopLoss, 0) != 0;
            // The stop first: it protects.
            if (GetOr(order.terms.bracketStopLoss, 0) != 0) _AddChild(order, fill, true);
            if (GetOr(order.terms.bracketProfit, 0) != 0) _AddChild(order, fill, false);
            if (both) {
                _GetOrder(first).sibling = first + 1;
                _GetOrder(first + 1).sibling = first;
            }
            const auto last = static_cast<unsigned int>(_orders.size());
            for (unsigned int child = first; child <= last; ++child)
                _Enter(_GetOrder(child));
        } else {
            nxExchangeOrder& other = _GetOrder(order.sibling);
            if (!other.IsAlive()) continue;
            other.terms.volume = other.terms.volume.GetValue() - std::min(other.GetRemaining(), fill.volume);
            if (other.GetRemaining() == 0) {
                _End(other, "the other side of the bracket was filled");
            } else {
                _markets[other.kind.product]->book.Shrink(other);
                _Tell(other, nxExchangeEvent::Kind::Amended);
            }
        }
    }
    _consequences.clear();
}

void nxSimulatedExchange::_AddChild(const nxExchangeOrder& parent, const Consequence& fill, bool isStop)
{
    const nxOrderTerms& wanted = parent.terms;
    const nxDecimal& tick = _markets[parent.kind.product]->product.tickSize;
    const nxDecimal unit = tick.IsValid() ? tick : nxDecimalOne;
    nxExchangeOrder& child = _orders.emplace_back();
    child.id = static_cast<unsigned int>(_orders.size());
    child.parent = parent.id;
    child.kind = parent.kind;
    child.kind.isBuy = !parent.kind.isBuy;
    child.kind.isMarket = false;
    child.arrived = _time;
    child.terms.volume = fill.volume;
    const auto beside = [&](const nxDecimal& price, bool above, unsigned int ticks) {
        return above ? price + GetTicks(unit, ticks) : price - GetTicks(unit, ticks);
    };
    if (isStop) {
        const unsigned int ticks = wanted.bracketStopLoss.GetValue();
        child.kind.execution =
            wanted.bracketStopTrails ? nxOrderExecution::TrailingStop : nxOrderExecution::Stop;
        child.terms.stopPrice = beside(fill.price, child.kind.isBuy, ticks);
        child.kind.isMarket = !wanted.bracketStopIsLimit;
        if (wanted.bracketStopIsLimit)
            child.terms.price =
                beside(child.terms.stopPrice, child.kind.isBuy, GetOr(wanted.bracketStopLimit, 0));
        if (wanted.bracketStopTrails) child.trailDistance = GetTicks(unit, ticks);
    } else {
        child.kind.execution = nxOrderExecution::None;
        child.terms.price = beside(fill.price, parent.kind.isBuy, wanted.bracketProfit.GetValue());
    }
    if (child.kind.duration == nxOrderDuration::Date) child.terms.expiry = wanted.expiry;
    if (IsForOpening(child.kind)) child.kind.duration = nxOrderDuration::Day;
    _Tell(child, nxExchangeEvent::Kind::ChildCreated);
    _SetExpiry(child);
}

void nxSimulatedExchange::_EnterOpening(Market& market)
{
    market.opens = false;
    const std::vector<nxExchangeOrder*> waiting = std::exchange(market.opening, {});
    for (nxExchangeOrder* order : waiting) {
        order->status = nxOrderStatus_Working;
        market.book.Enter(*order);
        if (order->kind.duration != nxOrderDuration::Open || order->GetRemaining() == 0) continue;
        if (market.book.IsOfBars()) {
            market.immediates.push_back(order);
        } else {
            _End(*order, "the opening is over");
        }
    }
}

void nxSimulatedExchange::_EndImmediates(Market& market)
{
    for (nxExchangeOrder* order : std::exchange(market.immediates, {}))
        if (order->IsAlive())
            _End(*order, order->kind.duration == nxOrderDuration::Open
                             ? "the opening is over"
                             : "the rest could not be filled at once");
}

void nxSimulatedExchange::OnQuote(unsigned int product, const nxFeedQuote& quote, long long time)
{
    _time = std::max(_time, time);
    Market& market = *_markets[product];
    if (!market.isOpen) return;
    market.book.OnQuote(quote);
    if (market.opens) _EnterOpening(market);
    _Settle();
}

void nxSimulatedExchange::OnDepth(unsigned int product, std::span<const nxFeedLevel> levels, long long time)
{
    _time = std::max(_time, time);
    Market& market = *_markets[product];
    if (!market.isOpen) return;
    market.book.OnDepth(levels);
    if (market.opens) _EnterOpening(market);
    _Settle();
}

void nxSimulatedExchange::OnBar(unsigned int product, const nxFeedBar& bar, long long time)
{
    _time = std::max(_time, time);
    Market& market = *_markets[product];
    if (!market.isOpen) return;
    if (market.opens) _EnterOpening(market);
    market.book.OnBar(bar);
    _EndImmediates(market);
    _Settle();
}

void nxSimulatedExchange::OnOpen(unsigned int product, long long time)
{
    _time = std::max(_time, time);
    Market& market = *_markets[product];
    market.isOpen = true;
    market.opens = true;
}

void nxSimulatedExchange::OnClose(unsigned int product, long long time)
{
    _time = std::max(_time, time);
    _markets[product]->isOpen = false;
}

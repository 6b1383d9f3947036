#include "host/exchange/nxSimulatedExchange.h"

#include <algorithm>
#include <cassert>
#include <limits>
#include <utility>

#include "base/time/nxTime.h"
#include "host/exchange/nxPriceDistance.h"

namespace {

using nxTime::Never;
constexpr char OtherSideFilled[] = "the other side of the bracket was filled";

}  // namespace

nxSimulatedExchange::nxSimulatedExchange(const nxExchangeOptions& options)
    : _options(options), _latencyRandom(options.seed), _peakRandom(options.seed + 1)
{
}

nxSimulatedExchange::~nxSimulatedExchange() = default;

unsigned int nxSimulatedExchange::AddProduct(const Product& product)
{
    nxBookListener& listener = *this;
    _markets.push_back(std::make_unique<Market>(product, _options.fills->rule, _peakRandom, listener));
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

void nxSimulatedExchange::_Send(nxOrderRequest kind, unsigned int order, long long now,
                                const nxOrderTerms& terms)
{
    const Request& request = _requests.Send({kind, order, 0, terms}, now + _Draw(_options.request));
    _Show(kind, order, terms, now, request.due);
}

void nxSimulatedExchange::_Show(nxOrderRequest kind, unsigned int order, const nxOrderTerms& terms,
                                long long now, long long due) const
{
    if (_observer == nullptr) return;
    const nxExchangeOrder& known = _orders.Get(order);
    const bool isNew = kind == nxOrderRequest::New;
    _observer->OnRequest(known, kind, isNew ? known.terms : terms,
                         *_markets[known.kind.product]->product.market, now, due);
}

void nxSimulatedExchange::TakeAtOnce(unsigned int reserved, const nxOrderKind& kind,
                                     const nxOrderTerms& terms, long long now)
{
    nxExchangeOrder& order = _orders.Get(reserved);
    order.kind = kind;
    order.terms = terms;
    order.arrived = _time = std::max(_time, now);
    order.status = nxOrderStatus_Working;
    _Show(nxOrderRequest::New, reserved, terms, _time, _time);
    _Tell(order, nxExchangeEvent::Kind::Accepted);
    _Start(order);
    _Settle();
}

unsigned int nxSimulatedExchange::Submit(const nxOrderKind& kind, const nxOrderTerms& terms, long long now)
{
    const unsigned int id = Reserve();
    Submit(id, kind, terms, now);
    return id;
}

void nxSimulatedExchange::Submit(unsigned int reserved, const nxOrderKind& kind, const nxOrderTerms& terms,
                                 long long now)
{
    nxExchangeOrder& order = _orders.Get(reserved);
    order.kind = kind;
    order.terms = terms;
    _Send(nxOrderRequest::New, reserved, now, {});
}

void nxSimulatedExchange::Amend(unsigned int order, const nxOrderTerms& changes, long long now)
{
    _Send(nxOrderRequest::Amend, order, now, changes);
}

void nxSimulatedExchange::Cancel(unsigned int order, long long now)
{
    _Send(nxOrderRequest::Cancel, order, now, {});
}

nxExchangeEvent& nxSimulatedExchange::_AddEvent(const nxExchangeOrder& order, nxExchangeEvent::Kind kind)
{
    nxExchangeEvent& event = _events.Send({}, _time + _Draw(_options.answer));
    event.kind = kind;
    event.order = order.id;
    event.owner = order.kind.owner;
    event.time = _time;
    event.status = order.status;
    event.price = order.terms.price;
    event.stopPrice = order.terms.stopPrice;
    event.volume = nxOrderTerms::GetOr(order.terms.volume, 0);
    event.executed = order.executed;
    event.ahead = order.isResting ? order.ahead : nxVolume();
    return event;
}

void nxSimulatedExchange::_Tell(const nxExchangeOrder& order, nxExchangeEvent::Kind kind, const char* reason)
{
    _Tell(order, kind, [reason](nxExchangeEvent& event) { event.reason = reason; });
}

void nxSimulatedExchange::_TellRefusal(const nxExchangeOrder& order, nxExchangeEvent::Kind kind,
                                       Refusal refusal)
{
    _Tell(order, kind, [&](nxExchangeEvent& event) {
        event.error = refusal.error;
        event.reason = std::move(refusal.text);
    });
}

long long nxSimulatedExchange::GetNextTime() const
{
    return std::min({_requests.GetNextTime(), _events.GetNextTime(), _expiries.GetNextTime()});
}

void nxSimulatedExchange::Advance(long long time)
{
    for (;;) {
        const long long expiry = _expiries.GetNextTime();
        const long long request = _requests.GetNextTime();
        const long long next = std::min(expiry, request);
        if (next > time || next == Never) break;
        _time = std::max(_time, next);
        if (expiry <= request) {
            _Expire();
        } else {
            _Carry(_requests.Pop());
        }
        _Settle();
    }
    _time = std::max(_time, time);
}

bool nxSimulatedExchange::PopEvent(nxExchangeEvent& event, long long time)
{
    if (!IsEventDue(time)) return false;
    event = _events.Pop();
    return true;
}

void nxSimulatedExchange::OnFill(nxExchangeOrder& order, const nxDecimal& price, unsigned int volume,
                                 bool isMaker, nxFillCause cause)
{
    _Tell(order, nxExchangeEvent::Kind::Filled, [&](nxExchangeEvent& event) {
        event.fillPrice = price;
        event.fillVolume = volume;
        event.isMaker = isMaker;
        event.cause = cause;
    });
    if (order.kind.execution == nxOrderExecution::Bracket)
        _consequences.push_back({order.id, {price, volume}});
    if (order.sibling == 0) return;
    // At once, since the same event may come to the sibling next.
    nxExchangeOrder* const known = _orders.Find(order.sibling);
    if (known == nullptr) return;
    nxExchangeOrder& sibling = *known;
    const unsigned int given = std::min(sibling.GetRemaining(), volume);
    const bool isOver = !sibling.IsAlive() && sibling.status != nxOrderStatus_Pending;
    if (isOver || given == 0) return;
    sibling.terms.volume = sibling.terms.volume.GetValue() - given;
    _consequences.push_back({sibling.id, {{}, given}});
}

void nxSimulatedExchange::OnTriggered(nxExchangeOrder& order)
{
    _Tell(order, nxExchangeEvent::Kind::Triggered);
}

void nxSimulatedExchange::OnQueueMoved(nxExchangeOrder& order, const nxVolume& before, nxQueueMove move)
{
    if (_observer != nullptr) _observer->OnQueueMove(order, before, move, _time);
    if (_options.reportQueue) _Tell(order, nxExchangeEvent::Kind::QueueMoved);
}

// Brackets: each fill of the parent makes its children, and what one child executes the other gives up.
void nxSimulatedExchange::_Settle()
{
    for (std::size_t i = 0; i < _consequences.size(); ++i) {
        const auto [id, fill] = _consequences[i];
        nxExchangeOrder& order = _orders.Get(id);
        if (order.kind.execution != nxOrderExecution::Bracket) {
            if (!order.IsAlive()) continue;
            if (order.GetRemaining() == 0) {
                _End(order, OtherSideFilled);
            } else {
                _Tell(order, nxExchangeEvent::Kind::Amended);
            }
            continue;
        }
        const unsigned int first = GetOrderCount() + 1;
        // The stop first: it protects.
        if (nxBracket::HasStop(order)) _AddChild(order, fill, true);
        if (nxBracket::HasProfit(order)) _AddChild(order, fill, false);
        const unsigned int last = GetOrderCount();
        if (last > first) {
            _orders.Get(first).sibling = last;
            _orders.Get(last).sibling = first;
        }
        for (unsigned int number = first; number <= last; ++number) {
            nxExchangeOrder& child = _orders.Get(number);
            // The stop may have been filled on entering.
            if (child.GetRemaining() == 0) {
                _End(child, OtherSideFilled);
            } else {
                _Enter(child);
            }
        }
    }
    _consequences.clear();
}

void nxSimulatedExchange::_AddChild(const nxExchangeOrder& parent, const nxBracket::Fill& fill, bool isStop)
{
    const nxDecimal& tick = _markets[parent.kind.product]->product.tickSize;
    nxExchangeOrder& child = _orders.Add();
    if (isStop) {
        nxBracket::MakeStop(child, parent, fill, tick);
    } else {
        nxBracket::MakeProfit(child, parent, fill, tick);
    }
    child.arrived = _time;
    _Tell(child, nxExchangeEvent::Kind::ChildCreated);
    _SetExpiry(child);
}

void nxSimulatedExchange::_EnterOpening(Market& market)
{
    if (!std::exchange(market.opens, false)) return;
    for (nxExchangeOrder* order : std::exchange(market.opening, {})) {
        if (order->triggered) {
            order->status = nxOrderStatus_Working;
            _Tell(*order, nxExchangeEvent::Kind::Triggered);
        }
        _Start(*order);
    }
}

void nxSimulatedExchange::_EndImmediates(Market& market, long long time)
{
    for (nxExchangeOrder* order : std::exchange(market.immediates, {})) {
        if (order->IsAlive() && order->arrived >= time) {
            market.immediates.push_back(order);
        } else if (order->IsAlive()) {
            _End(*order, _GetEndOfImmediate(*order));
        }
    }
}

void nxSimulatedExchange::OnQuote(unsigned int product, const nxFeedQuote& quote, long long time)
{
    _time = std::max(_time, time);
    Market& market = *_markets[product];
    if (!market.isOpen) return;
    market.book.OnQuote(quote);
    _EnterOpening(market);
    _Settle();
    if (_observer == nullptr) return;
    const nxMarketProduct& shown = *market.product.market;
    const nxDecimal& last = shown.GetPrice().GetLastPrice();
    const nxTraded traded{last, last, quote.lastVolume, quote.side};
    _observer->OnMarket(product, shown, quote.IsTrade() && last.IsValid() ? &traded : nullptr, time);
}

void nxSimulatedExchange::OnDepth(unsigned int product, std::span<const nxFeedLevel> levels, long long time)
{
    _time = std::max(_time, time);
    Market& market = *_markets[product];
    if (!market.isOpen) return;
    market.book.OnDepth(levels);
    _EnterOpening(market);
    _Settle();
    if (_observer != nullptr) _observer->OnMarket(product, *market.product.market, nullptr, time);
}

void nxSimulatedExchange::OnBar(unsigned int product, const nxFeedBar& bar, long long time)
{
    _time = std::max(_time, time);
    Market& market = *_markets[product];
    if (!market.isOpen) return;
    _EnterOpening(market);
    market.book.OnBar(bar, time);
    _EndImmediates(market, time);
    _Settle();
    const nxTraded traded{bar.low, bar.high, bar.volume, {}};
    if (_observer != nullptr) _observer->OnMarket(product, *market.product.market, &traded, time);
}

void nxSimulatedExchange::OnOpen(unsigned int product, long long time)
{
    _time = std::max(_time, time);
    Market& market = *_markets[product];
    if (std::exchange(market.isOpen, true)) return;
    market.opens = true;
    market.book.Resume();
}

void nxSimulatedExchange::Join(unsigned int product, long long time)
{
    _time = std::max(_time, time);
    Market& market = *_markets[product];
    market.isOpen = true;
    market.book.Join();
}

void nxSimulatedExchange::OnClose(unsigned int product, long long time)
{
    _time = std::max(_time, time);
    Market& market = *_markets[product];
    market.isOpen = market.opens = false;
}

void nxSimulatedExchange::OnEvent(unsigned int product, const nxFeedEvent& event)
{
    switch (event.kind) {
        case nxFeedKind::Quote:
            return OnQuote(product, event.quote, event.time);
        case nxFeedKind::Bar:
            return OnBar(product, event.bar, event.time);
        case nxFeedKind::Depth:
            return OnDepth(product, event.levels, event.time);
    }
}

nxDecimal nxSimulatedExchange::GetOwnBest(unsigned int product, nxSide side, unsigned int owner) const
{
    return GetBook(product).GetOwnBest(side, owner);
}

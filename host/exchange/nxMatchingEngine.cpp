#include "host/exchange/nxMatchingEngine.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr char OtherSideFilled[] = "the other side of the bracket was filled";

}  // namespace

nxMatchingEngine::nxMatchingEngine(const Options& options, nxAnswerLine& answers,
                                   const nxExchangeObservers& observers)
    : _options(options), _answers(answers), _observers(observers), _peakRandom(options.seed)
{
}

unsigned int nxMatchingEngine::AddProduct(const nxVenue::Product& product)
{
    const auto number = static_cast<unsigned int>(_markets.size());
    nxBookListener& listener = *this;
    _markets.push_back(std::make_unique<Market>(product, number, _options, _peakRandom, listener));
    if (product.isOfBars) _markets.back()->book.SetOfBars(product.barPeriod);
    _markets.back()->book.SetParticipation(_options.participation);
    return number;
}

nxLateTrades nxMatchingEngine::GetLateTrades() const
{
    nxLateTrades sum;
    for (const auto& market : _markets)
        sum += market->book.GetLateTrades();
    return sum;
}

void nxMatchingEngine::_Tell(const nxExchangeOrder& order, nxExchangeEvent::Kind kind, const char* reason)
{
    _Tell(order, kind, [reason](nxExchangeEvent& event) { event.reason = reason; });
}

void nxMatchingEngine::_TellRefusal(const nxExchangeOrder& order, nxExchangeEvent::Kind kind, Refusal refusal)
{
    _Tell(order, kind, [&](nxExchangeEvent& event) {
        event.error = refusal.error;
        event.reason = std::move(refusal.text);
    });
}

// By the square root of the lots that the order has had against those of a day. What an order costs is the
// same however many fills it has: of each the part that it adds.
nxDecimal nxMatchingEngine::_GetImpact(const nxExchangeOrder& order, const nxDecimal& price,
                                       unsigned int volume) const
{
    constexpr unsigned char places = 10;
    const nxVenue::Product& product = _markets[order.kind.product]->product;
    const nxDailyFigures& seen = product.market->GetDailyFigures();
    const double volatility =
        product.dailyVolatility.IsValid() ? product.dailyVolatility.GetAsDouble() : seen.GetVolatility();
    const double daily = product.dailyVolume.IsValid() ? product.dailyVolume.GetAsDouble() : seen.GetVolume();
    nxDecimal impact;
    if (daily <= 0 || volatility <= 0) return impact;
    const double after = order.executed;
    const double before = after - volume;
    const double sum = (after * std::sqrt(after) - before * std::sqrt(before)) / std::sqrt(daily);
    impact.SetFromDouble(_options.impact * volatility * std::abs(price.GetAsDouble()) * sum / volume, places);
    return impact;
}

void nxMatchingEngine::OnFill(nxExchangeOrder& order, const nxDecimal& price, unsigned int volume,
                              bool isMaker, nxFillCause cause)
{
    _Tell(order, nxExchangeEvent::Kind::Filled, [&](nxExchangeEvent& event) {
        event.fillPrice = price;
        event.fillVolume = volume;
        event.isMaker = isMaker;
        event.cause = cause;
        if (_options.impact > 0 && !isMaker && cause != nxFillCause::OwnOrder) [[unlikely]]
            event.impact = _GetImpact(order, price, volume);
        // Whatever filled it has used up what was in front of it.
        if (event.ahead.IsValid()) event.ahead = 0;
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

void nxMatchingEngine::OnTriggered(nxExchangeOrder& order)
{
    _Tell(order, nxExchangeEvent::Kind::Triggered);
}

void nxMatchingEngine::OnQueueMoved(nxExchangeOrder& order, const nxVolume& before, nxQueueMove move)
{
    for (nxExchangeObserver* observer : _observers)
        observer->OnQueueMove(order, before, move, _time);
    if (_options.reportsQueue) _Tell(order, nxExchangeEvent::Kind::QueueMoved);
}

void nxMatchingEngine::OnSelfTrade(nxExchangeOrder& order, const nxExchangeOrder& other)
{
    const Refusal refusal = nxOrderChecks::GetSelfTrade(other.id);
    _End(order, refusal.text, false, refusal.error);
}

// Brackets: each fill of the parent makes its children, and what one child executes the other gives up.
void nxMatchingEngine::_Settle()
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
        const unsigned int first = _orders.GetCount() + 1;
        // The stop first: it protects.
        if (nxBracket::HasStop(order)) _AddChild(order, fill, true);
        if (nxBracket::HasProfit(order)) _AddChild(order, fill, false);
        const unsigned int last = _orders.GetCount();
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

void nxMatchingEngine::_AddChild(const nxExchangeOrder& parent, const nxBracket::Fill& fill, bool isStop)
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

void nxMatchingEngine::_EnterOpening(Market& market)
{
    if (!std::exchange(market.opens, false)) return;
    for (nxExchangeOrder* order : std::exchange(market.opening, {})) {
        // The other child of its bracket was filled just now.
        if (order->GetRemaining() == 0) continue;
        if (order->triggered) {
            order->status = order->executed == 0 ? nxOrderStatus_Working : nxOrderStatus_PartiallyFilled;
            _Tell(*order, nxExchangeEvent::Kind::Triggered);
        }
        // The market shows the end of the bar that a stop of bars is about to meet.
        if (!order->triggered && market.book.IsOfBars()) {
            market.book.AddStop(*order);
        } else {
            _Start(*order);
        }
    }
}

void nxMatchingEngine::_EndImmediates(Market& market, long long time)
{
    if (market.immediates.empty()) return;
    for (nxExchangeOrder* order : std::exchange(market.immediates, {})) {
        if (order->IsAlive() && order->arrived >= time) {
            market.immediates.push_back(order);
        } else if (order->IsAlive()) {
            _End(*order, nxOrderChecks::GetEndOfImmediate(*order));
        }
    }
}

void nxMatchingEngine::_ShowMarket(const Market& market, const nxTraded* traded, long long time)
{
    for (nxExchangeObserver* observer : _observers)
        observer->OnMarket(market.number, *market.product.market, traded, time);
}

void nxMatchingEngine::_OnQuote(Market& market, const nxFeedQuote& quote, long long time)
{
    market.book.OnQuote(quote, time);
    _EnterOpening(market);
    _Settle();
    const nxDecimal& last = market.product.market->GetPrice().GetLastPrice();
    if (!quote.IsTrade() || !last.IsValid()) return _ShowMarket(market, nullptr, time);
    const nxTraded traded{last, last, quote.lastVolume, quote.side};
    _ShowMarket(market, &traded, time);
}

void nxMatchingEngine::_OnDepth(Market& market, std::span<const nxFeedLevel> levels, long long time)
{
    market.book.OnDepth(levels, time);
    _EnterOpening(market);
    _Settle();
    _ShowMarket(market, nullptr, time);
}

void nxMatchingEngine::_OnBar(Market& market, const nxFeedBar& bar, long long time)
{
    _EnterOpening(market);
    _SetDays(market, time);
    market.book.OnBar(bar, time);
    _EndImmediates(market, time);
    _Settle();
    const nxTraded traded{bar.low, bar.high, bar.volume, {}};
    _ShowMarket(market, &traded, time);
}

void nxMatchingEngine::OnOpen(unsigned int product, long long time)
{
    AdvanceTo(time);
    Market& market = *_markets[product];
    if (std::exchange(market.isOpen, true)) return;
    market.opens = true;
    market.book.Resume();
}

void nxMatchingEngine::Join(unsigned int product, long long time)
{
    AdvanceTo(time);
    Market& market = *_markets[product];
    market.isOpen = true;
    market.book.Join();
}

void nxMatchingEngine::OnClose(unsigned int product, long long time)
{
    AdvanceTo(time);
    Market& market = *_markets[product];
    if (!market.product.IgnoresHours()) market.isOpen = market.opens = false;
}

void nxMatchingEngine::EndOrders(unsigned int product, const char* reason, long long time)
{
    AdvanceTo(time);
    Market& market = *_markets[product];
    for (unsigned int id = 1; id <= _orders.GetCount(); ++id) {
        nxExchangeOrder* const order = _orders.Find(id);
        if (order != nullptr && order->kind.product == product && order->IsAlive()) _End(*order, reason);
    }
    _Settle();
    if (std::exchange(market.isOpen, false)) OnOpen(product, time);
}

void nxMatchingEngine::OnEvent(unsigned int product, const nxFeedEvent& event)
{
    AdvanceTo(event.time);
    Market& market = *_markets[product];
    if (!market.isOpen && market.product.IgnoresHours()) OnOpen(product, event.time);
    if (!market.isOpen) return;
    switch (event.kind) {
        case nxFeedKind::Quote:
            return _OnQuote(market, event.quote, event.time);
        case nxFeedKind::Bar:
            return _OnBar(market, event.bar, event.time);
        case nxFeedKind::Depth:
            return _OnDepth(market, event.levels, event.time);
    }
}

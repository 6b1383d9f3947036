// The exchange of a run: how it comes to be with the first order, and how its answers reach the scripts.

#include <algorithm>
#include <limits>

#include "host/feed/nxFeedTime.h"
#include "host/run/nxReplayServer.h"

namespace {

using Kind = nxExchangeEvent::Kind;
using UpdateEntry = nxErrorEnum (nxAlgoJobObject::*)(nxAlgoOrderUpdateObject&);

// What a script hears of an order, by event. A fill and a child have more to them.
constexpr struct
{
    Kind kind;
    nxCallback callback;
    UpdateEntry entry;
} AnswerEntries[] = {
    {Kind::Accepted, nxCallback::OnOrderWorking, &nxAlgoJobObject::OnOrderWorking},
    {Kind::Triggered, nxCallback::OnOrderWorking, &nxAlgoJobObject::OnOrderWorking},
    {Kind::Amended, nxCallback::OnOrderWorking, &nxAlgoJobObject::OnOrderWorking},
    {Kind::Filled, nxCallback::OnOrderFill, &nxAlgoJobObject::OnOrderFill},
    {Kind::Cancelled, nxCallback::OnOrderCancelled, &nxAlgoJobObject::OnOrderCancelled},
    {Kind::Rejected, nxCallback::OnOrderRejected, &nxAlgoJobObject::OnOrderRejected},
    {Kind::AmendRejected, nxCallback::OnOrderAmendRejected, &nxAlgoJobObject::OnOrderAmendRejected},
    {Kind::CancelRejected, nxCallback::OnOrderCancelRejected, &nxAlgoJobObject::OnOrderCancelRejected},
};

}  // namespace

// A run without orders has no exchange, and does nothing for it.
void nxReplayServer::_OpenExchange()
{
    nxExchangeOptions options = _options.exchange;
    options.reportQueue = std::ranges::any_of(_runners, [](const auto& runner) {
        return runner->GetJob().GetObject().IsFunctionDefined(
            nxGetCallbackName(nxCallback::OnOrderQPosition));
    });
    _exchange.emplace(options);
    if (!_options.explain.empty()) {
        _stories.emplace(_options.explain, [this](const nxExchangeOrder& order, const nxExchangeEvent& fill) {
            const auto& market = *std::ranges::find_if(_markets, [&](const auto& known) {
                return known != nullptr && known->exchangeProduct == order.kind.product;
            });
            return market->none.GetFee(fill.fillPrice, fill.fillVolume, fill.isMaker);
        });
        _exchange->SetObserver(&*_stories);
    }
    _nextDay = nxFeedTime::GetNextMidnight(_time.Get());
    for (const auto& market : _markets)
        if (market != nullptr) _AddToExchange(*market);
}

void nxReplayServer::_AddToExchange(Market& market)
{
    const nxFeedProduct* known = _feed.GetProducts().Find(market.product.GetName());
    const bool isOfBars = known != nullptr && known->Has(nxFeedKind::Bar);
    market.exchangeProduct =
        _exchange->AddProduct({&market.product, market.tickSize, market.hours, isOfBars});
    if (market.product.GetState().GetValue() != nxAlgoStateObject::Open) return;
    if (market.isFresh) {
        _exchange->OnOpen(market.exchangeProduct, _time.Get());
    } else {
        _exchange->Join(market.exchangeProduct, _time.Get());
    }
}

unsigned int nxReplayServer::ReserveOrder()
{
    if (!_exchange) _OpenExchange();
    return _exchange->Reserve();
}

unsigned int nxReplayServer::GetExchangeProduct(const nxHostProduct& product)
{
    return _GetMarketOf(product).exchangeProduct;
}

void nxReplayServer::_AddFill(nxHostOrder& order, const nxExchangeEvent& fill)
{
    nxHostProduct& product = order.GetHostProduct();
    Market& market = _GetMarketOf(product);
    const nxSide side = order.GetKind().side;
    order.GetOwner().AddFill(product, side, fill);
    market.everybody.AddFill(side, fill.fillPrice, fill.fillVolume, fill.isMaker);
    if (std::ranges::find(market.traded, &product) == market.traded.end()) market.traded.push_back(&product);
    for (const auto& runner : _runners) {
        const auto known = runner->GetJob().GetProducts().find(market.product.GetName());
        if (known == runner->GetJob().GetProducts().end()) continue;
        known->second->ShowPosition(market.everybody);
        if (known->second->Wants(nxMarketEvent::Position))
            _positions.emplace_back(runner.get(), known->second.get());
    }
}

// What is open follows the market, for the largest fall of the profit.
void nxReplayServer::_Revalue(Market& market)
{
    for (nxHostProduct* product : market.traded)
        if (product->GetAccount().GetKeeper().GetNet() != 0) product->GetOwner().Revalue(*product);
}

// Days of the accounts are those of the market's figures, in UTC.
void nxReplayServer::_BeginDay(long long time)
{
    for (const auto& market : _markets) {
        if (market == nullptr) continue;
        market->everybody.BeginDay(market->product.GetPrice());
        for (const auto& runner : _runners) {
            const auto known = runner->GetJob().GetProducts().find(market->product.GetName());
            if (known == runner->GetJob().GetProducts().end()) continue;
            known->second->GetAccount().BeginDay(market->product.GetPrice());
            known->second->ShowPosition(market->everybody);
        }
    }
    _nextDay = nxFeedTime::GetNextMidnight(time);
}

void nxReplayServer::NoteOrder(nxHostOrder& order)
{
    const unsigned int id = order.GetID();
    if (id >= _ordersByNumber.size()) _ordersByNumber.resize(id + 1);
    _ordersByNumber[id] = &order;
    _orders.push_back(&order);
}

nxHostOrder* nxReplayServer::FindOrder(unsigned int id)
{
    return id < _ordersByNumber.size() ? _ordersByNumber[id] : nullptr;
}

// What the market did meets the orders in it, and what that leads to is told before the event itself.
void nxReplayServer::_TellExchange(Market& market, const nxFeedEvent& event)
{
    switch (event.kind) {
        case nxFeedKind::Quote:
            _exchange->OnQuote(market.exchangeProduct, event.quote, event.time);
            break;
        case nxFeedKind::Bar:
            _exchange->OnBar(market.exchangeProduct, event.bar, event.time);
            break;
        case nxFeedKind::Depth:
            _exchange->OnDepth(market.exchangeProduct, event.levels, event.time);
            break;
    }
    _Revalue(market);
    _RunExchange();
}

void nxReplayServer::_RunExchange()
{
    // What comes inside a callback's aftermath is for the loop that is under way.
    if (!_isSettling && _exchange->GetNextTime() <= _time.Get()) _DeliverNews();
}

bool nxReplayServer::_IsAnswerDue()
{
    if (!_exchange) return false;
    if (_answer) return true;
    _exchange->Advance(_time.Get());
    return _exchange->IsEventDue(_time.Get()) && _exchange->PopEvent(_answer.emplace(), _time.Get());
}

nxHostOrder& nxReplayServer::_ApplyAnswer(const nxExchangeEvent& event)
{
    if (event.kind == Kind::ChildCreated) {
        const nxExchangeOrder& child = _exchange->GetOrder(event.order);
        nxHostOrder& parent = *FindOrder(child.parent);
        parent.GetOwner().AddChild(child, parent);
    }
    nxHostOrder& order = *FindOrder(event.order);
    order.Apply(event);
    if (event.kind == Kind::Filled) _AddFill(order, event);
    return order;
}

void nxReplayServer::_DeliverAnswer()
{
    const nxExchangeEvent event = std::move(*_answer);
    _answer.reset();
    nxHostOrder& order = _ApplyAnswer(event);
    nxHostJob& job = order.GetOwner();
    nxJobRunner& runner = _GetRunner(job);
    if (runner.IsOver()) _Flatten(job);
    if (!event.error.IsSuccess()) {
        const char* const what = event.kind == Kind::Rejected        ? "is rejected: "
                                 : event.kind == Kind::AmendRejected ? "is not amended: "
                                                                     : "is not pulled: ";
        job.SetError(event.reason);
        LogText(job, "order " + std::to_string(event.order) + " " + what + event.reason);
    }
    const auto tell = [&](nxCallback callback, UpdateEntry entry) {
        if (!runner.IsOver() && runner.Defines(callback))
            _Call(callback, runner, entry, order.GetUpdate(event));
    };
    if (event.kind == Kind::ChildCreated) {
        _Deliver(nxCallback::OnOrderNew, runner, &nxAlgoJobObject::OnOrderNew, order);
    } else if (event.kind == Kind::QueueMoved) {
        _Deliver(nxCallback::OnOrderQPosition, runner, &nxAlgoJobObject::OnOrderQPosition, order);
    } else {
        const auto known = std::ranges::find_if(
            AnswerEntries, [&](const auto& candidate) { return candidate.kind == event.kind; });
        tell(known->callback, known->entry);
    }
    if (event.kind == Kind::Filled && event.status == nxOrderStatus_Filled)
        tell(nxCallback::OnOrderCompleted, &nxAlgoJobObject::OnOrderCompleted);
}

// What was on its way to the scripts when the run ended counts, though nobody hears of it.
void nxReplayServer::_TakeLastAnswers()
{
    if (!_exchange) return;
    if (_answer) _ApplyAnswer(*std::exchange(_answer, std::nullopt));
    nxExchangeEvent event;
    while (_exchange->PopEvent(event, std::numeric_limits<long long>::max()))
        _ApplyAnswer(event);
}

// Of a job that ends while the others go on.
void nxReplayServer::_PullOrders(nxHostJob& job)
{
    if (_IsEnding() || !_exchange) return;
    for (const auto& order : job.GetOwnOrders())
        if (order->IsOpen() && (!job.ShattersOnExit() || order->GetHostProduct().FlattensOnExit()))
            static_cast<void>(order->Pull());
    _Flatten(job);
}

// Closes what is left of a job that has ended, once nothing of it is in the market; tried once.
void nxReplayServer::_Flatten(nxHostJob& job)
{
    for (const auto& [name, product] : job.GetProducts())
        if (product->FlattensOnExit() && product->GetClosingOrders().empty() && !job.HasOpenOrders(*product))
            job.Close(*product, false);
}

// Why a position cannot be closed by what is shown at the end of the run; null when it can.
const char* nxReplayServer::_FindNoExit(nxHostProduct& product)
{
    const Market& market = _GetMarketOf(product);
    if (_exchange->GetBook(market.exchangeProduct).IsOfBars()) return "bars show no book";
    // Without hours it is only the end of the data that closed it.
    if (!market.hours.IsEmpty() && (!market.hours.IsOpen(_time.Get()) || market.isFresh))
        return "the market is closed";
    return nullptr;
}

void nxReplayServer::_FlattenAtEnd()
{
    if (!_exchange) return;
    for (const auto& runner : _runners)
        for (const auto& [name, product] : runner->GetJob().GetProducts())
            if (product->FlattensOnExit() && _FindNoExit(*product) == nullptr)
                runner->GetJob().Close(*product, true);
    _TakeLastAnswers();
    for (const auto& market : _markets)
        if (market != nullptr) _Revalue(*market);
    for (const auto& runner : _runners)
        runner->GetStatistics().exits = runner->GetJob().DescribeExits([this](nxHostProduct& product) {
            const char* const why = _FindNoExit(product);
            return std::string(why == nullptr ? "the book showed no more" : why);
        });
}

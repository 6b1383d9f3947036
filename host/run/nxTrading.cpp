#include "host/run/nxTrading.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>

#include "host/feed/nxFeedTime.h"

nxTrading::nxTrading(nxRunState& state, const nxRunClock& clock, nxRunOutput& output, nxRunResults& results,
                     nxJobList& jobs, const nxEventSource& source, nxSchedule& schedule, MakeVenue makeVenue)
    : _state(state),
      _clock(clock),
      _output(output),
      _results(results),
      _jobs(jobs),
      _source(source),
      _schedule(schedule),
      _ledger(&results.GetCollector()),
      _record(output, state, _ledger, results.GetCollector()),
      _makeVenue(std::move(makeVenue))
{
    _schedule.SetTask(nxDue::Venue, [this] {
        _isAmongBars = false;
        _jobs.GetSettler().Run();
        _Reschedule();
    });
}

void nxTrading::_Reschedule()
{
    _schedule.Set(nxDue::Venue, _venue->GetNextTime());
}

void nxTrading::_Open()
{
    if (!_state.options.explain.empty())
        _stories.emplace(_state.options.explain, [this](const nxExchangeOrder&, const nxExchangeEvent&) {
            return _ledger.GetLastFee();
        });
    const bool reportQueue = std::ranges::any_of(_jobs, [](const auto& runner) {
        return runner->GetJob().GetObject().IsFunctionDefined(
            nxGetCallbackName(nxCallback::OnOrderQPosition));
    });
    nxExchangeObservers observers{&_ledger};
    if (_output.IsRecording()) observers.push_back(&_record);
    observers.push_back(&_results.GetCollector());
    if (_stories) observers.push_back(&*_stories);
    if (_state.options.capital.IsValid() && _state.options.margin != nxMarginRule::Off)
        observers.push_back(&_margin.emplace(_ledger, _state.options.capital, _state.options.margin));
    _venue = _makeVenue(reportQueue, std::move(observers));
    if (_margin) _venue->SetGate(*_margin);
    for (Market& market : _markets)
        if (market.market != nullptr) _AddToVenue(market);
    _Reschedule();
}

void nxTrading::AddMarket(nxMarket& market)
{
    if (market.index >= _markets.size()) _markets.resize(market.index + 1);
    Market& added = _markets[market.index];
    added.market = &market;
    const nxProductAccount none(market.description);
    added.accounts = std::make_unique<Accounts>(Accounts{none, none});
    if (_venue != nullptr) _AddToVenue(added);
}

bool nxTrading::_IsOfBars(const nxMarket& market) const
{
    const nxFeedProduct* const known = _source.GetProducts().Find(market.product.GetName());
    return known != nullptr && known->Has(nxFeedKind::Bar);
}

void nxTrading::_AddToVenue(Market& added)
{
    const nxMarket& market = *added.market;
    const nxFeedProduct* const known = _source.GetProducts().Find(market.product.GetName());
    const nxVenue::Product product{&market.GetAtVenue(),
                                   market.tickSize,
                                   market.GetHours(),
                                   _IsOfBars(market),
                                   known != nullptr ? known->GetBarPeriod() : 0,
                                   market.description.dailyVolatility,
                                   market.description.dailyVolume};
    added.venueProduct = _venue->AddProduct(product);
    _ledger.AddProduct(added.accounts->none, market.GetAtVenue());
    _results.GetCollector().AddProduct(added.accounts->none, market.GetAtVenue());
    _results.AddProduct(market);
    if (_margin) _margin->AddProduct(market.description, market.GetAtVenue());
    _record.WriteProduct(market, product, _clock.Get());
    const bool isOpen =
        product.IgnoresHours() ? !market.isFresh : market.product.GetState() == nxAlgoStateObject::Open;
    if (!isOpen) return;
    if (market.isFresh) {
        _venue->OnOpen(added.venueProduct, _clock.Get());
    } else {
        _venue->Join(added.venueProduct, _clock.Get());
    }
    _Reschedule();
}

void nxTrading::OpenAccount(nxHostProduct& product)
{
    const Market& market = _markets[product.GetMarketIndex()];
    product.SetAccount(market.accounts->none);
    product.ShowPosition(market.accounts->everybody);
}

void nxTrading::TakeTickSize(const nxMarket& market)
{
    if (_venue != nullptr) _venue->SetTickSize(_markets[market.index].venueProduct, market.tickSize);
}

void nxTrading::OnMarketState(const nxMarket& market)
{
    if (_venue == nullptr) return;
    const unsigned int product = _markets[market.index].venueProduct;
    if (market.product.GetState() == nxAlgoStateObject::Open) {
        _venue->OnOpen(product, _clock.Get());
    } else {
        _venue->OnClose(product, _clock.Get());
    }
    _Reschedule();
}

void nxTrading::OnEvent(const nxMarket& market, const nxFeedEvent& event)
{
    _results.OnMarket(market, event.time);
    if (_venue == nullptr) return;
    _isAmongBars = event.kind == nxFeedKind::Bar;
    const unsigned int product = _markets[market.index].venueProduct;
    nxResultCollector& collector = _results.GetCollector();
    collector.BeginRow(product, event.time);
    _venue->OnEvent(product, event);
    _ledger.Mark(product, _isAmongBars ? &event.bar : nullptr);
    collector.EndRow(product);
    if (_margin) [[unlikely]]
        _margin->Look(product, _clock.Get());
    _Reschedule();
}

unsigned int nxTrading::ReserveOrder()
{
    if (_venue == nullptr) _Open();
    return _venue->Reserve();
}

void nxTrading::NoteOrder(nxHostOrder& order)
{
    _orders.push_back(&order);
    if (order.GetID() != _orders.size()) _displaced[order.GetID()] = &order;
}

nxHostOrder* nxTrading::FindOrder(unsigned int id)
{
    if (id != 0 && id <= _orders.size() && _orders[id - 1]->GetID() == id) return _orders[id - 1];
    const auto found = _displaced.find(id);
    return found == _displaced.end() ? nullptr : found->second;
}

void nxTrading::NoteRequest(const nxHostOrder& order)
{
    _chains.NoteRequest(order.GetID(), order.GetOwner().GetIndex());
    _jobs.NoteUnsettled();
    _Reschedule();
}

nxTradingStatistics nxTrading::GetStatistics(const nxTradingJob& job) const
{
    nxTradingStatistics statistics = _ledger.GetStatistics(job.GetIndex());
    std::vector<unsigned long long> sent(_markets.size());
    for (const nxHostOrder& order : job.GetOwnOrders())
        if (order.GetTicket().IsSent()) ++sent[order.GetHostProduct().GetMarketIndex()];
    for (std::size_t i = 0; i < sent.size(); ++i) {
        statistics.orders += sent[i];
        if (sent[i] != 0 && _IsOfBars(*_markets[i].market)) statistics.barOrders += sent[i];
    }
    return statistics;
}

void nxTrading::_AddFill(nxHostOrder& order, const nxExchangeEvent& fill)
{
    nxHostProduct& product = order.GetHostProduct();
    Market& market = _markets[product.GetMarketIndex()];
    const nxSide side = order.GetTicket().GetSide();
    market.accounts->everybody.AddFill(side, fill, product.GetAccount().AddFill(side, fill));
    _ShowPositions(market);
}

void nxTrading::_ShowPositions(const Market& market)
{
    for (const auto& runner : _jobs) {
        nxHostProduct* const known = runner->GetJob().FindProduct(market.market->product.GetName());
        if (known == nullptr) continue;
        known->ShowPosition(market.accounts->everybody);
        if (known->Wants(nxMarketEvent::Position)) _positions.emplace_back(runner.get(), known);
    }
}

void nxTrading::AddPositionNews(nxJobRunner& runner, nxHostProduct& product)
{
    _positions.emplace_back(&runner, &product);
    _jobs.NoteUnsettled();
}

void nxTrading::DeliverPositions()
{
    for (; !_positions.empty() && !_state.IsEnding(); _positions.pop_front()) {
        const auto [runner, product] = _positions.front();
        _jobs.Deliver(nxCallback::OnPosition, *runner, &nxAlgoJobObject::OnPosition,
                      product->GetPositionEvent());
    }
}

long long nxTrading::_GetDayEnd(long long time, bool isBar)
{
    return nxFeedTime::GetNextMidnight(isBar ? nxTime::GetEarlier(time, 1) : time);
}

void nxTrading::_EndDay()
{
    if (_nextDay != nxTime::Never) _results.EndDay(nxFeedTime::GetDay(nxTime::GetEarlier(_nextDay, 1)));
}

void nxTrading::BeginDay(long long time, bool isBar)
{
    _EndDay();
    for (Market& market : _markets) {
        if (market.market == nullptr) continue;
        const nxMarketProduct& shown = market.market->product;
        market.accounts->everybody.BeginDay(shown.GetPrice());
        for (const auto& runner : _jobs) {
            nxHostProduct* const product = runner->GetJob().FindProduct(shown.GetName());
            if (product == nullptr) continue;
            product->GetAccount().BeginDay(shown.GetPrice());
            product->ShowPosition(market.accounts->everybody);
        }
    }
    _nextDay = _GetDayEnd(time, isBar);
}

void nxTrading::PullOrders(nxTradingJob& job)
{
    if (_state.IsEnding() || _venue == nullptr) return;
    for (nxHostOrder& order : job.GetOwnOrders())
        if (order.GetTicket().IsOpen() && (!job.ShattersOnExit() || order.GetHostProduct().FlattensOnExit()))
            static_cast<void>(order.Pull());
    _Flatten(job);
}

// Closes what is left of a job that has ended, once nothing of it is in the market; tried once.
void nxTrading::_Flatten(nxTradingJob& job)
{
    for (const auto& [name, product] : job.GetProducts())
        if (product->FlattensOnExit() && product->GetClosingOrders().empty() && !job.HasOpenOrders(*product))
            job.ClosePosition(*product, false);
}

void nxTrading::Finish()
{
    if (_venue != nullptr) {
        _TakeLastAnswers();
        _FlattenAtEnd();
    }
    _EndDay();
    _results.GetCollector().Finish(_state.statistics.lastTime);
}

// Why a position cannot be closed by what is shown at the end of the run; null when it can.
const char* nxTrading::_FindNoExit(const nxHostProduct& product) const
{
    const nxMarket& market = *_markets[product.GetMarketIndex()].market;
    if (_IsOfBars(market)) return "bars show no book";
    // Without hours it is only the end of the data that closed it.
    if (!market.GetHours().IsEmpty() && (!market.GetHours().IsOpen(_clock.Get()) || market.isFresh))
        return "the market is closed";
    return nullptr;
}

void nxTrading::_FlattenAtEnd()
{
    for (const auto& runner : _jobs)
        for (const auto& [name, product] : runner->GetJob().GetProducts())
            if (product->FlattensOnExit() && _FindNoExit(*product) == nullptr)
                runner->GetJob().ClosePosition(*product, true);
    _TakeLastAnswers();
    _ledger.Settle();
    for (const auto& runner : _jobs)
        runner->GetStatistics().exits = runner->GetJob().DescribeExits([this](const nxHostProduct& product) {
            const char* const why = _FindNoExit(product);
            return std::string(why == nullptr ? "the book showed no more" : why);
        });
}

std::vector<std::string> nxTrading::GetMarginNotes(const nxTradingJob& job) const
{
    return _margin ? _margin->GetNotes(job.GetIndex()) : std::vector<std::string>();
}

void nxTrading::WriteStories()
{
    if (_state.options.explain.empty()) return;
    std::vector<std::string> names;
    for (const nxJobOptions& job : _state.options.jobs)
        names.push_back(job.name);
    // In a run without orders there is nobody yet to tell that there are none.
    if (!_stories) _stories.emplace(_state.options.explain, nullptr);
    const unsigned int orders = _venue != nullptr ? _venue->GetOrderCount() : 0;
    if (!_stories->Write(_output.GetOut(), _output.GetErr(), orders, names)) _state.NoteScriptFailure();
    _output.GetOut().flush();
}

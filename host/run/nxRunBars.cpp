#include "host/run/nxRunBars.h"

#include <algorithm>

#include "host/run/nxFeedArrivals.h"

nxRunBars::nxRunBars(const nxRunState& state, const nxRunClock& clock, nxRunOutput& output, nxJobList& jobs,
                     nxMarkets& markets, const nxRecordedEvents& source, nxSchedule& schedule)
    : _state(state),
      _clock(clock),
      _output(output),
      _jobs(jobs),
      _markets(markets),
      _source(source),
      _schedule(schedule)
{
    _schedule.SetTask(nxDue::BarEnd, [this] { _Close(); });
}

// A callback may make and attach collections, but a collection goes only with its job: none does while the
// loop is under way, and those that come hear of the event by their history.
void nxRunBars::Feed(const nxMarket& market, const nxFeedEvent& event)
{
    ++_applied;
    if (market.index >= _collections.size()) return;
    const std::size_t count = _collections[market.index].size();
    for (std::size_t i = 0; i < count && !_state.IsEnding(); ++i) {
        nxHostTickDataCollection& collection = *_collections[market.index][i];
        if (_jobs.Get(collection.GetHostProduct().GetOwner()).IsOver()) continue;
        collection.Feed(event);
        _schedule.SetEarlier(nxDue::BarEnd, collection.GetDue());
    }
}

void nxRunBars::_Close()
{
    long long next = nxTime::Never;
    for (const Collections& collections : _collections) {
        for (nxHostTickDataCollection* collection : collections) {
            collection->Close(_clock.Get());
            next = std::min(next, collection->GetDue());
        }
    }
    _schedule.Set(nxDue::BarEnd, next);
}

const nxBarTerms* nxRunBars::FindBarTerms(const std::string& period) const
{
    const auto terms = _state.options.namedBars.find(period);
    return terms == _state.options.namedBars.end() ? nullptr : &terms->second;
}

nxBarOrigin nxRunBars::GetBarOrigin(const nxHostProduct& product)
{
    nxBarOrigin origin;
    origin.rowDelay = _state.options.feedLatency.most;
    origin.hours = _markets.Get(product.GetMarketIndex()).GetHours();
    if (const nxFeedProduct* known = _source.GetProducts().Find(product.GetMarket().GetName())) {
        origin.rowsBearStart = known->DoBarsBearStart();
        origin.hasRows = known->Has(nxFeedKind::Bar);
        origin.hasTrades = known->Has(nxFeedKind::Quote);
        origin.rowPeriod = known->GetBarPeriod();
    }
    return origin;
}

void nxRunBars::ReadHistory(const nxHostProduct& product, const std::function<void(const nxFeedEvent&)>& take)
{
    if (_applied == 0) return;
    const std::string& name = product.GetMarket().GetName();
    if (const std::string* path = _source.FindReadOnce()) {
        _output.LogText(product.GetOwner(),
                        "the bars of " + name + " begin now: " + *path + " cannot be read again");
        return;
    }
    nxFeedArrivals arrivals(_state.options);
    _source.ReadAgain(_applied, [&](const nxFeedEvent& event, const std::string& of) {
        nxFeedEvent shown = event;
        shown.time = arrivals.GetTimeOf(event, arrivals.GetNext(event.time));
        if (of == name) take(shown);
    });
}

void nxRunBars::AttachCollection(nxHostTickDataCollection& collection)
{
    const unsigned int index = collection.GetHostProduct().GetMarketIndex();
    if (index >= _collections.size()) _collections.resize(index + 1);
    _collections[index].push_back(&collection);
    _schedule.SetEarlier(nxDue::BarEnd, collection.GetDue());
}

void nxRunBars::DetachCollection(nxHostTickDataCollection& collection)
{
    std::erase(_collections[collection.GetHostProduct().GetMarketIndex()], &collection);
}

void nxRunBars::DeliverTickData(nxLaunchedJob& job, nxAlgoTickDataObject& tick)
{
    _jobs.Deliver(nxCallback::OnTickData, _jobs.Get(job), &nxAlgoJobObject::OnTickData, tick);
}

void nxRunBars::DeliverWindow(nxLaunchedJob& job, nxAlgoEventWindowObject& window)
{
    if (!_state.IsEnding())
        _jobs.Deliver(nxCallback::OnTradeWindowEvent, _jobs.Get(job), &nxAlgoJobObject::OnEventWindow,
                      window);
}

// Tick data collections: what they are fed, and when their bars end.

#include <algorithm>
#include <filesystem>

#include "host/run/nxReplayServer.h"

// A callback may make and attach collections, but a collection goes only with its job: none does while the
// loop is under way, and those that come hear of the event by their history.
void nxReplayServer::_FeedCollections(Market& market, const nxFeedEvent& event)
{
    ++_applied;
    const std::size_t count = market.collections.size();
    for (std::size_t i = 0; i < count && !_IsEnding(); ++i) {
        nxHostTickDataCollection& collection = *market.collections[i];
        if (_GetRunner(collection.GetHostProduct().GetOwner()).IsOver()) continue;
        collection.Feed(event);
        _nextBarEnd = std::min(_nextBarEnd, collection.GetDue());
    }
}

void nxReplayServer::_CloseBars()
{
    _nextBarEnd = nxTimerQueue::Never;
    for (const auto& market : _markets) {
        if (market == nullptr) continue;
        for (nxHostTickDataCollection* collection : market->collections) {
            collection->Close(_time.Get());
            _nextBarEnd = std::min(_nextBarEnd, collection->GetDue());
        }
    }
}

nxBarOrigin nxReplayServer::GetBarOrigin(const nxHostProduct& product)
{
    nxBarOrigin source;
    source.rowsBearStart = _options.barsBearStart;
    source.hours = _GetMarketOf(product).hours;
    if (const nxFeedProduct* known = _feed.GetProducts().Find(product.GetMarket().GetName())) {
        source.hasRows = known->Has(nxFeedKind::Bar);
        source.hasTrades = known->Has(nxFeedKind::Quote);
        source.rowPeriod = known->GetBarPeriod();
    }
    return source;
}

void nxReplayServer::ReadHistory(const nxHostProduct& product,
                                 const std::function<void(const nxFeedEvent&)>& take)
{
    if (_applied == 0) return;
    const std::string& name = product.GetMarket().GetName();
    for (const std::string& path : _options.data) {
        std::error_code ignored;
        if (std::filesystem::is_regular_file(path, ignored)) continue;
        LogText(product.GetOwner(), "the bars of " + name + " begin now: " + path + " cannot be read again");
        return;
    }
    nxFeed feed({_options.lenient, _options.barsBearStart, _options.barPeriods});
    if (!feed.Open(_options.data, nxGetFeedTerms(_options.products))) return;
    for (unsigned long long i = 0; i < _applied; ++i) {
        const nxFeedEvent* const event = feed.Next();
        if (event == nullptr) return;
        if (feed.GetProducts().Get(event->product).GetName() == name) take(*event);
    }
}

void nxReplayServer::AttachCollection(nxHostTickDataCollection& collection)
{
    _GetMarketOf(collection.GetHostProduct()).collections.push_back(&collection);
    _nextBarEnd = std::min(_nextBarEnd, collection.GetDue());
}

void nxReplayServer::DetachCollection(nxHostTickDataCollection& collection)
{
    std::erase(_GetMarketOf(collection.GetHostProduct()).collections, &collection);
}

void nxReplayServer::DeliverTickData(nxHostJob& job, nxAlgoTickDataObject& tick)
{
    _Deliver(nxCallback::OnTickData, _GetRunner(job), &nxAlgoJobObject::OnTickData, tick);
}

#pragma once

#include <vector>

#include "host/jobs/nxMarketServices.h"
#include "host/market/nxMarkets.h"
#include "host/run/nxJobList.h"
#include "host/run/nxTrading.h"

// An event of a market on its way to the jobs that subscribed to it, in the order of the jobs. Used on the
// run's thread.
class nxDelivery : public nxMarketServices
{
public:
    // All outlive it.
    nxDelivery(const nxRunState& state, const nxRunClock& clock, nxJobList& jobs, nxMarkets& markets,
               nxTrading& trading)
        : _state(state), _clock(clock), _jobs(jobs), _markets(markets), _trading(trading)
    {
    }

    // Shows the latest event's trade to those that follow the traded volumes, before anybody hears of the
    // event, so that all see the same.
    void UpdateTradeVolumes(const nxMarket& market);
    // To the trade windows, which come before OnPrice so that it finds the trade in them.
    void DeliverTrade(const nxMarket& market);
    void DeliverPrice(const nxMarket& market);
    void DeliverDepth(const nxMarket& market);
    void DeliverTradeVolumes(const nxMarket& market);
    void DeliverState(const nxMarket& market);
    // The market's tick size is another one; to every job that has asked for the product, subscribed to or
    // not.
    void TakeTickSize(const nxMarket& market);

    const nxMarket* FindMarket(const std::string& name) override { return _markets.Find(name, _clock.Get()); }
    void NoteProduct(nxHostProduct& product) override { _trading.OpenAccount(product); }
    void NoteUnknownProduct(nxLaunchedJob& job, const std::string& name) override
    {
        _jobs.Get(job).unknownProduct = name;
    }
    void NoteSubscription(nxLaunchedJob& job, nxHostProduct& product, nxMarketEvent event) override;

private:
    // Of one market.
    struct Audience
    {
        std::vector<nxHostProduct*> products;  // by the index of the job; null: the job asked for nothing
        bool hasTradeVolumes = false;          // a script has asked for the traded volumes
        bool haveTradeVolumesChanged = false;  // by the latest event
        bool hasWindows = false;               // a script has started a trade window
    };

    Audience* _Find(const nxMarket& market)
    {
        return market.index < _audiences.size() ? &_audiences[market.index] : nullptr;
    }
    // To each job that subscribed to it: entry with what `event` gives of the job's product.
    template <class Entry, class Event>
    void _Deliver(const nxMarket& market, nxMarketEvent kind, nxCallback callback, Entry entry, Event event);

    const nxRunState& _state;
    const nxRunClock& _clock;
    nxJobList& _jobs;
    nxMarkets& _markets;
    nxTrading& _trading;
    std::vector<Audience> _audiences;  // by the index of the market; to those that anybody subscribed to
};

#pragma once

#include <vector>

#include "host/feed/nxRecordedEvents.h"
#include "host/jobs/nxBarServices.h"
#include "host/jobs/nxHostTickDataCollection.h"
#include "host/market/nxMarkets.h"
#include "host/run/nxJobList.h"
#include "host/run/nxSchedule.h"

// The tick data collections of a run: what they are fed, when their bars end, and their past. Used on the
// run's thread.
class nxRunBars : public nxBarServices
{
public:
    // All outlive it.
    nxRunBars(const nxRunState& state, const nxRunClock& clock, nxRunOutput& output, nxJobList& jobs,
              nxMarkets& markets, const nxRecordedEvents& source, nxSchedule& schedule);

    // An event that the exchange has met already.
    void Feed(const nxMarket& market, const nxFeedEvent& event);
    // One that makes no bars.
    void Count() { ++_applied; }

    const nxBarTerms* FindBarTerms(const std::string& period) const override;
    nxBarOrigin GetBarOrigin(const nxHostProduct& product) override;
    unsigned long long GetEventCount() const override { return _applied; }
    void ReadHistory(const nxHostProduct& product,
                     const std::function<void(const nxFeedEvent&)>& take) override;
    void AttachCollection(nxHostTickDataCollection& collection) override;
    void DetachCollection(nxHostTickDataCollection& collection) override;
    void DeliverTickData(nxLaunchedJob& job, nxAlgoTickDataObject& tick) override;
    void DeliverWindow(nxLaunchedJob& job, nxAlgoEventWindowObject& window) override;

private:
    using Collections = std::vector<nxHostTickDataCollection*>;

    // Ends the bars that end now.
    void _Close();

    const nxRunState& _state;
    const nxRunClock& _clock;
    nxRunOutput& _output;
    nxJobList& _jobs;
    nxMarkets& _markets;
    const nxRecordedEvents& _source;
    nxSchedule& _schedule;
    std::vector<Collections> _collections;  // of all jobs, by the index of the market
    unsigned long long _applied = 0;        // events that collections have heard of
};

#pragma once

#include <optional>
#include <ostream>
#include <vector>

#include "host/feed/nxRecordedEvents.h"
#include "host/jobs/nxHostDefinitionService.h"
#include "host/market/nxMarkets.h"
#include "host/market/nxProductWatch.h"
#include "host/run/nxAdjustmentSchedule.h"
#include "host/run/nxCallWatch.h"
#include "host/run/nxDelivery.h"
#include "host/run/nxJobLife.h"
#include "host/run/nxJobList.h"
#include "host/run/nxJobNews.h"
#include "host/run/nxLateFeed.h"
#include "host/run/nxParameterSchedule.h"
#include "host/run/nxReplayClock.h"
#include "host/run/nxRunBars.h"
#include "host/run/nxRunOutput.h"
#include "host/run/nxRunProfiler.h"
#include "host/run/nxRunResults.h"
#include "host/run/nxRunStores.h"
#include "host/run/nxRunTimers.h"
#include "host/run/nxSchedule.h"
#include "host/run/nxTrading.h"

// Runs jobs over recorded data: merges the data by time, keeps the recorded time as the thread's "now",
// delivers prices, depth, states, timers, changed parameters and the news of watched jobs to the scripts, in
// the order of the jobs, and ends each job properly. Single-threaded; one object, one run.
//
// Log lines of the scripts, the summary and the record are the same to the byte for the same scripts, data
// and options. Failures, progress and speed go to err.
class nxRun : private nxMarketObserver
{
public:
    nxRun(nxRunOptions options, std::ostream& out, std::ostream& err);

    [[nodiscard]] nxRunResult Run();
    // The same in steps, for runs that share the reading of their data; all on one thread, whose stack is
    // deep enough for scripts. Begin, and then Continue after each block of events, as long as they say true:
    // there is more to do.
    [[nodiscard]] bool Begin();
    [[nodiscard]] bool Continue();
    nxRunResult GetOutcome() const { return _state.result; }
    const nxResult& GetResult() const { return _results.GetResult(); }
    const std::string& GetEnd() const { return _state.end; }
    const nxRunStatistics& GetStatistics() const { return _state.statistics; }
    // Writes the result's files: of a run in an envelope once, after all; of others Run() does. The worse of
    // how the run and how this went.
    [[nodiscard]] nxRunResult WriteResult(std::optional<std::vector<nxResultVariant>> envelope);

private:
    template <class Do>
    void _Guard(Do part);
    void _Fail(const char* what);
    // Opens all that is read and written. False: err tells what cannot be.
    bool _Prepare(std::vector<nxScriptSource>& sources);
    void _Begin(std::vector<nxScriptSource> sources);
    // The next three: false when the source has to read on first.
    bool _StartJobs();
    bool _WarmUp(long long from);
    bool _Replay();
    nxEventSource::Step _Step(bool isPaced);
    void _EndWarmUp(long long from);
    void _End();
    void _SetTime(long long time, bool isBar);
    void _SetClocks(long long time);
    void _Apply(const nxFeedEvent& event);
    void _Count(const nxFeedEvent& event);
    // At a venue that has the row before the scripts.
    void _ApplyAhead(nxMarket& market, const nxFeedEvent& event);
    // To the market of the scripts, who are told.
    void _Show(nxMarket& market, const nxFeedEvent& event);
    void _ShowPrice(nxMarket& market, const nxFeedEvent& event);
    void _ShowDepth(nxMarket& market, const nxFeedEvent& event);
    bool _HasPrices(const nxFeedEvent& event) const;
    // What the market did meets the orders in it, and what that leads to is told before the event itself.
    void _Trade(nxMarket& market, const nxFeedEvent& event);
    void _FollowProducts();
    void _Finish();
    void _NameTheEnd();
    void _WriteSummary();
    void _WriteProfile();
    std::unique_ptr<nxVenue> _MakeExchange(bool reportQueue, nxExchangeObservers observers) const;

    void OnMarketMade(nxMarket& market) override;
    void OnTickSize(nxMarket& market) override;
    void OnMarketState(nxMarket& market) override;
    void OnImpliedQuote(nxMarket& strategy, const nxFeedEvent& event) override;
    void OnImpliedQuoteAhead(nxMarket& strategy, const nxFeedEvent& event) override;
    bool IsEnding() const override { return _state.IsEnding(); }

    const nxRunOptions _options;
    nxRunState _state;
    nxReplayClock _clock;
    nxRunOutput _output;
    nxRunResults _results;
    nxCallWatch _watch;
    nxRecordedEvents _source;
    nxSchedule _schedule;
    nxLateFeed _lateFeed;
    nxMarkets _markets;
    std::optional<nxRunProfiler> _profiler;
    nxJobList _jobs;  // after the markets, at which their products look
    nxTrading _trading;
    nxDelivery _delivery;
    nxRunBars _bars;
    nxRunTimers _timers;
    nxJobNews _news;
    nxRunStores _stores;
    nxJobLife _life;
    nxParameterSchedule _parameters;
    nxAdjustmentSchedule _adjustments;
    nxHostDefinitionService _definitions;
    std::optional<nxProductWatch> _productWatch;
    bool _isStarted = false;          // the jobs are
    unsigned int _untilProgress = 0;  // events
    long long _clockTime = 0;         // that the scripts' clocks were set to
};

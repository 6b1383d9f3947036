#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "host/exchange/nxMarketProduct.h"
#include "host/feed/nxFeed.h"
#include "host/jobs/nxHostJob.h"
#include "host/jobs/nxHostServices.h"
#include "host/jobs/nxScriptSource.h"
#include "host/report/nxProgressBar.h"
#include "host/report/nxRunStatistics.h"
#include "host/server/nxReplayTime.h"
#include "host/server/nxRunOptions.h"
#include "host/server/nxTimerQueue.h"

// Runs a script over recorded data: merges the data by time, keeps the recorded time as the thread's "now",
// delivers prices, depth, states and timers to the script, and ends it properly. Single-threaded; one server,
// one run.
//
// Log lines of the script and the summary go to out and are the same to the byte for the same script, data
// and options. Failures, progress and speed go to err.
class nxReplayServer : private nxHostServices
{
public:
    nxReplayServer(nxRunOptions options, std::ostream& out, std::ostream& err);
    ~nxReplayServer();

    [[nodiscard]] nxRunResult Run();
    const nxRunStatistics& GetStatistics() const { return _statistics; }

private:
    // A product of the feed, at the same index: its market and the jobs' products over it.
    struct Market
    {
        Market(const std::string& name, const nxDecimal& tick) : product(name), tickSize(tick) {}

        nxMarketProduct product;
        nxDecimal tickSize;
        std::vector<std::pair<nxHostJob*, nxHostProduct*>> subscribers;
    };

    bool _Prepare();
    bool _LoadScript();
    bool _StartJob();
    void _Replay();
    void _Finish();
    void _WriteSummary();

    void _Apply(const nxFeedEvent& event);
    void _RunTimers(long long until);
    void _DeliverPrice(Market& market);
    void _DeliverDepth(Market& market);
    void _SetState(Market& market, unsigned int bits);
    // Calls the job and accounts for it.
    template <class Entry, class... Arguments>
    void _Call(nxCallback callback, nxHostJob& job, Entry entry, Arguments&... arguments);
    // No callback: while the script was loaded.
    void _NoteFailure(std::optional<nxCallback> callback, const std::string& errorText);
    bool _IsEnding() const;
    void _WaitFor(long long time);
    Market& _GetMarket(unsigned int index);
    std::string _GetNames() const;
    std::string _ExplainNothing() const;

    nxMarketProduct* FindMarket(const std::string& name) override;
    void Describe(nxHostProduct& product) override;
    void LogText(nxHostJob& job, const std::string& text) override;
    void StartTimer(nxHostJob& job, const std::string& name, unsigned int milliseconds) override;
    void StopTimer(nxHostJob& job, const std::string& name) override;
    void NoteShutdown(nxHostJob& job) override;
    void NoteUnknownProduct(nxHostJob& job, const std::string& name) override;
    void NoteSubscription(nxHostProduct& product) override;

    nxRunOptions _options;
    std::ostream& _out;
    std::ostream& _err;
    nxProgressBar _progress;
    nxReplayTime _time;
    nxFeed _feed;
    const nxFeedEvent* _next = nullptr;
    nxScriptSource _source;
    nxTimerQueue _timers;
    std::vector<std::unique_ptr<Market>> _markets;  // null until the product is met
    std::unique_ptr<nxHostJob> _job;                // after the markets, which its products look at
    nxRunStatistics _statistics;
    std::string _unknownProduct;
    std::string _end;
    nxRunResult _result = nxRunResult::Done;
    bool _hasTime = false;   // the data holds a row, so there is a recorded time
    bool _shutdown = false;  // the script asked for it
    bool _failed = false;    // and that ends the run
    std::chrono::steady_clock::time_point _wallStart;
};

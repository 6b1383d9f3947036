#pragma once

#include <chrono>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "host/feed/nxFeed.h"
#include "host/jobs/nxBarServices.h"
#include "host/jobs/nxDataStores.h"
#include "host/jobs/nxHostDefinitionService.h"
#include "host/jobs/nxHostServices.h"
#include "host/jobs/nxHostTickDataCollection.h"
#include "host/market/nxFileWatch.h"
#include "host/market/nxImpliedQuote.h"
#include "host/market/nxMarketProduct.h"
#include "host/report/nxOrderStories.h"
#include "host/report/nxProgressBar.h"
#include "host/report/nxRunRecord.h"
#include "host/report/nxRunStatistics.h"
#include "host/run/nxJobRunner.h"
#include "host/run/nxReplayTime.h"
#include "host/run/nxRunOptions.h"
#include "host/run/nxTimerQueue.h"

// Runs jobs over recorded data: merges the data by time, keeps the recorded time as the thread's "now",
// delivers prices, depth, states, timers, changed parameters and the news of watched jobs to the scripts, in
// the order of the jobs, and ends each job properly. Single-threaded; one server, one run.
//
// Log lines of the scripts, the summary and the record are the same to the byte for the same scripts, data
// and options. Failures, progress and speed go to err.
class nxReplayServer : private nxHostServices, private nxBarServices
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
        Market(const std::string& name, const nxDecimal& tick, std::size_t jobs)
            : product(name), tickSize(tick), subscribers(jobs)
        {
        }

        nxMarketProduct product;
        nxDecimal tickSize;
        nxTradingHours hours;                                // empty: open from its first row on
        bool hasTradeVolumes = false;                        // the latest event changed them
        bool hasWindows = false;                             // a script has started a trade window of it
        long long nextState = nxTimerQueue::Never;           // when these change its state
        bool isFresh = true;                                 // nothing of its data has come since it opened
        nxProductAccount none;                               // how an account begins
        nxProductAccount everybody;                          // of all jobs together
        std::vector<nxHostProduct*> traded;                  // the jobs' products that had a fill
        unsigned int exchangeProduct = 0;                    // once there is an exchange
        std::vector<nxHostTickDataCollection*> collections;  // of all jobs
        std::vector<nxHostProduct*> subscribers;  // by the index of the job; null: the job asked for nothing
        nxStrategyTerms terms;                    // of a strategy
        std::vector<Market*> strategies;          // over it, at any depth, each behind its legs

        bool OpensWithData() const { return hours.IsEmpty() && !product.IsStrategy(); }
    };
    // What a job is told of another one that it watches.
    struct News
    {
        nxCallback callback;
        nxJobRunner* watcher;
        nxWatchedJob* subject;
    };

    bool _Prepare(std::vector<nxScriptSource>& sources);
    void _MakeJobs(std::vector<nxScriptSource> sources);
    void _Replay();
    void _Finish();
    void _CloseRecord();
    void _WriteSummary();
    void _CollectNotes();
    // On the way a failure is logged, since a later save may make up for it; the last one fails the run.
    void _SaveStores(bool isLast = false);
    // A save that is due, and the time of the next one: nothing else happens before `until`.
    void _SaveStoresInTime(long long until);
    void _WriteStories();
    bool _IsAlone() const { return _runners.size() == 1; }
    bool _IsEnding() const;
    // Ends the run after the current callback. The first reason holds.
    void _EndRun(const std::string& reason);

    void _SetTime(long long time);
    void _SetClocks(long long time);
    void _WaitFor(long long time);
    void _Apply(const nxFeedEvent& event);
    void _RunDue(long long until);
    void _RunTimer();
    void _FindNextChange();
    void _ApplyChanges();
    void _FollowHours();
    void _UpdateTradeVolumes(Market& market);
    // To each job that subscribed to it: entry with what `event` gives of the job's product.
    template <class Entry, class Event>
    void _DeliverMarket(Market& market, nxMarketEvent kind, nxCallback callback, Entry entry, Event event);
    // To the trade windows, which come before OnPrice so that it finds the trade in them.
    void _DeliverTrade(Market& market);
    void _DeliverPrice(Market& market);
    void _DeliverDepth(Market& market);
    void _DeliverTradeVolumes(Market& market);
    void _DeliverPositions();
    void _FeedCollections(Market& market, const nxFeedEvent& event);
    // Ends the bars that end now.
    void _CloseBars();
    void _SetState(Market& market, unsigned int bits);
    Market& _GetMarket(unsigned int index)
    {
        if (index >= _markets.size() || _markets[index] == nullptr) [[unlikely]]
            _MakeMarket(index);
        return *_markets[index];
    }
    void _MakeMarket(unsigned int index);
    long long _GetNextDue() const;

    void _MakeStrategies();
    void _SetTerms(Market& strategy, const nxProductDescription& description);
    void _FollowTicks(Market& strategy);
    void _TakeTickSize(Market& market, const nxDecimal& tickSize);
    void _PriceStrategies(const std::vector<Market*>& strategies);
    static unsigned int _GetStateOfLegs(const Market& strategy);
    void _FollowLegs(const Market& leg);
    void _FollowProducts();

    void _OpenExchange();
    void _AddToExchange(Market& market);
    // Carries out what is due at the exchange, and delivers its answers.
    void _TellExchange(Market& market, const nxFeedEvent& event);
    void _RunExchange();
    bool _IsAnswerDue();
    void _DeliverAnswer();
    void _AddFill(nxHostOrder& order, const nxExchangeEvent& fill);
    void _Revalue(Market& market);
    void _BeginDay(long long time);
    Market& _GetMarketOf(const nxHostProduct& product) { return *_markets[product.GetMarketIndex()]; }
    nxHostOrder& _ApplyAnswer(const nxExchangeEvent& event);
    void _TakeLastAnswers();
    void _PullOrders(nxHostJob& job);
    void _Flatten(nxHostJob& job);
    void _FlattenAtEnd();
    const char* _FindNoExit(nxHostProduct& product);

    void _LoadJob(nxJobRunner& runner);
    void _StartJob(nxJobRunner& runner);
    void _EndJob(nxJobRunner& runner, const std::string& reason, bool isEarly);
    void _EndAskedJobs();
    // No callback: while the script was loaded. `message` is told instead of what the script left.
    void _NoteFailure(nxJobRunner& runner, std::optional<nxCallback> callback,
                      const std::string& message = {});
    std::string _GetNames() const;
    std::string _ExplainNothing(nxJobRunner& runner, bool isEarly) const;

    // A line for the person who watches the run.
    void _Log(const std::string& text);
    // Puts news of a job up for those that watch it.
    void _Announce(nxCallback callback, nxJobRunner& subject);
    void _Publish(nxJobRunner& subject);
    // After a callback that left something to do: publishes what changed, ends jobs, delivers news.
    void _Settle(nxJobRunner& runner);
    void _DeliverNews();

    // Calls the script, and does what it left to do.
    template <class Entry, class... Arguments>
    void _Call(nxCallback callback, nxJobRunner& runner, Entry entry, Arguments&... arguments)
    {
        if (!runner.Call(callback, entry, arguments...)) [[unlikely]]
            _NoteFailure(runner, callback);
        if (_isUnsettled) [[unlikely]]
            _Settle(runner);
    }
    // The same for an event, which a job that has ended does not get.
    template <class Entry, class... Arguments>
    void _Deliver(nxCallback callback, nxJobRunner& runner, Entry entry, Arguments&... arguments)
    {
        if (!runner.IsOver()) _Call(callback, runner, entry, arguments...);
    }
    nxJobRunner& _GetRunner(const nxHostJob& job) { return *_runners[job.GetIndex()]; }

    nxMarketProduct* FindMarket(const std::string& name) override;
    void Describe(nxHostProduct& product) override;
    void LogText(nxHostJob& job, const std::string& text) override;
    void Record(const nxHostJob& job, const char* type, nxRunRecord::Fields fields) override;
    void StartTimer(nxHostJob& job, const std::string& name, unsigned int milliseconds) override;
    void StopTimer(nxHostJob& job, const std::string& name) override;
    void StartTimer(nxHostJob& job, nxTimerCallback& callback, double seconds) override;
    void StopTimer(nxHostJob& job, nxTimerCallback& callback) override;
    void DeliverWindow(nxHostJob& job, nxAlgoEventWindowObject& window) override;
    void NoteShutdown(nxHostJob& job) override;
    void NoteChange(nxHostJob& job) override;
    void NoteUnknownProduct(nxHostJob& job, const std::string& name) override;
    void NoteSubscription(nxHostJob& job, nxHostProduct& product, nxMarketEvent event) override;
    std::vector<nxHostJob*> GetOtherJobs(const nxHostJob& job) override;
    nxErrorEnum StopJob(nxHostJob& job, const nxHostJob& by) override;
    long long GetTime() const override { return _time.Get(); }
    nxAlgoDataStoreObject* GetDataStore(nxHostJob& job, const std::string& name, bool create) override;
    unsigned int ReserveOrder() override;
    bool HasExchange() const override { return _exchange.has_value(); }
    nxSimulatedExchange& GetExchange() override { return *_exchange; }
    unsigned int GetExchangeProduct(const nxHostProduct& product) override;
    void NoteOrder(nxHostOrder& order) override;
    nxHostOrder* FindOrder(unsigned int id) override;
    const std::vector<nxHostOrder*>& GetOrders() const override { return _orders; }
    void NoteRequest(nxHostJob&) override { _isUnsettled = true; }
    bool MayTrade(const nxHostJob& job) override { return !_GetRunner(job).IsOver(); }
    bool IsRecording() const override { return _record.IsOpen(); }
    nxBarServices& GetBars() override { return *this; }
    nxBarOrigin GetBarOrigin(const nxHostProduct& product) override;
    unsigned long long GetEventCount() const override { return _applied; }
    void ReadHistory(const nxHostProduct& product,
                     const std::function<void(const nxFeedEvent&)>& take) override;
    void AttachCollection(nxHostTickDataCollection& collection) override;
    void DetachCollection(nxHostTickDataCollection& collection) override;
    void DeliverTickData(nxHostJob& job, nxAlgoTickDataObject& tick) override;
    std::string GetDynamicParameter(const std::string& tag, const std::string& name) override;
    void SetDynamicParameter(const std::string& tag, const std::string& name,
                             const std::string& value) override;

    nxRunOptions _options;
    std::ostream& _out;
    std::ostream& _err;
    nxProgressBar _progress;
    nxReplayTime _time;
    nxFeed _feed;
    const nxFeedEvent* _next = nullptr;
    std::size_t _nextChange = 0;  // of _options.changes
    long long _nextChangeTime = 0;
    unsigned long long _applied = 0;                 // events of the feed that collections have heard of
    long long _nextBarEnd = nxTimerQueue::Never;     // of the collections; never late, perhaps early
    long long _nextStateTime = nxTimerQueue::Never;  // of the markets' trading hours
    nxTimerQueue _timers;
    nxDataStores _stores;
    long long _nextSaveTime = nxTimerQueue::Never;
    long long _saveInterval = 0;  // in nanoseconds
    std::string _storeFailure;    // of one that could not be read
    nxRunRecord _record;
    std::map<std::pair<std::string, std::string>, std::string> _board;  // by tag and name
    nxRunStatistics _statistics;
    std::vector<std::unique_ptr<Market>> _markets;  // null until the product is met
    std::vector<Market*> _strategies;               // each behind its legs
    nxHostDefinitionService _definitions;
    std::optional<nxFileWatch> _watch;                   // of the product file
    std::optional<nxOrderStories> _stories;              // where some are asked for
    std::optional<nxSimulatedExchange> _exchange;        // from the first order on; behind the markets
    std::vector<nxHostOrder*> _orders;                   // as they came to be
    std::vector<nxHostOrder*> _ordersByNumber;           // from 1; null: no job knows of it yet
    std::optional<nxExchangeEvent> _answer;              // taken from the exchange, and not delivered
    std::vector<std::unique_ptr<nxJobRunner>> _runners;  // behind the markets, which their products look at
    std::size_t _jobsToGo = 0;                           // that have not ended
    std::deque<News> _news;
    std::deque<std::pair<nxJobRunner*, nxHostProduct*>> _positions;  // to be told of
    bool _isUnsettled = false;                                       // a callback left something for _Settle
    bool _isSettling = false;
    std::string _end;
    nxRunResult _result = nxRunResult::Done;
    bool _hasTime = false;  // the data holds a row, so there is a recorded time
    bool _isOver = false;   // a failure ended the run, or no job is left
    long long _clockTime = 0;
    long long _nextDay = nxTimerQueue::Never;  // of the accounts, once there is an exchange
    std::chrono::steady_clock::time_point _wallStart;
};

#pragma once

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

#include "host/accounts/nxLedger.h"
#include "host/accounts/nxMargin.h"
#include "host/accounts/nxProductAccount.h"
#include "host/exchange/nxVenue.h"
#include "host/jobs/nxOrderServices.h"
#include "host/market/nxMarket.h"
#include "host/report/nxOrderStories.h"
#include "host/run/nxAnswerChains.h"
#include "host/run/nxJobList.h"
#include "host/run/nxRunResults.h"
#include "host/run/nxSchedule.h"
#include "host/run/nxTradingRecord.h"

// The orders of a run: their numbers, requests out to the venue, answers back to the scripts, what fills make
// of the accounts, and how positions are closed when jobs end. The venue comes to be with the first order; a
// run without orders does nothing for it. Used on the run's thread.
class nxTrading : public nxOrderServices
{
public:
    // The venue of the run. reportQueue: scripts want to hear of each move in a queue. The observers look on
    // and outlive the venue.
    using MakeVenue =
        std::function<std::unique_ptr<nxVenue>(bool reportQueue, nxExchangeObservers observers)>;

    // All outlive it.
    nxTrading(nxRunState& state, const nxRunClock& clock, nxRunOutput& output, nxRunResults& results,
              nxJobList& jobs, const nxEventSource& source, nxSchedule& schedule, MakeVenue makeVenue);

    void AddMarket(nxMarket& market);
    // Begins the product's account with nothing in it.
    void OpenAccount(nxHostProduct& product);
    void TakeTickSize(const nxMarket& market);
    void OnMarketState(const nxMarket& market);
    // What the market did meets the orders in it; what that leads to is due for the settler then.
    void OnEvent(const nxMarket& market, const nxFeedEvent& event);

    // At its time: ends what orders it ends, and books it for those who hold the product.
    void Adjust(nxMarket& market, const nxAdjustment& adjustment);

    bool IsAnswerDue();
    // Applies the answer that is due, and calls the script. A job whose orders have no end is asked to end
    // instead.
    void DeliverAnswer();
    // A subscription to positions begins with the one of now.
    void AddPositionNews(nxJobRunner& runner, nxHostProduct& product);
    void DeliverPositions();

    // Days of the accounts are those of the market's figures, in UTC.
    long long GetNextDay() const { return _nextDay; }
    // The data begin at that time, which may be the end of a day's last bar.
    void SetFirstTime(long long time) { _nextDay = _GetDayEnd(time, true); }
    // isBar: with a bar, which at midnight is of the day before.
    void BeginDay(long long time, bool isBar);

    // Of a job that ends while the others go on.
    void PullOrders(nxTradingJob& job);
    // At the end of the run: what was on its way to the scripts counts, though nobody hears of it; then
    // positions are closed that are to be.
    void Finish();
    void WriteStories();
    // What there is to say of the margin of a job, at the end of the run.
    std::vector<std::string> GetMarginNotes(const nxTradingJob& job) const;
    nxTradingStatistics GetStatistics(const nxTradingJob& job) const;
    nxLateTrades GetLateTrades() const
    {
        return _venue != nullptr ? _venue->GetLateTrades() : nxLateTrades();
    }
    // How most orders of a job that were not filled ended, and how many; those that have not are counted as
    // such.
    std::pair<std::string, unsigned long long> GetCommonestEnd(const nxTradingJob& job) const;
    // The venue's reason for the end of an order whose day or date is over.
    static constexpr const char* EndOfTime = "its time is over";

    nxVenue* GetVenue() override { return _venue.get(); }
    unsigned int ReserveOrder() override;
    unsigned int GetVenueProduct(const nxHostProduct& product) const override
    {
        return _markets[product.GetMarketIndex()].venueProduct;
    }
    void NoteOrder(nxHostOrder& order) override;
    nxHostOrder* FindOrder(unsigned int id) override;
    const std::vector<nxHostOrder*>& GetOrders() const override { return _orders; }
    void NoteRequest(const nxHostOrder& order) override;
    bool MayTrade(const nxLaunchedJob& job) const override { return !_jobs.Get(job).IsOver(); }

private:
    // They are large, and of many products described few are met.
    struct Accounts
    {
        nxProductAccount none;       // how an account begins
        nxProductAccount everybody;  // of all jobs together
    };
    // Of one market.
    struct Market
    {
        nxMarket* market = nullptr;
        unsigned int venueProduct = 0;  // once there is a venue
        std::unique_ptr<Accounts> accounts;
    };
    // Of one job's orders that ended without a fill, by the reason.
    using Ends = std::map<std::string, unsigned long long>;

    static long long _GetDayEnd(long long time, bool isBar);
    void _EndDay();
    void _Open();
    void _AddToVenue(Market& market);
    void _Reschedule();
    void _NoteEnd(const nxExchangeEvent& event);
    void _EndOrders(nxMarket& market, const nxAdjustment& adjustment);
    void _AdjustAccounts(nxMarket& market, const nxAdjustment& adjustment);
    void _ShowPositions(const Market& market);
    void _AddFill(nxHostOrder& order, const nxExchangeEvent& fill);
    nxHostOrder& _ApplyAnswer(const nxExchangeEvent& event);
    void _TellAnswer(nxHostOrder& order, const nxExchangeEvent& event);
    void _TakeLastAnswers();
    void _Flatten(nxTradingJob& job);
    void _FlattenAtEnd();
    const char* _FindNoExit(const nxHostProduct& product) const;
    bool _IsOfBars(const nxMarket& market) const;

    nxRunState& _state;
    const nxRunClock& _clock;
    nxRunOutput& _output;
    nxRunResults& _results;
    nxJobList& _jobs;
    const nxEventSource& _source;
    nxSchedule& _schedule;
    std::vector<Market> _markets;            // by index; empty where none was met
    std::optional<nxOrderStories> _stories;  // where some are asked for
    nxLedger _ledger;
    std::optional<nxMargin> _margin;  // where the capital is known
    nxTradingRecord _record;
    std::unique_ptr<nxVenue> _venue;  // from the first order on
    const MakeVenue _makeVenue;
    // As they came to be, which is by number, from 1 on, but where the exchange made a child of a bracket of
    // which nobody knew yet: those of another place are found by the map.
    std::vector<nxHostOrder*> _orders;
    std::unordered_map<unsigned int, nxHostOrder*> _displaced;
    std::optional<nxExchangeEvent> _answer;  // taken from the venue, and not delivered
    std::deque<std::pair<nxJobRunner*, nxHostProduct*>> _positions;  // to be told of
    long long _nextDay = nxTime::Never;                              // once the data have a row
    bool _isAmongBars = false;  // what comes next may be a bar of the same time
    nxAnswerChains _chains;
    std::vector<Ends> _ends;  // by the index of the job
};

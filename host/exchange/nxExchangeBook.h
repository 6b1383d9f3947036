#pragma once

#include <span>

#include "base/values/nxExactRandom.h"
#include "host/exchange/nxBarMatcher.h"
#include "host/exchange/nxBookListener.h"
#include "host/exchange/nxBookRules.h"
#include "host/exchange/nxLateTrades.h"
#include "host/exchange/nxOwnOrders.h"
#include "host/exchange/nxShownMarket.h"
#include "host/feed/nxFeedEvent.h"

// The own orders in the market of one product, and how they meet the recorded one: a matching engine over a
// market that does not react. Used on the replay's thread. docs/exchange.md tells the rules in full.
//
// A level's queue follows the data: an order joins behind the volume shown at its price; trades at the price
// take from the front; what else disappears was cancelled, and how far that moves an order up is the queue
// model's to say; what appears joins behind. A price that is not shown, as behind the best one where the data
// hold only that, has an unknown queue until it is.
class nxExchangeBook
{
public:
    // Market, random numbers and listener outlive the book.
    nxExchangeBook(const nxMarketProduct& market, const nxDecimal& tickSize, const nxBookRules& rules,
                   nxExactRandom& random, nxBookListener& listener);
    nxExchangeBook(const nxExchangeBook&) = delete;
    nxExchangeBook& operator=(const nxExchangeBook&) = delete;

    // A product of bars has no book: its orders wait for the next bar, whatever else its data hold. So does
    // one from its first bar on. A period of 0 is not known.
    void SetOfBars(long long period)
    {
        _isOfBars = true;
        _bars.SetPeriod(period);
    }
    void SetTickSize(const nxDecimal& tickSize) { _tickSize = tickSize; }
    bool IsOfBars() const { return _isOfBars; }
    // 0: any volume fills; else this share of a bar's volume, in hundredths, rounded down.
    void SetParticipation(unsigned int hundredths) { _bars.SetParticipation(hundredths); }

    // Takes what the order can have at once, and lets the rest, if there is one, wait in the book.
    void Enter(nxExchangeOrder& order);
    // A stop waits for what comes, whatever the market shows now.
    void AddStop(nxExchangeOrder& order);
    void Remove(nxExchangeOrder& order) { _orders.Remove(order); }
    // Whether the whole order would fill at once.
    bool CanFill(const nxExchangeOrder& order);
    // A resting order of the same owner that the order would trade with; null if there is none.
    const nxExchangeOrder* FindOwnCounterpart(const nxExchangeOrder& order);
    // What an order would have ahead if it joined the queue at its price now; null where that is not known.
    nxVolume GetAhead(const nxExchangeOrder& order) const;
    // Best prices of the resting orders of an owner; null where there is none.
    nxDecimal GetOwnBest(nxSide side, unsigned int owner) const { return _orders.GetBestPrice(side, owner); }
    // What stops of a side look at: the last trade, or, until there was one, the ask for a buy and the bid
    // for a sell.
    nxDecimal GetStopReference(nxSide side) const;

    const nxLateTrades& GetLateTrades() const { return _lateTrades; }

    // What the market did, after the market shows it.
    void OnQuote(const nxFeedQuote& quote, long long time);
    void OnDepth(std::span<const nxFeedLevel> levels, long long time);
    void OnBar(const nxFeedBar& bar, long long time);
    // Looks at the whole market anew, after a time in which the book was not told of it.
    void Resume();
    // Takes the market as it is, for one that began without the book.
    void Join();

private:
    using Level = nxOwnOrders::Level;

    // Whether they would trade with each other.
    bool _Meets(const nxExchangeOrder& order, const nxExchangeOrder& own) const;
    unsigned int _GetSharedWithBetter(const nxExchangeOrder& own) const;
    // fn(price, free, isAssumed) over what the market offers to the order within its limit, from the best
    // price on until it answers false.
    template <class Visit>
    void _ForEachOffered(const nxExchangeOrder& order, Visit visit);
    void _Take(nxExchangeOrder& order);
    void _TakeOwn(nxExchangeOrder& order, const nxDecimal* bound);
    bool _MeetOwn(nxExchangeOrder& order, Level& level, std::size_t& index, const nxDecimal& price);
    const nxExchangeOrder* _FindMet(const nxExchangeOrder& order) const;
    void _Rest(nxExchangeOrder& order);
    void _FillResting(Level& level, std::size_t& index, const nxDecimal& price, unsigned int& budget,
                      nxFillCause cause);
    bool _Replenish(Level& level, std::size_t index);
    void _FillWhole(Level& level, const nxDecimal& price);
    void _FillThrough(Level& level, const nxDecimal& price, unsigned int& budget, nxFillCause cause);
    void _FillQueue(Level& level, const nxDecimal& price, unsigned int traded, unsigned int budget);
    void _PassQueue(Level& level);
    void _OnTrade(const nxDecimal& price, const nxVolume& traded, const nxBuySellEnum& aggressor);
    // Off what the side shows.
    void _TakeTraded(nxSide side, const nxDecimal& price, const nxVolume& traded,
                     const nxBuySellEnum& aggressor);
    void _RefreshLevel(Level& level, const nxVolume& shown);
    unsigned int _RecallCancelled(Level& level, unsigned int traded);
    void _RefreshAll(nxSide side);
    bool _RefreshBest(nxSide side, bool isGiven);
    // Of the orders of a side.
    void _MeetQuotes(nxSide side);
    unsigned int _MeetQuote(nxSide side, const nxDecimal& quote, unsigned int free);
    bool _TryStop(nxExchangeOrder& order);
    void _TryStops();
    void _Trigger(nxExchangeOrder& order);

    const nxMarketProduct& _market;
    nxDecimal _tickSize;  // null: 1
    const nxBookRules _rules;
    nxExactRandom& _random;
    nxBookListener& _listener;
    nxShownMarket _shown;
    nxOwnOrders _orders;
    nxBarMatcher _bars;
    nxLateTrades _lateTrades;
    long long _time = 0;  // of the market's latest row
    bool _isOfBars = false;
    bool _isFirstRow = false;  // of quotes, since it was resumed
};

#pragma once

#include <functional>
#include <map>
#include <span>
#include <vector>

#include "host/exchange/nxExchangeOrder.h"
#include "host/exchange/nxMarketProduct.h"
#include "host/feed/nxExactRandom.h"
#include "host/feed/nxFeedEvent.h"

// How a resting order comes to be filled by recorded trades and quotes.
enum class nxFillModel {
    Touch,  // wholly, once a trade or the other side's quote reaches its price
    Cross,  // by trades beyond its price and by quotes of the other side that cross it
    Queue,  // by trades at its price too, once what stood in front of it is gone
};

// Why there was a fill.
enum class nxFillCause { Took, Touched, TradedThrough, Queue, Crossed, Bar, OwnOrder };

// The own orders in the market of one product, and how they meet the recorded one: a matching engine over a
// market that does not react. Used on the replay's thread.
//
// What an order takes from a shown level stays taken until the data show that level anew. A level's queue
// follows the data: an order joins behind the volume shown at its price; trades at the price take from the
// front; what else disappears was cancelled, evenly along the queue, so that of c cancelled among s shown an
// order with a ahead moves up by c * a / s, rounded down; what appears joins behind. A price that is not
// shown, as behind the best one where the data hold only that, has an unknown queue until it is.
class nxExchangeBook
{
public:
    class Listener
    {
    public:
        // Called inside the book's loops, after the order has counted it: must not call the book back.
        virtual void OnFill(nxExchangeOrder& order, const nxDecimal& price, unsigned int volume, bool isMaker,
                            nxFillCause cause) = 0;
        virtual void OnTriggered(nxExchangeOrder& order) = 0;
        virtual void OnQueueMoved(nxExchangeOrder& order) = 0;

    protected:
        ~Listener() = default;
    };

    // Market, random numbers and listener outlive the book.
    nxExchangeBook(const nxMarketProduct& market, nxFillModel model, nxExactRandom& random,
                   Listener& listener);
    nxExchangeBook(const nxExchangeBook&) = delete;
    nxExchangeBook& operator=(const nxExchangeBook&) = delete;

    // A product of bars has no book: its orders wait for the next bar. 0: any volume fills; else this
    // share of a bar's volume, in hundredths.
    void SetParticipation(unsigned int hundredths) { _participation = hundredths; }

    // Takes what the order can have at once, and lets the rest, if there is one, wait in the book.
    void Enter(nxExchangeOrder& order);
    void Remove(nxExchangeOrder& order);
    // After a change of volume alone that did not grow: the order keeps its place.
    void Shrink(nxExchangeOrder& order);
    // Whether the whole order would fill at once.
    bool CanFill(const nxExchangeOrder& order) const;
    // A resting order of the same owner that the order would trade with; null if there is none.
    const nxExchangeOrder* FindOwnCounterpart(const nxExchangeOrder& order) const;
    // Best prices of the resting orders of an owner; null where there is none.
    nxDecimal GetOwnBest(bool isBuy, unsigned int owner) const;
    // Fills of this product come from bars.
    bool IsOfBars() const { return _isOfBars; }
    void SetOfBars() { _isOfBars = true; }

    // What the market did, after the market shows it.
    void OnQuote(const nxFeedQuote& quote);
    void OnDepth(std::span<const nxFeedLevel> levels);
    void OnBar(const nxFeedBar& bar);

    // By price, then in the order of their arrival; for tests and queries.
    void ForEachOrder(const std::function<void(const nxExchangeOrder&)>& visit) const;

private:
    struct Level
    {
        std::vector<nxExchangeOrder*> orders;
        nxVolume shown;  // of the recorded market at this price; null where it is not shown
    };
    using Levels = std::map<nxDecimal, Level>;

    static constexpr unsigned int Unlimited = 0xFFFFFFFD;

    // fn(price, volume) from the best level on until it answers false.
    template <class Visit>
    void _ForEachShown(bool asks, Visit visit) const;
    // fn(price, level) of the own orders from the best price on until it answers false; the level may go.
    template <class Visit>
    void _ForEachOwn(bool buys, Visit visit);
    nxVolume _GetShown(bool bids, const nxDecimal& price) const;
    unsigned int _GetFree(bool asks, const nxDecimal& price, unsigned int shown) const;
    void _Take(nxExchangeOrder& order);
    void _TakeOwn(nxExchangeOrder& order, const nxDecimal* bound);
    void _Rest(nxExchangeOrder& order);
    void _Fill(nxExchangeOrder& order, const nxDecimal& price, unsigned int volume, bool isMaker,
               nxFillCause cause);
    nxExchangeOrder* _FillResting(Level& level, std::size_t& index, const nxDecimal& price,
                                  unsigned int& budget, nxFillCause cause);
    bool _Replenish(Level& level, std::size_t index);
    void _FillThrough(Level& level, const nxDecimal& price, unsigned int& budget, nxFillCause cause);
    void _FillQueue(Level& level, const nxDecimal& price, unsigned int budget);
    void _OnTrade(const nxDecimal& price, unsigned int volume, const nxBuySellEnum& aggressor);
    void _RefreshLevel(Level& level, const nxVolume& shown);
    void _RefreshBest(bool bids);
    void _MeetQuotes(bool buys);
    void _Trigger(const nxDecimal& up, const nxDecimal& down);
    void _TriggerByQuote();
    bool _FillByBar(nxExchangeOrder& order, const nxFeedBar& bar, unsigned int& budget);
    Levels& _GetLevels(bool buys) { return buys ? _buys : _sells; }
    const Levels& _GetLevels(bool buys) const { return buys ? _buys : _sells; }

    const nxMarketProduct& _market;
    const nxFillModel _model;
    nxExactRandom& _random;
    Listener& _listener;
    Levels _buys, _sells;                         // limit orders that rest
    std::vector<nxExchangeOrder*> _unlimited;     // market orders that found too little
    std::vector<nxExchangeOrder*> _stops;         // that have not been triggered
    std::map<nxDecimal, unsigned int> _taken[2];  // of shown bids, of shown asks
    unsigned int _participation = 0;
    bool _usesDepth = false;
    bool _hasTraded = false;
    bool _isOfBars = false;
};

#pragma once

#include <functional>
#include <map>
#include <span>
#include <vector>

#include "base/values/nxExactRandom.h"
#include "host/exchange/nxExchangeObserver.h"
#include "host/exchange/nxFillModel.h"
#include "host/feed/nxFeedEvent.h"
#include "host/market/nxMarketProduct.h"

// Why there was a fill.
enum class nxFillCause { Took, Touched, TradedThrough, Queue, Crossed, Bar, OwnOrder };

// The own orders in the market of one product, and how they meet the recorded one: a matching engine over a
// market that does not react. Used on the replay's thread. docs/exchange.md tells the rules in full.
//
// What an order takes from a shown level stays taken until the data give that level another volume, or none.
// A level's queue follows the data: an order joins behind the volume shown at its price; trades at the price
// take from the front; what else disappears was cancelled, and how far that moves an order up is the fill
// model's to say; what appears joins behind. A price that is not shown, as behind the best one where the data
// hold only that, has an unknown queue until it is.
class nxExchangeBook
{
public:
    class Listener
    {
    public:
        // Called inside the book's loops, after the order has counted it: must not call the book back, but
        // may take volume off other orders, down to what they have executed.
        virtual void OnFill(nxExchangeOrder& order, const nxDecimal& price, unsigned int volume, bool isMaker,
                            nxFillCause cause) = 0;
        virtual void OnTriggered(nxExchangeOrder& order) = 0;
        virtual void OnQueueMoved(nxExchangeOrder& order, const nxVolume& before, nxQueueMove move) = 0;

    protected:
        ~Listener() = default;
    };

    // Market, random numbers and listener outlive the book.
    nxExchangeBook(const nxMarketProduct& market, const nxFillRule& rule, nxExactRandom& random,
                   Listener& listener);
    nxExchangeBook(const nxExchangeBook&) = delete;
    nxExchangeBook& operator=(const nxExchangeBook&) = delete;

    // A product of bars has no book: its orders wait for the next bar, whatever else its data hold. So does
    // one from its first bar on.
    void SetOfBars() { _isOfBars = true; }
    bool IsOfBars() const { return _isOfBars; }
    // 0: any volume fills; else this share of a bar's volume, in hundredths, rounded down.
    void SetParticipation(unsigned int hundredths) { _participation = hundredths; }

    // Takes what the order can have at once, and lets the rest, if there is one, wait in the book.
    void Enter(nxExchangeOrder& order);
    void Remove(nxExchangeOrder& order);
    // Whether the whole order would fill at once.
    bool CanFill(const nxExchangeOrder& order) const;
    // A resting order of the same owner that the order would trade with; null if there is none.
    const nxExchangeOrder* FindOwnCounterpart(const nxExchangeOrder& order) const;
    // What an order would have ahead if it joined the queue at its price now; null where that is not known.
    nxVolume GetAhead(const nxExchangeOrder& order) const;
    // Best prices of the resting orders of an owner; null where there is none.
    nxDecimal GetOwnBest(nxSide side, unsigned int owner) const;
    // What stops of a side look at: the last trade, or, until there was one, the ask for a buy and the bid
    // for a sell.
    nxDecimal GetStopReference(nxSide side) const;

    // What the market did, after the market shows it. A bar is met by orders that came before its time: its
    // open may be older than what the others were sent upon.
    void OnQuote(const nxFeedQuote& quote);
    void OnDepth(std::span<const nxFeedLevel> levels);
    void OnBar(const nxFeedBar& bar, long long time);
    // Looks at the whole market anew, after a time in which the book was not told of it.
    void Resume();
    // Takes the market as it is, for one that began without the book.
    void Join();

    // Of each side from the best price on, then in the order of their queue; for tests and queries.
    void ForEachOrder(const std::function<void(const nxExchangeOrder&)>& visit) const;

private:
    struct Level
    {
        std::vector<nxExchangeOrder*> orders;  // in the order of the queue: what is ahead of them ascends
        nxVolume shown;                        // of the recorded market; null where it is not shown
    };
    struct BestFirst
    {
        nxSide side = nxSide::Buy;
        bool operator()(const nxDecimal& a, const nxDecimal& b) const { return nxIsBetter(side, a, b); }
    };
    using Levels = std::map<nxDecimal, Level, BestFirst>;
    struct Taken
    {
        unsigned int shown = 0;
        unsigned int volume = 0;
    };

    static constexpr unsigned int Unlimited = 0xFFFFFFFD;

    // fn(price, volume) from the best level of the side on until it answers false.
    template <class Visit>
    void _ForEachShown(nxSide side, Visit visit) const;
    // fn(price, level) of the own orders from the best price on until it answers false; the level may go.
    template <class Visit>
    void _ForEachOwn(nxSide side, Visit visit);
    // The same over those of the other side that the order reaches, to look at.
    template <class Visit>
    void _ForEachReached(const nxExchangeOrder& order, Visit visit) const;

    nxVolume _GetShown(nxSide side, const nxDecimal& price) const;
    unsigned int _GetFree(nxSide side, const nxDecimal& price, unsigned int shown) const;
    void _NoteTaken(nxSide side, const nxDecimal& price, unsigned int shown, unsigned int volume);
    void _Take(nxExchangeOrder& order);
    void _TakeOwn(nxExchangeOrder& order, const nxDecimal* bound);
    void _Rest(nxExchangeOrder& order);
    void _Fill(nxExchangeOrder& order, const nxDecimal& price, unsigned int volume, bool isMaker,
               nxFillCause cause);
    void _FillResting(Level& level, std::size_t& index, const nxDecimal& price, unsigned int& budget,
                      nxFillCause cause);
    bool _Replenish(Level& level, std::size_t index);
    void _FillWhole(Level& level, const nxDecimal& price);
    void _FillThrough(Level& level, const nxDecimal& price, unsigned int& budget, nxFillCause cause);
    void _FillQueue(Level& level, const nxDecimal& price, unsigned int traded, unsigned int budget);
    void _OnTrade(const nxDecimal& price, const nxVolume& traded, const nxBuySellEnum& aggressor);
    void _RefreshLevel(Level& level, const nxVolume& shown);
    void _RefreshAll(nxSide side);
    bool _RefreshBest(nxSide side, bool isGiven);
    // Of the orders of a side. isAnew: the data have just shown the quotes that they meet.
    void _MeetQuotes(nxSide side, bool isAnew);
    bool _TryStop(nxExchangeOrder& order);
    // trade: what may trigger them; null for quotes. isAnew: whether the bids and asks are from after it.
    void _TryStops(const nxDecimal& trade, const nxBySide<bool>& isAnew);
    void _Trigger(nxExchangeOrder& order);
    nxDecimal _FindStopInBar(nxExchangeOrder& order, const nxFeedBar& bar) const;
    bool _FillByBar(nxExchangeOrder& order, const nxFeedBar& bar, unsigned int& budget);
    const nxMarketProduct& _market;
    const nxFillRule _rule;
    nxExactRandom& _random;
    Listener& _listener;
    nxBySide<Levels> _levels{Levels(BestFirst{nxSide::Buy}),
                             Levels(BestFirst{nxSide::Sell})};  // limit orders that rest
    std::vector<nxExchangeOrder*> _unlimited;                   // market orders that found too little
    std::vector<nxExchangeOrder*> _stops;                       // that have not been triggered
    nxBySide<std::map<nxDecimal, Taken>> _taken;                // of shown bids, of shown asks
    nxBySide<nxBestQuote> _best;  // bid and ask as last seen, where the data hold only those
    unsigned int _participation = 0;
    bool _usesDepth = false;
    bool _hasTraded = false;
    bool _isOfBars = false;
};

template <class Visit>
void nxExchangeBook::_ForEachShown(nxSide side, Visit visit) const
{
    if (_isOfBars) return;
    if (!_usesDepth) {
        const nxBestQuote best = _market.GetBest(side);
        // Data without sizes do not say how much there is.
        if (best.price.IsValid())
            visit(best.price, best.volume.IsValid() ? best.volume.GetValue() : Unlimited);
        return;
    }
    const auto go = [&](auto level, const auto end) {
        while (level != end && visit(level->first, level->second.volume))
            ++level;
    };
    const nxMarketDepth::Map& levels = _market.GetLevels(side);
    if (side == nxSide::Buy) {
        go(levels.rbegin(), levels.rend());
    } else {
        go(levels.begin(), levels.end());
    }
}

template <class Visit>
void nxExchangeBook::_ForEachOwn(nxSide side, Visit visit)
{
    Levels& levels = _levels[side];
    for (auto current = levels.begin(); current != levels.end();) {
        const bool more = visit(current->first, current->second);
        current = current->second.orders.empty() ? levels.erase(current) : std::next(current);
        if (!more) return;
    }
}

template <class Visit>
void nxExchangeBook::_ForEachReached(const nxExchangeOrder& order, Visit visit) const
{
    for (const auto& [price, level] : _levels[nxGetOpposite(order.kind.side)]) {
        if (!order.IsWithin(price)) return;
        for (const nxExchangeOrder* own : level.orders)
            if (!visit(*own)) return;
    }
}

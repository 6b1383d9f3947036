#pragma once

#include <functional>
#include <map>
#include <span>
#include <vector>

#include "base/values/nxExactRandom.h"
#include "host/exchange/nxExchangeObserver.h"
#include "host/feed/nxFeedEvent.h"
#include "host/market/nxMarketProduct.h"

// How a resting order comes to be filled by recorded trades and quotes.
enum class nxFillModel {
    Touch,  // wholly, once a trade or the other side's quote reaches its price
    Cross,  // by trades beyond its price and by quotes of the other side that reach it
    Queue,  // by trades at its price too, once what stood in front of it is gone
};

// As --fills names it.
const char* nxGetText(nxFillModel model);

// Why there was a fill.
enum class nxFillCause { Took, Touched, TradedThrough, Queue, Crossed, Bar, OwnOrder };

// The own orders in the market of one product, and how they meet the recorded one: a matching engine over a
// market that does not react. Used on the replay's thread. docs/exchange.md tells the rules in full.
//
// What an order takes from a shown level stays taken until the data give that level another volume, or none.
// A level's queue follows the data: an order joins behind the volume shown at its price; trades at the price
// take from the front; what else disappears was cancelled, evenly along the queue, so that of c cancelled
// among s shown an order with a ahead moves up by c * a / s, rounded down; what appears joins behind. A price
// that is not shown, as behind the best one where the data hold only that, has an unknown queue until it is.
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
    nxExchangeBook(const nxMarketProduct& market, nxFillModel model, nxExactRandom& random,
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
    // After a change of volume alone that did not grow: the order keeps its place.
    void Shrink(nxExchangeOrder& order);
    // Whether the whole order would fill at once.
    bool CanFill(const nxExchangeOrder& order) const;
    // A resting order of the same owner that the order would trade with; null if there is none.
    const nxExchangeOrder* FindOwnCounterpart(const nxExchangeOrder& order) const;
    // What an order would have ahead if it joined the queue at its price now; null where that is not known.
    nxVolume GetAhead(const nxExchangeOrder& order) const;
    // Best prices of the resting orders of an owner; null where there is none.
    nxDecimal GetOwnBest(bool isBuy, unsigned int owner) const;
    // What stops look at: the last trade, or, until there was one, the ask for a buy and the bid for a sell.
    nxDecimal GetStopReference(bool isBuy) const;

    // What the market did, after the market shows it. A bar is met by orders that came before its time: its
    // open may be older than what the others were sent upon.
    void OnQuote(const nxFeedQuote& quote);
    void OnDepth(std::span<const nxFeedLevel> levels);
    void OnBar(const nxFeedBar& bar, long long time);
    // Looks at the whole market anew, after a time in which the book was not told of it.
    void Resume();
    // Takes the market as it is, for one that began without the book.
    void Join();

    // By price, then in the order of their queue; for tests and queries.
    void ForEachOrder(const std::function<void(const nxExchangeOrder&)>& visit) const;

private:
    struct Level
    {
        std::vector<nxExchangeOrder*> orders;  // in the order of the queue: what is ahead of them ascends
        nxVolume shown;                        // of the recorded market; null where it is not shown
    };
    using Levels = std::map<nxDecimal, Level>;
    struct Taken
    {
        unsigned int shown = 0;
        unsigned int volume = 0;
    };
    struct Best
    {
        nxDecimal price;
        nxVolume volume;
        bool operator==(const Best&) const = default;
    };

    static constexpr unsigned int Unlimited = 0xFFFFFFFD;

    // fn(price, volume) from the best level on until it answers false.
    template <class Visit>
    void _ForEachShown(bool asks, Visit visit) const;
    // fn(price, level) of the own orders from the best price on until it answers false; the level may go.
    template <class Visit>
    void _ForEachOwn(bool buys, Visit visit);
    // The same over those of the other side that the order reaches, to look at.
    template <class Visit>
    void _ForEachReached(const nxExchangeOrder& order, Visit visit) const;

    Best _GetBest(bool asks) const;
    nxVolume _GetShown(bool bids, const nxDecimal& price) const;
    unsigned int _GetFree(bool asks, const nxDecimal& price, unsigned int shown) const;
    void _NoteTaken(bool asks, const nxDecimal& price, unsigned int shown, unsigned int volume);
    void _Take(nxExchangeOrder& order);
    void _TakeOwn(nxExchangeOrder& order, const nxDecimal* bound);
    void _Rest(nxExchangeOrder& order);
    void _Fill(nxExchangeOrder& order, const nxDecimal& price, unsigned int volume, bool isMaker,
               nxFillCause cause);
    void _FillResting(Level& level, std::size_t& index, const nxDecimal& price, unsigned int& budget,
                      nxFillCause cause);
    bool _Replenish(Level& level, std::size_t index);
    void _FillThrough(Level& level, const nxDecimal& price, unsigned int& budget, nxFillCause cause);
    void _FillQueue(Level& level, const nxDecimal& price, unsigned int traded, unsigned int budget);
    void _OnTrade(const nxDecimal& price, const nxVolume& traded, const nxBuySellEnum& aggressor);
    void _RefreshLevel(Level& level, const nxVolume& shown);
    void _RefreshAll(bool bids);
    bool _RefreshBest(bool asks, bool isGiven);
    // isAnew: the data have just shown the quotes that the orders meet.
    void _MeetQuotes(bool buys, bool isAnew);
    bool _TryStop(nxExchangeOrder& order);
    // trade: what may trigger them; null for quotes. isAnew: whether the bids and asks are from behind it.
    void _TryStops(const nxDecimal& trade, const bool (&isAnew)[2]);
    void _Trigger(nxExchangeOrder& order);
    nxDecimal _FindStopInBar(nxExchangeOrder& order, const nxFeedBar& bar) const;
    bool _FillByBar(nxExchangeOrder& order, const nxFeedBar& bar, unsigned int& budget);
    Levels& _GetLevels(bool buys) { return buys ? _buys : _sells; }
    const Levels& _GetLevels(bool buys) const { return buys ? _buys : _sells; }

    const nxMarketProduct& _market;
    const nxFillModel _model;
    nxExactRandom& _random;
    Listener& _listener;
    Levels _buys, _sells;                      // limit orders that rest
    std::vector<nxExchangeOrder*> _unlimited;  // market orders that found too little
    std::vector<nxExchangeOrder*> _stops;      // that have not been triggered
    std::map<nxDecimal, Taken> _taken[2];      // of shown bids, of shown asks
    Best _best[2];                             // bid and ask as last seen, where the data hold only those
    unsigned int _participation = 0;
    bool _usesDepth = false;
    bool _hasTraded = false;
    bool _isOfBars = false;
};

template <class Visit>
void nxExchangeBook::_ForEachShown(bool asks, Visit visit) const
{
    if (_isOfBars) return;
    if (!_usesDepth) {
        const Best best = _GetBest(asks);
        // Data without sizes do not say how much there is.
        if (best.price.IsValid())
            visit(best.price, best.volume.IsValid() ? best.volume.GetValue() : Unlimited);
    } else if (asks) {
        for (const auto& [price, entry] : _market.GetDepth().GetAskMap())
            if (!visit(price, entry.volume)) return;
    } else {
        const nxMarketDepth::Map& bids = _market.GetDepth().GetBidMap();
        for (auto level = bids.rbegin(); level != bids.rend(); ++level)
            if (!visit(level->first, level->second.volume)) return;
    }
}

template <class Visit>
void nxExchangeBook::_ForEachOwn(bool buys, Visit visit)
{
    Levels& levels = _GetLevels(buys);
    if (levels.empty()) return;
    for (auto current = buys ? std::prev(levels.end()) : levels.begin();;) {
        const bool more = visit(current->first, current->second);
        const bool isLast = current == (buys ? levels.begin() : std::prev(levels.end()));
        const auto next = isLast ? current : buys ? std::prev(current) : std::next(current);
        if (current->second.orders.empty()) levels.erase(current);
        if (!more || isLast) return;
        current = next;
    }
}

template <class Visit>
void nxExchangeBook::_ForEachReached(const nxExchangeOrder& order, Visit visit) const
{
    const auto go = [&](auto level, const auto end) {
        for (; level != end && order.IsWithin(level->first); ++level)
            for (const nxExchangeOrder* own : level->second.orders)
                if (!visit(*own)) return;
    };
    if (order.kind.isBuy) {
        go(_sells.begin(), _sells.end());
    } else {
        go(_buys.rbegin(), _buys.rend());
    }
}

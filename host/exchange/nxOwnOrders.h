#pragma once

#include <map>
#include <vector>

#include "host/exchange/nxExchangeOrder.h"

// The orders that wait in the market of one product: limits by price, each price with its queue; market
// orders that found too little; stops that have not been triggered. The orders outlive their stay here.
class nxOwnOrders
{
public:
    struct Level
    {
        std::vector<nxExchangeOrder*> orders;  // in the order of the queue: what is ahead of them ascends
        nxVolume shown;                        // of the recorded market; null where it is not shown
        unsigned int cancelled = 0;            // of what was shown; a trade that comes late may explain it
        long long cancelledAt = 0;             // the last of it

        // At the end of the queue, so behind those who cancelled, too.
        void Join(nxExchangeOrder& order) const
        {
            order.ahead = shown;
            order.movedUp = cancelled;
        }
        void NoteCancelled(unsigned int lots, long long time)
        {
            cancelled += lots;
            cancelledAt = time;
        }
        void ForgetCancelled()
        {
            cancelled = 0;
            for (nxExchangeOrder* order : orders)
                order->movedUp = 0;
        }
        void Erase(std::size_t index) { orders.erase(orders.begin() + static_cast<std::ptrdiff_t>(index)); }
    };
    struct BestFirst
    {
        nxSide side = nxSide::Buy;
        bool operator()(const nxDecimal& a, const nxDecimal& b) const { return nxIsBetter(side, a, b); }
    };
    using Levels = std::map<nxDecimal, Level, BestFirst>;

    bool IsEmpty() const
    {
        return _unlimited.empty() && _stops.empty() && _levels.buy.empty() && _levels.sell.empty();
    }
    Levels& GetLevels(nxSide side) { return _levels[side]; }
    // Null where no order waits.
    const Level* FindLevel(nxSide side, const nxDecimal& price) const;
    std::vector<nxExchangeOrder*>& GetUnlimited() { return _unlimited; }
    std::vector<nxExchangeOrder*>& GetStops() { return _stops; }
    // Out of where it waits.
    void Remove(nxExchangeOrder& order);

    // fn(price, level) from the best price on until it answers false; the level may lose its orders.
    template <class Visit>
    void ForEachLevel(nxSide side, Visit visit);
    // fn(order) over those of the other side that the order reaches, until it answers false.
    template <class Visit>
    void ForEachReached(const nxExchangeOrder& order, Visit visit) const;
    // fn(order) over the limits of a side, from the best price on, until it answers false.
    template <class Visit>
    void ForEachLimit(nxSide side, Visit visit) const;
    // Of an owner's limits; null where there is none.
    nxDecimal GetBestPrice(nxSide side, unsigned int owner) const;

private:
    nxBySide<Levels> _levels{Levels(BestFirst{nxSide::Buy}), Levels(BestFirst{nxSide::Sell})};
    std::vector<nxExchangeOrder*> _unlimited;
    std::vector<nxExchangeOrder*> _stops;
};

template <class Visit>
void nxOwnOrders::ForEachLevel(nxSide side, Visit visit)
{
    Levels& levels = _levels[side];
    for (auto current = levels.begin(); current != levels.end();) {
        const bool more = visit(current->first, current->second);
        current = current->second.orders.empty() ? levels.erase(current) : std::next(current);
        if (!more) return;
    }
}

template <class Visit>
void nxOwnOrders::ForEachLimit(nxSide side, Visit visit) const
{
    for (const auto& [price, level] : _levels[side])
        for (const nxExchangeOrder* own : level.orders)
            if (!visit(*own)) return;
}

template <class Visit>
void nxOwnOrders::ForEachReached(const nxExchangeOrder& order, Visit visit) const
{
    ForEachLimit(nxGetOpposite(order.kind.side),
                 [&](const nxExchangeOrder& own) { return order.IsWithin(own.terms.price) && visit(own); });
}

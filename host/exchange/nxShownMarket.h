#pragma once

#include <boost/container/flat_map.hpp>

#include <algorithm>
#include <utility>

#include "host/exchange/nxAssumedBook.h"
#include "host/market/nxMarketProduct.h"

// What the recorded market of one product offers: the levels that its data show, less what the market's own
// trades took since they were shown, less what orders took. What an order takes stays taken: when the data
// give the level less, as much of it as fits is still taken; when they give more, the more is free; when the
// level goes and comes back, all of it is.
class nxShownMarket
{
public:
    // Volume of a level of data without sizes, which do not say how much there is.
    static constexpr unsigned int Unlimited = 0xFFFFFFFD;

    // The market outlives it.
    explicit nxShownMarket(const nxMarketProduct& market) : _market(market) {}

    // Whether the data hold depth, and not only the best prices.
    bool UsesDepth() const { return _usesDepth; }
    // True when they did not before.
    bool UseDepth() { return !std::exchange(_usesDepth, true); }

    // fn(price, free) from the best level of the side on until it answers false; free: what can be taken.
    template <class Visit>
    void ForEach(nxSide side, Visit visit) const;
    // Null where the data hold no level.
    nxDecimal GetBestPrice(nxSide side) const;
    // What stands at a price, taken or not: 0 where nobody is, null where that is not shown.
    nxVolume GetVolume(nxSide side, const nxDecimal& price) const;
    void Take(nxSide side, const nxDecimal& price, unsigned int volume);
    // The same of what is assumed behind the best price of data that show no other; nothing for other data.
    template <class Visit>
    void ForEachAssumed(nxSide side, const nxDecimal& tick, Visit visit);
    // Of the assumed level that is visited right now.
    void TakeAssumed(nxSide side, unsigned int volume) { _assumed[side].Take(volume); }

    // The market's own trade: what is better than its price is gone, and at the price that volume of the
    // side, until the data show these levels anew.
    void TakeTraded(nxSide side, const nxDecimal& price, const nxVolume& volume);
    // The data have named the level.
    void ShowLevel(nxSide side, const nxDecimal& price, unsigned int volume);
    // Looks at the best price of data that show no other. isGiven: the data named it, be it as before. True
    // when it is another one now, price or volume.
    bool ShowBest(nxSide side, bool isGiven);
    // Takes the market as it is.
    void Join();
    // Nothing is taken, and the best prices are to be looked at anew.
    void Forget();

private:
    // Of what the data show at a price.
    struct Gone
    {
        unsigned int traded = 0;  // by the market, since the data showed it
        unsigned int taken = 0;   // by orders
    };
    // They come and go with the market's trades, and mostly are few.
    using Levels = boost::container::flat_map<nxDecimal, Gone>;

    static void _Show(Levels& levels, Levels::iterator level, unsigned int volume);
    // fn(price, volume) as the data show it. from: of data of depth without the levels that are better; null:
    // with all.
    template <class Visit>
    void _ForEachShown(nxSide side, Visit visit, const nxDecimal& from = {}) const;

    const nxMarketProduct& _market;
    nxBySide<Levels> _gone;
    // Where the market has traded through: what depth shows better than that is gone, all of it. Most trades
    // come to where the one before was, and so do not walk there again. Null: nowhere.
    nxBySide<nxDecimal> _passed;
    nxBySide<nxBestQuote> _best;  // as last seen, where the data hold only those
    nxBySide<nxAssumedBook> _assumed;
    bool _usesDepth = false;
};

template <class Visit>
void nxShownMarket::ForEachAssumed(nxSide side, const nxDecimal& tick, Visit visit)
{
    const nxBestQuote best = _market.GetBest(side);
    // Where nobody stands at the best price, nobody is assumed behind it.
    if (_usesDepth || !best.price.IsValid() || !best.volume.IsValid() || best.volume == 0u) return;
    _assumed[side].ForEach(side, best.price, tick, std::max(1u, _market.GetMeanSize(side)), visit);
}

template <class Visit>
void nxShownMarket::_ForEachShown(nxSide side, Visit visit, const nxDecimal& from) const
{
    if (!_usesDepth) {
        const nxBestQuote best = _market.GetBest(side);
        if (best.price.IsValid())
            visit(best.price, best.volume.IsValid() ? best.volume.GetValue() : Unlimited);
        return;
    }
    _market.GetLevels(side).ForEach(
        [&](const nxBookSide::Level& level) { return visit(level.price, level.volume); }, from);
}

template <class Visit>
void nxShownMarket::ForEach(nxSide side, Visit visit) const
{
    _ForEachShown(side, [&](const nxDecimal& price, unsigned int shown) {
        const auto level = _gone[side].find(price);
        if (level == _gone[side].end()) return visit(price, shown);
        const unsigned long long gone = 0ull + level->second.traded + level->second.taken;
        return visit(price, gone < shown ? static_cast<unsigned int>(shown - gone) : 0u);
    });
}

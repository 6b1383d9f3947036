#pragma once

#include <map>
#include <utility>

#include "host/market/nxMarketProduct.h"

// What the recorded market of one product offers: the levels that its data show, less what orders took of
// them. What is taken from a level stays taken until the data give that level another volume, or none.
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

    // fn(price, volume) from the best level of the side on until it answers false.
    template <class Visit>
    void ForEach(nxSide side, Visit visit) const;
    // Null where the data hold no level.
    nxDecimal GetBestPrice(nxSide side) const;
    // At a price: 0 where nobody is, null where that is not shown.
    nxVolume GetVolume(nxSide side, const nxDecimal& price) const;
    // What is left of the shown volume.
    unsigned int GetFree(nxSide side, const nxDecimal& price, unsigned int shown) const;
    void Take(nxSide side, const nxDecimal& price, unsigned int shown, unsigned int volume);

    // The data have named the level. What was taken is free again if its volume is another.
    void TakeLevel(nxSide side, const nxDecimal& price, unsigned int volume);
    // Looks at the best price of data that show no other. True when it is another one now, price or volume.
    bool TakeBest(nxSide side);
    // Takes the market as it is.
    void Join();
    // Nothing is taken, and the best prices are to be looked at anew.
    void Forget();

private:
    struct Taken
    {
        unsigned int shown = 0;
        unsigned int volume = 0;
    };

    const nxMarketProduct& _market;
    nxBySide<std::map<nxDecimal, Taken>> _taken;
    nxBySide<nxBestQuote> _best;  // as last seen, where the data hold only those
    bool _usesDepth = false;
};

template <class Visit>
void nxShownMarket::ForEach(nxSide side, Visit visit) const
{
    if (!_usesDepth) {
        const nxBestQuote best = _market.GetBest(side);
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

#pragma once

#include <map>

#include "base/records/nxMarketDepthMapEntry.h"
#include "base/values/nxDecimal.h"
#include "base/values/nxPriceManipulator.h"
#include "scriptFramework/lua/nxAlgoObject.h"
#include "scriptFramework/lua/nxLuaWrapper.h"

class nxMarketDepth;

// A script's read-only view of a product's order book: the argument of OnMarketDepth, and the object behind a
// product's `depth`. It points at a record of the host, which must be set before a script reaches the view
// and must not change during a callback.
//
// Both maps run in ascending order of price and levels count from 0 at the lowest: ask(0) is the best ask,
// but bid(0) is the worst bid, and the best one is bid(bidCount - 1).
class nxAlgoMarketDepthObject : public nxAlgoObject
{
public:
    static constexpr const char* className = "nxAlgoMarketDepthObject";
    static constexpr bool endsWithEvent = true;
    static const nxLuaWrapper<nxAlgoMarketDepthObject>::FunctionType Functions[];
    static const nxLuaWrapper<nxAlgoMarketDepthObject>::PropertyType Properties[];

    nxAlgoMarketDepthObject(nxAlgoJobInterface* job, unsigned int id);
    nxAlgoMarketDepthObject(nxAlgoJobInterface* job, const nxMarketDepth* depth, unsigned int id);

    void SetSnapshot(const nxMarketDepth* depth) { _marketDepth = depth; }
    // The tick rules by which the volume functions round a script's price.
    void SetPriceManipulator(const nxPriceManipulator& manipulator) { _priceManipulator = manipulator; }

    // By level, which must be below the count: anything else is an error with an empty text.
    bool bid(nxLuaParameters&, nxLuaResults&);
    bool bidQty(nxLuaParameters&, nxLuaResults&);
    bool ask(nxLuaParameters&, nxLuaResults&);
    bool askQty(nxLuaParameters&, nxLuaResults&);
    // The sum of the levels from the best one outward to a price, inclusive, in 32 bits that wrap.
    bool getBidVolumeAtPrice(nxLuaParameters&, nxLuaResults&);
    bool getAskVolumeAtPrice(nxLuaParameters&, nxLuaResults&);
    // Names that stand reserved: they do nothing and give nothing.
    bool getBidPriceWithVolume(nxLuaParameters&, nxLuaResults&);
    bool getAskPriceWithVolume(nxLuaParameters&, nxLuaResults&);

    bool Get_id(nxLuaResults&);
    bool Get_bidCount(nxLuaResults&);
    bool Get_askCount(nxLuaResults&);

private:
    using Levels = std::map<nxDecimal, nxMarketDepthMapEntry>;

    static const Levels::value_type* _FindLevel(nxLuaParameters& parameters, const Levels& levels);
    nxDecimal _ToPrice(double number) const;
    template <class Level, class IsWithin>
    bool _GiveVolume(nxLuaParameters&, nxLuaResults&, Level first, Level last, IsWithin isWithin) const;

    const nxMarketDepth* _marketDepth = nullptr;
    unsigned int _id;
    nxPriceManipulator _priceManipulator;
};

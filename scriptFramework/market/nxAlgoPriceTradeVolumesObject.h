#pragma once

#include "base/records/nxPriceTradeVolumes.h"
#include "base/values/nxDecimal.h"
#include "scriptFramework/lua/nxAlgoObject.h"
#include "scriptFramework/lua/nxLuaWrapper.h"

// The volume traded at each price of a product: the argument of OnPriceTradeVolumes, and the object behind a
// product's `priceTradeVolumes`. Holds its own record, which the host keeps up to date.
class nxAlgoPriceTradeVolumesObject : public nxAlgoObject
{
public:
    static constexpr const char* className = "nxAlgoPriceTradeVolumesObject";
    static constexpr bool endsWithEvent = true;
    static const nxLuaWrapper<nxAlgoPriceTradeVolumesObject>::FunctionType Functions[];
    static const nxLuaWrapper<nxAlgoPriceTradeVolumesObject>::PropertyType Properties[];

    nxAlgoPriceTradeVolumesObject(nxAlgoJobInterface* job, unsigned int id);

    // The tick to which a script's price is rounded before it is looked up; until it is set, prices are taken
    // at up to ten places.
    void SetTickSize(const nxDecimal& tickSize) { _tickSize = tickSize; }
    void UpdatePriceTradeVolumes(const nxPriceTradeVolumes& update)
    {
        _priceTradeVolumes.ApplyUpdate(update);
    }

    bool getVolumeAtPrice(nxLuaParameters&, nxLuaResults&);
    // Price and volume, counted from 1 at the lowest price; two nils beyond the last.
    bool getPriceVolumeAtIndex(nxLuaParameters&, nxLuaResults&);

    bool Get_id(nxLuaResults&);
    bool Get_count(nxLuaResults&);

private:
    nxPriceTradeVolumes _priceTradeVolumes;
    unsigned int _id;
    nxDecimal _tickSize;
};

#pragma once

#include <map>
#include <string>

#include "base/enums/nxPriceTradeVolumesUpdateTypeEnum.h"
#include "base/records/nxObject.h"
#include "base/values/nxDecimal.h"
#include "base/values/nxValueWrapper.h"

// The volume traded at each price of a product, as a whole or as an update to it.
class nxPriceTradeVolumes : public nxObject
{
public:
    using Map = std::map<nxDecimal, nxVolume>;

    nxPriceTradeVolumes* CopyInstance() const override { return new nxPriceTradeVolumes(*this); }

    // Ascends by price.
    const Map& GetPriceMap() const { return _prices; }
    // Null where nothing was traded.
    nxVolume GetTradeVolume(const nxDecimal& price) const;

    // Adds a trade; volumes stop at the greatest that is not a mark. Left alone by a price or volume that is
    // not valid.
    void AddTrade(const nxDecimal& price, const nxVolume& volume);

    // Nothing traded any more; text and type stay.
    void Clear() { _prices.clear(); }

    // Merges by the update's type: a delta, or an update without a type, adds its volumes as AddTrade does;
    // a snapshot replaces all volumes by its own; a reset clears them and adds its own, of which it commonly
    // has none. The text is taken over when the update has one; this record's type stays.
    void ApplyUpdate(const nxPriceTradeVolumes& update);

    const std::string& GetText() const { return _text; }
    void SetText(const std::string& text) { _text = text; }
    const nxPriceTradeVolumesUpdateTypeEnum& GetUpdateType() const { return _updateType; }
    void SetUpdateType(const nxPriceTradeVolumesUpdateTypeEnum& updateType) { _updateType = updateType; }

private:
    std::string _text;
    Map _prices;
    nxPriceTradeVolumesUpdateTypeEnum _updateType;
};

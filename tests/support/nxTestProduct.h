#pragma once

#include <string>

#include "scriptFramework/market/nxAlgoProductObject.h"

// A product whose answers to the library are set by the test.
class nxTestProduct : public nxAlgoProductObject
{
public:
    nxTestProduct(nxAlgoJobInterface* job, const nxGenericProductID& productID, unsigned int id)
        : nxAlgoProductObject(job, productID, id)
    {
    }

    nxPrice price;
    nxMarketDepth depth;
    unsigned int state = 0;
    nxDecimal ownBestBid;
    nxDecimal ownBestAsk;
    double dayPandL = 0.0;
    double totalPandL = 0.0;
    bool isStrategy = false;
    std::string flattened;  // one letter for each call of setFlattenOnExit: t or f

    using nxAlgoProductObject::_GetDPForAverages;
    using nxAlgoProductObject::_GetPosition;
    using nxAlgoProductObject::_GetPriceTradeVolumes;
    using nxAlgoProductObject::_IsDepthWanted;
    using nxAlgoProductObject::_IsPriceWanted;

protected:
    void _GetPriceSnapshot(nxPrice& record) const override { record = price; }
    void _GetDepthSnapshot(nxMarketDepth& record) const override { record = depth; }
    void _GetState(nxProductStateBitMask& mask) const override { mask |= state; }
    nxDecimal _GetOwnBestAsk() const override { return ownBestAsk; }
    nxDecimal _GetOwnBestBid() const override { return ownBestBid; }
    double _GetDayPandL() const override { return dayPandL; }
    double _GetTotalPandL() const override { return totalPandL; }
    void _SetFlattenOnExit(bool flatten) override { flattened += flatten ? 't' : 'f'; }
    bool _IsStrategy() const override { return isStrategy; }
};

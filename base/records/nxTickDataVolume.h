#pragma once

#include "base/records/nxObject.h"

// The volumes behind a bar, by side and kind of trade.
class nxTickDataVolume : public nxObject
{
public:
    nxTickDataVolume* CopyInstance() const override { return new nxTickDataVolume(*this); }

    unsigned int volume = 0;
    unsigned int buyVolume = 0;
    unsigned int sellVolume = 0;
    unsigned int tradeCount = 0;
    unsigned int buyTradeCount = 0;
    unsigned int sellTradeCount = 0;
};

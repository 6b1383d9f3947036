#pragma once

#include "base/records/nxObject.h"
#include "base/time/nxDateTime.h"
#include "base/values/nxDecimal.h"

// One bar of a product's history. Time and prices are null until they are set; volumes are plain counts from
// 0.
class nxTickData : public nxObject
{
public:
    nxTickData* CopyInstance() const override { return new nxTickData(*this); }

    const nxDateTime& GetTime() const { return _time; }
    const nxDecimal& GetOpen() const { return _open; }
    const nxDecimal& GetHigh() const { return _high; }
    const nxDecimal& GetLow() const { return _low; }
    const nxDecimal& GetClose() const { return _close; }
    unsigned int GetVolume() const { return _volume; }
    unsigned int GetBuyVolume() const { return _buyVolume; }
    unsigned int GetSellVolume() const { return _sellVolume; }

    void SetTime(const nxDateTime& value) { _time = value; }
    void SetOpen(const nxDecimal& value) { _open = value; }
    void SetHigh(const nxDecimal& value) { _high = value; }
    void SetLow(const nxDecimal& value) { _low = value; }
    void SetClose(const nxDecimal& value) { _close = value; }
    void SetVolume(unsigned int value) { _volume = value; }
    void SetBuyVolume(unsigned int value) { _buyVolume = value; }
    void SetSellVolume(unsigned int value) { _sellVolume = value; }

private:
    nxDateTime _time;
    nxDecimal _open;
    nxDecimal _high;
    nxDecimal _low;
    nxDecimal _close;
    unsigned int _volume = 0;
    unsigned int _buyVolume = 0;
    unsigned int _sellVolume = 0;
};

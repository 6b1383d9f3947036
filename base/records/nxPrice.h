#pragma once

#include "base/enums/nxBitMasks.h"
#include "base/enums/nxBuySellEnum.h"
#include "base/values/nxDecimal.h"
#include "base/values/nxValueWrapper.h"

// One product's top of book and daily statistics; prices and volumes are null until they are set. As an
// update, it holds no-change in every field that the update leaves alone. A plain value: a copy touches no
// heap.
class nxPrice
{
public:
    // The better of the direct and the implied quote. On equal prices the volumes add up, to at most the
    // greatest volume that is not a mark. A side that is not valid gives way to the other; with neither, both
    // results are null.
    void GetBestBidPriceAndVolume(nxDecimal& price, nxVolume& volume) const
    {
        if (_impliedBidPrice.IsValid()) {
            _GetBestBidOfBoth(price, volume);
        } else {
            _GetDirect(_bidPrice, _bidVolume, price, volume);
        }
    }
    void GetBestAskPriceAndVolume(nxDecimal& price, nxVolume& volume) const
    {
        if (_impliedAskPrice.IsValid()) {
            _GetBestAskOfBoth(price, volume);
        } else {
            _GetDirect(_askPrice, _askVolume, price, volume);
        }
    }

    // Takes over every field of `update` that is not at no-change; a null overwrites.
    void ApplyUpdate(const nxPrice& update);
    // Brings all fields to no-change.
    void SetNoChange();

    const nxDecimal& GetBidPrice() const { return _bidPrice; }
    const nxVolume& GetBidVolume() const { return _bidVolume; }
    const nxDecimal& GetAskPrice() const { return _askPrice; }
    const nxVolume& GetAskVolume() const { return _askVolume; }
    const nxDecimal& GetImpliedBidPrice() const { return _impliedBidPrice; }
    const nxVolume& GetImpliedBidVolume() const { return _impliedBidVolume; }
    const nxDecimal& GetImpliedAskPrice() const { return _impliedAskPrice; }
    const nxVolume& GetImpliedAskVolume() const { return _impliedAskVolume; }
    const nxDecimal& GetLastPrice() const { return _lastPrice; }
    const nxVolume& GetLastVolume() const { return _lastVolume; }
    const nxBuySellEnum& GetLastPriceBuySellIndicator() const { return _lastPriceBuySellIndicator; }
    const nxVolume& GetTotalTradedVolume() const { return _totalTradedVolume; }
    const nxDecimal& GetOpenPrice() const { return _openPrice; }
    const nxDecimal& GetHighPrice() const { return _highPrice; }
    const nxDecimal& GetLowPrice() const { return _lowPrice; }
    const nxDecimal& GetClosePrice() const { return _closePrice; }
    const nxDecimal& GetPreviousClosePrice() const { return _previousClosePrice; }
    const nxDecimal& GetSettlementPrice() const { return _settlementPrice; }
    const nxDecimal& GetPreviousSettlementPrice() const { return _previousSettlementPrice; }
    const nxSettlementPriceBitMask& GetSettlementPriceType() const { return _settlementPriceType; }
    const nxDecimal& GetTheoreticalPrice() const { return _theoreticalPrice; }
    const nxDecimal& GetTheoretical2Price() const { return _theoretical2Price; }

    void SetBidPrice(const nxDecimal& value) { _bidPrice = value; }
    void SetBidVolume(const nxVolume& value) { _bidVolume = value; }
    void SetAskPrice(const nxDecimal& value) { _askPrice = value; }
    void SetAskVolume(const nxVolume& value) { _askVolume = value; }
    void SetImpliedBidPrice(const nxDecimal& value) { _impliedBidPrice = value; }
    void SetImpliedBidVolume(const nxVolume& value) { _impliedBidVolume = value; }
    void SetImpliedAskPrice(const nxDecimal& value) { _impliedAskPrice = value; }
    void SetImpliedAskVolume(const nxVolume& value) { _impliedAskVolume = value; }
    void SetLastPrice(const nxDecimal& value) { _lastPrice = value; }
    void SetLastVolume(const nxVolume& value) { _lastVolume = value; }
    void SetLastPriceBuySellIndicator(const nxBuySellEnum& value) { _lastPriceBuySellIndicator = value; }
    void SetTotalTradedVolume(const nxVolume& value) { _totalTradedVolume = value; }
    void SetOpenPrice(const nxDecimal& value) { _openPrice = value; }
    void SetHighPrice(const nxDecimal& value) { _highPrice = value; }
    void SetLowPrice(const nxDecimal& value) { _lowPrice = value; }
    void SetClosePrice(const nxDecimal& value) { _closePrice = value; }
    void SetPreviousClosePrice(const nxDecimal& value) { _previousClosePrice = value; }
    void SetSettlementPrice(const nxDecimal& value) { _settlementPrice = value; }
    void SetPreviousSettlementPrice(const nxDecimal& value) { _previousSettlementPrice = value; }
    void SetSettlementPriceType(const nxSettlementPriceBitMask& value) { _settlementPriceType = value; }
    void SetTheoreticalPrice(const nxDecimal& value) { _theoreticalPrice = value; }
    void SetTheoretical2Price(const nxDecimal& value) { _theoretical2Price = value; }

private:
    struct Fields;  // the list of them all

    static void _GetDirect(const nxDecimal& directPrice, const nxVolume& directVolume, nxDecimal& price,
                           nxVolume& volume)
    {
        const bool hasPrice = directPrice.IsValid();
        price = hasPrice ? directPrice : nxDecimal();
        volume = hasPrice ? directVolume : nxVolume();
    }
    void _GetBestBidOfBoth(nxDecimal& price, nxVolume& volume) const;
    void _GetBestAskOfBoth(nxDecimal& price, nxVolume& volume) const;

    nxDecimal _bidPrice;
    nxVolume _bidVolume;
    nxDecimal _askPrice;
    nxVolume _askVolume;
    nxDecimal _impliedBidPrice;
    nxVolume _impliedBidVolume;
    nxDecimal _impliedAskPrice;
    nxVolume _impliedAskVolume;
    nxDecimal _lastPrice;
    nxVolume _lastVolume;
    nxBuySellEnum _lastPriceBuySellIndicator;
    nxVolume _totalTradedVolume;
    nxDecimal _openPrice;
    nxDecimal _highPrice;
    nxDecimal _lowPrice;
    nxDecimal _closePrice;
    nxDecimal _previousClosePrice;
    nxDecimal _settlementPrice;
    nxDecimal _previousSettlementPrice;
    nxSettlementPriceBitMask _settlementPriceType;
    nxDecimal _theoreticalPrice;
    nxDecimal _theoretical2Price;
};

#pragma once

#include <memory>

#include "base/enums/nxBitMasks.h"
#include "base/enums/nxBuySellEnum.h"
#include "base/enums/nxSyntheticStrategyLegCalculationPriceTypeEnum.h"
#include "base/records/nxObject.h"
#include "base/records/nxProductID.h"
#include "base/values/nxDecimal.h"

// One leg of a strategy: a product, the side it trades on when the strategy is bought, and its share in the
// strategy's price and volume. Copies share the product id, which never changes.
class nxStrategyLeg : public nxObject
{
public:
    nxStrategyLeg* CopyInstance() const override { return new nxStrategyLeg(*this); }

    // Good while the leg lives; null until it is set.
    const nxProductID* GetProductID() const { return _productID.get(); }
    void SetProductID(const nxProductID& productID)
    {
        _productID = std::make_shared<const nxProductID>(productID);
    }

    const nxBuySellEnum& GetBuySell() const { return _buySell; }
    const nxDecimal& GetPriceRatio() const { return _priceRatio; }
    const nxDecimal& GetTradeRatio() const { return _tradeRatio; }
    const nxStrategyLegFlagsBitMask& GetFlags() const { return _flags; }
    const nxSyntheticStrategyLegCalculationPriceTypeEnum& GetCalculationPriceType() const
    {
        return _calculationPriceType;
    }

    void SetBuySell(const nxBuySellEnum& value) { _buySell = value; }
    void SetPriceRatio(const nxDecimal& value) { _priceRatio = value; }
    void SetTradeRatio(const nxDecimal& value) { _tradeRatio = value; }
    void SetFlags(const nxStrategyLegFlagsBitMask& value) { _flags = value; }
    void SetCalculationPriceType(const nxSyntheticStrategyLegCalculationPriceTypeEnum& value)
    {
        _calculationPriceType = value;
    }

private:
    std::shared_ptr<const nxProductID> _productID;
    nxBuySellEnum _buySell;
    nxDecimal _priceRatio;
    nxDecimal _tradeRatio;
    nxStrategyLegFlagsBitMask _flags;
    nxSyntheticStrategyLegCalculationPriceTypeEnum _calculationPriceType;
};

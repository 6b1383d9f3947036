#pragma once

#include "base/enums/nxBitMask.h"
#include "base/enums/nxNamedBitMask.h"

// The masks of 32 bits. They differ in name only, which keeps one from standing in for another; whoever tests
// a bit names it where the test stands.

class nxSettlementPriceBitMask final
    : public nxNamedBitMask<nxBitMask, unsigned int, "nxSettlementPriceBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxDatabaseModeBitMask final : public nxNamedBitMask<nxBitMask, unsigned int, "nxDatabaseModeBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxProductStateBitMask final : public nxNamedBitMask<nxBitMask, unsigned int, "nxProductStateBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxIntraDayProductDefinitionUpdateBitMask final
    : public nxNamedBitMask<nxBitMask, unsigned int, "nxIntraDayProductDefinitionUpdateBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxOrderBookInterestBitMask final
    : public nxNamedBitMask<nxBitMask, unsigned int, "nxOrderBookInterestBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxDataObjectCacheObserverBitMask final
    : public nxNamedBitMask<nxBitMask, unsigned int, "nxDataObjectCacheObserverBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxAttributeChangeBitMask final
    : public nxNamedBitMask<nxBitMask, unsigned int, "nxAttributeChangeBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxAttributeTrendBitMask final
    : public nxNamedBitMask<nxBitMask, unsigned int, "nxAttributeTrendBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxAttributeTreeDrilldownBitMask final
    : public nxNamedBitMask<nxBitMask, unsigned int, "nxAttributeTreeDrilldownBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxSecurityNodeAccessBaseBitMask final
    : public nxNamedBitMask<nxBitMask, unsigned int, "nxSecurityNodeAccessBaseBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxProductTreeSelectableNodeBaseBitMask final
    : public nxNamedBitMask<nxBitMask, unsigned int, "nxProductTreeSelectableNodeBaseBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxProductTypeGUIDisplayBaseBitMask final
    : public nxNamedBitMask<nxBitMask, unsigned int, "nxProductTypeGUIDisplayBaseBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxGenericDataAccessLevelBaseBitMask final
    : public nxNamedBitMask<nxBitMask, unsigned int, "nxGenericDataAccessLevelBaseBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxKeyboardModifierBitMask final
    : public nxNamedBitMask<nxBitMask, unsigned int, "nxKeyboardModifierBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxFixMDQuoteConditionBitMask final
    : public nxNamedBitMask<nxBitMask, unsigned int, "nxFixMDQuoteConditionBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxFixMDTradeConditionBitMask final
    : public nxNamedBitMask<nxBitMask, unsigned int, "nxFixMDTradeConditionBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxPriceInterestBitMask final : public nxNamedBitMask<nxBitMask, unsigned int, "nxPriceInterestBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxDataInterestBitMask final : public nxNamedBitMask<nxBitMask, unsigned int, "nxDataInterestBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxSecurityNodeChangeBitMask final
    : public nxNamedBitMask<nxBitMask, unsigned int, "nxSecurityNodeChangeBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxHIDEventTargetFilterBitMask final
    : public nxNamedBitMask<nxBitMask, unsigned int, "nxHIDEventTargetFilterBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxOrderTransactionBroadcastBitMask final
    : public nxNamedBitMask<nxBitMask, unsigned int, "nxOrderTransactionBroadcastBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxExchangePriceFilterBitMask final
    : public nxNamedBitMask<nxBitMask, unsigned int, "nxExchangePriceFilterBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxConditionalOrderFlagsBitMask final
    : public nxNamedBitMask<nxBitMask, unsigned int, "nxConditionalOrderFlagsBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxStrategyLegFlagsBitMask final
    : public nxNamedBitMask<nxBitMask, unsigned int, "nxStrategyLegFlagsBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxUserOrderFlagsBitMask final
    : public nxNamedBitMask<nxBitMask, unsigned int, "nxUserOrderFlagsBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxOrderTransactionFlagsBitMask final
    : public nxNamedBitMask<nxBitMask, unsigned int, "nxOrderTransactionFlagsBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxOrderFillSummaryFieldBitMask final
    : public nxNamedBitMask<nxBitMask, unsigned int, "nxOrderFillSummaryFieldBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

// The options of nxDataObjectCacheObserverBitMask: what an observer of a cached object is told of.
namespace nxDataObjectCacheObserverOption {
inline constexpr unsigned int Updates = 1u << 0;
inline constexpr unsigned int Snapshot = 1u << 1;
}  // namespace nxDataObjectCacheObserverOption

#pragma once

#include "base/enums/nxBitMask.h"
#include "base/enums/nxNamedBitMask.h"

// The masks of 32 bits. They differ in name only, which keeps one from standing in for another; whoever tests
// a bit names it where the test stands.

class nxSettlementPriceBitMask final : public nxNamedBitMask<nxBitMask, unsigned, "nxSettlementPriceBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxDatabaseModeBitMask final : public nxNamedBitMask<nxBitMask, unsigned, "nxDatabaseModeBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxProductStateBitMask final : public nxNamedBitMask<nxBitMask, unsigned, "nxProductStateBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxIntraDayProductDefinitionUpdateBitMask final
    : public nxNamedBitMask<nxBitMask, unsigned, "nxIntraDayProductDefinitionUpdateBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxOrderBookInterestBitMask final
    : public nxNamedBitMask<nxBitMask, unsigned, "nxOrderBookInterestBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxDataObjectCacheObserverBitMask final
    : public nxNamedBitMask<nxBitMask, unsigned, "nxDataObjectCacheObserverBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxAttributeChangeBitMask final : public nxNamedBitMask<nxBitMask, unsigned, "nxAttributeChangeBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxAttributeTrendBitMask final : public nxNamedBitMask<nxBitMask, unsigned, "nxAttributeTrendBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxAttributeTreeDrilldownBitMask final
    : public nxNamedBitMask<nxBitMask, unsigned, "nxAttributeTreeDrilldownBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxSecurityNodeAccessBaseBitMask final
    : public nxNamedBitMask<nxBitMask, unsigned, "nxSecurityNodeAccessBaseBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxProductTreeSelectableNodeBaseBitMask final
    : public nxNamedBitMask<nxBitMask, unsigned, "nxProductTreeSelectableNodeBaseBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxProductTypeGUIDisplayBaseBitMask final
    : public nxNamedBitMask<nxBitMask, unsigned, "nxProductTypeGUIDisplayBaseBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxGenericDataAccessLevelBaseBitMask final
    : public nxNamedBitMask<nxBitMask, unsigned, "nxGenericDataAccessLevelBaseBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxKeyboardModifierBitMask final
    : public nxNamedBitMask<nxBitMask, unsigned, "nxKeyboardModifierBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxFixMDQuoteConditionBitMask final
    : public nxNamedBitMask<nxBitMask, unsigned, "nxFixMDQuoteConditionBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxFixMDTradeConditionBitMask final
    : public nxNamedBitMask<nxBitMask, unsigned, "nxFixMDTradeConditionBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxPriceInterestBitMask final : public nxNamedBitMask<nxBitMask, unsigned, "nxPriceInterestBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxDataInterestBitMask final : public nxNamedBitMask<nxBitMask, unsigned, "nxDataInterestBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxSecurityNodeChangeBitMask final
    : public nxNamedBitMask<nxBitMask, unsigned, "nxSecurityNodeChangeBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxHIDEventTargetFilterBitMask final
    : public nxNamedBitMask<nxBitMask, unsigned, "nxHIDEventTargetFilterBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxOrderTransactionBroadcastBitMask final
    : public nxNamedBitMask<nxBitMask, unsigned, "nxOrderTransactionBroadcastBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxExchangePriceFilterBitMask final
    : public nxNamedBitMask<nxBitMask, unsigned, "nxExchangePriceFilterBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxConditionalOrderFlagsBitMask final
    : public nxNamedBitMask<nxBitMask, unsigned, "nxConditionalOrderFlagsBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxStrategyLegFlagsBitMask final
    : public nxNamedBitMask<nxBitMask, unsigned, "nxStrategyLegFlagsBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxUserOrderFlagsBitMask final : public nxNamedBitMask<nxBitMask, unsigned, "nxUserOrderFlagsBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxOrderTransactionFlagsBitMask final
    : public nxNamedBitMask<nxBitMask, unsigned, "nxOrderTransactionFlagsBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxOrderFillSummaryFieldBitMask final
    : public nxNamedBitMask<nxBitMask, unsigned, "nxOrderFillSummaryFieldBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

/** The bits of nxProductStateBitMask. More than one may be set at a time. */
namespace nxProductState {
inline constexpr unsigned PreOpen = 1u << 0;
inline constexpr unsigned Open = 1u << 1;
inline constexpr unsigned Closed = 1u << 3;
}  // namespace nxProductState

/** The options of nxDataObjectCacheObserverBitMask: what an observer of a cached object is told of. */
namespace nxDataObjectCacheObserverOption {
inline constexpr unsigned Updates = 1u << 0;
inline constexpr unsigned Snapshot = 1u << 1;
}  // namespace nxDataObjectCacheObserverOption

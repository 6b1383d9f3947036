#include "base/enums/nxBitMask.h"

#include <gtest/gtest.h>

#include <string>

#include "base/enums/nxBitMasks.h"
#include "base/enums/nxBitMasks64.h"
#include "base/enums/nxGenericBitMask.h"
#include "base/enums/nxGenericBitMask64.h"

namespace {

template <class Mask>
std::string NameOf()
{
    return Mask().GetClassName();
}

TEST(nxBitMask, EveryClassBearsItsName)
{
    const struct
    {
        std::string name;
        const char* expected;
    } rows[] = {
        {NameOf<nxSettlementPriceBitMask>(), "nxSettlementPriceBitMask"},
        {NameOf<nxDatabaseModeBitMask>(), "nxDatabaseModeBitMask"},
        {NameOf<nxProductStateBitMask>(), "nxProductStateBitMask"},
        {NameOf<nxIntraDayProductDefinitionUpdateBitMask>(), "nxIntraDayProductDefinitionUpdateBitMask"},
        {NameOf<nxOrderBookInterestBitMask>(), "nxOrderBookInterestBitMask"},
        {NameOf<nxDataObjectCacheObserverBitMask>(), "nxDataObjectCacheObserverBitMask"},
        {NameOf<nxAttributeChangeBitMask>(), "nxAttributeChangeBitMask"},
        {NameOf<nxAttributeTrendBitMask>(), "nxAttributeTrendBitMask"},
        {NameOf<nxAttributeTreeDrilldownBitMask>(), "nxAttributeTreeDrilldownBitMask"},
        {NameOf<nxSecurityNodeAccessBaseBitMask>(), "nxSecurityNodeAccessBaseBitMask"},
        {NameOf<nxProductTreeSelectableNodeBaseBitMask>(), "nxProductTreeSelectableNodeBaseBitMask"},
        {NameOf<nxProductTypeGUIDisplayBaseBitMask>(), "nxProductTypeGUIDisplayBaseBitMask"},
        {NameOf<nxGenericDataAccessLevelBaseBitMask>(), "nxGenericDataAccessLevelBaseBitMask"},
        {NameOf<nxKeyboardModifierBitMask>(), "nxKeyboardModifierBitMask"},
        {NameOf<nxFixMDQuoteConditionBitMask>(), "nxFixMDQuoteConditionBitMask"},
        {NameOf<nxFixMDTradeConditionBitMask>(), "nxFixMDTradeConditionBitMask"},
        {NameOf<nxPriceInterestBitMask>(), "nxPriceInterestBitMask"},
        {NameOf<nxDataInterestBitMask>(), "nxDataInterestBitMask"},
        {NameOf<nxSecurityNodeChangeBitMask>(), "nxSecurityNodeChangeBitMask"},
        {NameOf<nxHIDEventTargetFilterBitMask>(), "nxHIDEventTargetFilterBitMask"},
        {NameOf<nxOrderTransactionBroadcastBitMask>(), "nxOrderTransactionBroadcastBitMask"},
        {NameOf<nxExchangePriceFilterBitMask>(), "nxExchangePriceFilterBitMask"},
        {NameOf<nxConditionalOrderFlagsBitMask>(), "nxConditionalOrderFlagsBitMask"},
        {NameOf<nxStrategyLegFlagsBitMask>(), "nxStrategyLegFlagsBitMask"},
        {NameOf<nxUserOrderFlagsBitMask>(), "nxUserOrderFlagsBitMask"},
        {NameOf<nxOrderTransactionFlagsBitMask>(), "nxOrderTransactionFlagsBitMask"},
        {NameOf<nxOrderFillSummaryFieldBitMask>(), "nxOrderFillSummaryFieldBitMask"},
        {NameOf<nxExtendedAttributeHighlightBitMask>(), "nxExtendedAttributeHighlightBitMask"},
        {NameOf<nxServerCapabilityBitMask>(), "nxServerCapabilityBitMask"},
        {NameOf<nxProductFlagBitMask>(), "nxProductFlagBitMask"},
        {NameOf<nxAccountNodeDefinitionFieldsBitMask>(), "nxAccountNodeDefinitionFieldsBitMask"},
        {NameOf<nxUserNodeDefinitionFieldsBitMask>(), "nxUserNodeDefinitionFieldsBitMask"},
        {NameOf<nxAccountNodeFlagBitMask>(), "nxAccountNodeFlagBitMask"},
        {NameOf<nxGenericBitMask>(), "nxGenericBitMask"},
        {NameOf<nxGenericBitMask64>(), "nxGenericBitMask"}};  // both widths have the one name
    for (const auto& row : rows)
        EXPECT_EQ(row.name, row.expected);
}

TEST(nxBitMask, TheTwoUppermostBitsAreMarks)
{
    const struct
    {
        unsigned value;
        bool valid, noChange, null;
    } rows[] = {{0, true, false, false},          {0x3FFFFFFF, true, false, false},
                {0x40000000, false, true, false}, {0x80000000, false, false, true},
                {0x80000020, false, false, true}, {0xC0000000, false, true, true}};
    for (const auto& row : rows) {
        const nxProductStateBitMask mask(row.value);
        EXPECT_EQ(mask.IsValid(), row.valid) << row.value;
        EXPECT_EQ(mask.IsNoChange(), row.noChange) << row.value;
        EXPECT_EQ(mask.IsNull(), row.null) << row.value;
        EXPECT_EQ(mask.GetValue(), row.value);

        const unsigned long long wide = (row.value & 0xC0000000ull) << 32 | (row.value & 0x3FFFFFFF);
        const nxProductFlagBitMask mask64(wide);
        EXPECT_EQ(mask64.IsValid(), row.valid) << wide;
        EXPECT_EQ(mask64.IsNoChange(), row.noChange) << wide;
        EXPECT_EQ(mask64.IsNull(), row.null) << wide;
        EXPECT_EQ(mask64.GetValue(), wide);
    }
    EXPECT_TRUE(nxProductFlagBitMask(0x3FFFFFFFFFFFFFFFull).IsValid());
}

TEST(nxBitMask, AMarkReplacesTheFlags)
{
    nxProductStateBitMask mask(7);
    mask.SetNull();
    EXPECT_EQ(mask, 0x80000000u);
    mask.SetNoChange();
    EXPECT_EQ(mask, 0x40000000u);
    nxProductFlagBitMask mask64(7);
    mask64.SetNull();
    EXPECT_EQ(mask64, 0x8000000000000000ull);
    mask64.SetNoChange();
    EXPECT_EQ(mask64, 0x4000000000000000ull);
}

template <class Mask>
void CheckFlags()
{
    Mask mask(1);
    mask |= 4;
    mask.SetBits(Mask(8));
    EXPECT_EQ(mask, 13u);
    EXPECT_TRUE(mask.AreAllBitsSet(12) && !mask.AreAllBitsSet(14) && mask.AreAllBitsSet(0));
    EXPECT_TRUE(mask.AreAnyBitsSet(6) && !mask.AreAnyBitsSet(2) && !mask.AreAnyBitsSet(0));
    mask.ClearBits(Mask(5));
    EXPECT_EQ(mask, Mask(8));
    EXPECT_NE(mask, 9u);
    EXPECT_EQ(Mask(9).GetShortDescription("|"), "0|3");
    EXPECT_EQ(Mask(9).GetLongDescription(", "), "bit 0, bit 3");
    mask = 3;
    mask.Clear();
    EXPECT_EQ(mask.GetShortDescription(","), "");
    mask.SetNull();
    EXPECT_EQ(mask.GetShortDescription(","), "NULL");
    mask.SetNoChange();
    EXPECT_EQ(mask.GetLongDescription(","), "NO_CHANGE");
}

TEST(nxBitMask, SetsTestsAndClearsFlags)
{
    CheckFlags<nxStrategyLegFlagsBitMask>();
    CheckFlags<nxServerCapabilityBitMask>();
}

TEST(nxGenericBitMask, GathersFlagsWithoutMarks)
{
    nxGenericBitMask mask(nxProductStateBitMask(2));
    mask.SetBits(nxOrderTransactionFlagsBitMask(0x80000001));
    EXPECT_EQ(mask, 3u);
    EXPECT_EQ(mask.GetShortDescription(), "0,1");
    EXPECT_EQ(mask.GetLongDescription(), "bit 0,bit 1");
    nxGenericBitMask64 mask64(1ull << 40);
    mask64.SetBits(nxProductFlagBitMask(0x4000000000000002ull));
    EXPECT_EQ(mask64, 1ull << 40 | 2);
}

}  // namespace

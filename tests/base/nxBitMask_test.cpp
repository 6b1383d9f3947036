#include "base/enums/nxBitMask.h"

#include <gtest/gtest.h>

#include "base/enums/nxBitMasks.h"
#include "base/enums/nxBitMasks64.h"
#include "base/enums/nxGenericBitMask.h"
#include "base/enums/nxGenericBitMask64.h"

namespace {

TEST(nxBitMask, TheTwoUppermostBitsAreMarks)
{
    const std::tuple<unsigned int, bool, bool, bool> rows[] = {
        {0, true, false, false},          {0x3FFFFFFF, true, false, false}, {0x40000000, false, true, false},
        {0x80000000, false, false, true}, {0x80000020, false, false, true}, {0xC0000000, false, true, true}};
    for (const auto& [value, valid, noChange, null] : rows) {
        const nxProductStateBitMask mask(value);
        EXPECT_EQ(mask.IsValid(), valid) << value;
        EXPECT_EQ(mask.IsNoChange(), noChange) << value;
        EXPECT_EQ(mask.IsNull(), null) << value;
        EXPECT_EQ(mask.GetValue(), value);

        const unsigned long long wide = (value & 0xC0000000ull) << 32 | (value & 0x3FFFFFFF);
        const nxProductFlagBitMask mask64(wide);
        EXPECT_EQ(mask64.IsValid(), valid) << wide;
        EXPECT_EQ(mask64.IsNoChange(), noChange) << wide;
        EXPECT_EQ(mask64.IsNull(), null) << wide;
        EXPECT_EQ(mask64.GetValue(), wide);
    }
    EXPECT_TRUE(nxProductFlagBitMask(0x3FFFFFFFFFFFFFFFull).IsValid());
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
    mask.SetNull();
    EXPECT_FALSE(mask.AreAnyBitsSet(3));
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

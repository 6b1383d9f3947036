#include "base/records/nxMarketDepth.h"

#include <gmock/gmock.h>

#include <map>
#include <random>

#include "tests/support/nxAllocationCount.h"

namespace {

using testing::ElementsAre;
using testing::Pair;

nxDecimal Price(long long ticks)
{
    return nxDecimal::FromMantissa(ticks, 2);
}
nxMarketDepthMapEntry Entry(unsigned int volume)
{
    return {volume, 0};
}

TEST(nxMarketDepth, SetsReplacesAndRemovesLevels)
{
    nxMarketDepth depth;
    depth.SetBid(Price(10000), 7);
    depth.SetBid(Price(9900), 5);
    depth.SetBid(nxDecimal(100, 1, 0), 8);  // the level at 100.00, written otherwise
    depth.SetAsk(Price(10100), 3);
    depth.SetAsk(Price(10200), 4);
    depth.SetAsk(Price(10100), 0);
    depth.SetAsk(Price(10300), 0);
    EXPECT_THAT(depth.GetBidMap(), ElementsAre(Pair(Price(9900), Entry(5)), Pair(Price(10000), Entry(8))));
    EXPECT_THAT(depth.GetAskMap(), ElementsAre(Pair(Price(10200), Entry(4))));
    for (const nxVolume& mark : {nxVolume(), nxVolume(nxNoChangeInitalizer())})
        depth.SetAsk(Price(10200), mark);
    depth.SetAsk(nxDecimal(), 1);
    depth.SetAsk(nxDecimal(nxNoChangeInitalizer()), 1);
    EXPECT_THAT(depth.GetAskMap(), ElementsAre(Pair(Price(10200), Entry(4))));
    depth.Clear();
    EXPECT_TRUE(depth.GetBidMap().empty() && depth.GetAskMap().empty());
}

TEST(nxMarketDepth, CopiesAreApart)
{
    nxMarketDepth depth;
    depth.SetBid(Price(1), 1);
    nxMarketDepth copy(depth);
    nxMarketDepth assigned;
    assigned.SetAsk(Price(9), 9);
    assigned = depth;
    depth.SetBid(Price(1), 2);
    for (const nxMarketDepth* other : {&copy, &assigned}) {
        EXPECT_THAT(other->GetBidMap(), ElementsAre(Pair(Price(1), Entry(1))));
        EXPECT_TRUE(other->GetAskMap().empty());
    }
}

// A book that wanders about stays the same as a plain map that does, and allocates nothing once it has had
// its greatest size.
TEST(nxMarketDepth, ASteadyBookAllocatesNothing)
{
    constexpr int prices = 40;
    std::mt19937_64 random(3);
    nxMarketDepth depth;
    for (int i = 0; i < prices; ++i)
        depth.SetBid(Price(i), 1), depth.SetAsk(Price(i), 1);
    depth.Clear();

    std::map<long long, unsigned int> bids, asks;
    long long allocated = 0;
    for (int i = 0; i < 20000; ++i) {
        const auto ticks = static_cast<long long>(random() % prices);
        const auto volume = static_cast<unsigned int>(random() % 3);
        const bool isBid = random() % 2 == 0;
        const long long before = nxAllocationCount::Get();
        if (isBid)
            depth.SetBid(Price(ticks), volume);
        else
            depth.SetAsk(Price(ticks), volume);
        allocated += nxAllocationCount::Get() - before;
        auto& side = isBid ? bids : asks;
        side.erase(ticks);
        if (volume != 0) side[ticks] = volume;
    }
    EXPECT_EQ(allocated, 0);
    for (const auto& [expected, actual] :
         {std::pair{&bids, &depth.GetBidMap()}, std::pair{&asks, &depth.GetAskMap()}})
    {
        ASSERT_EQ(actual->size(), expected->size());
        auto level = actual->begin();
        for (const auto& [ticks, volume] : *expected) {
            EXPECT_EQ(level->first, Price(ticks));
            EXPECT_EQ(level->second.volume, volume);
            ++level;
        }
    }

    nxMarketDepth copy(depth);
    const long long before = nxAllocationCount::Get();
    copy = depth;
    EXPECT_EQ(nxAllocationCount::Get(), before);
}

}  // namespace

#include "base/records/nxPriceTradeVolumes.h"

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::Pair;

nxDecimal Price(long long ticks)
{
    return nxDecimal::FromMantissa(ticks, 2);
}

TEST(nxPriceTradeVolumes, AddsTradesByPrice)
{
    nxPriceTradeVolumes volumes;
    volumes.AddTrade(Price(200), 3);
    volumes.AddTrade(Price(100), 4);
    volumes.AddTrade(nxDecimal(2, 1, 0), 5);
    volumes.AddTrade(nxDecimal(), 5);
    volumes.AddTrade(Price(300), nxVolume());
    EXPECT_THAT(volumes.GetPriceMap(),
                ElementsAre(Pair(Price(100), nxVolume(4)), Pair(Price(200), nxVolume(8))));
    EXPECT_EQ(volumes.GetTradeVolume(nxDecimal(2, 1, 5)), 8u);
    EXPECT_TRUE(volumes.GetTradeVolume(Price(201)).IsNull());
    volumes.AddTrade(Price(100), 0xFFFFFFFDu);
    EXPECT_EQ(volumes.GetTradeVolume(Price(100)), 0xFFFFFFFDu);
}

TEST(nxPriceTradeVolumes, MergesByTheTypeOfTheUpdate)
{
    const nxPriceTradeVolumes::Map own = {{Price(1), 10u}, {Price(2), 20u}};
    const nxPriceTradeVolumes::Map sum = {{Price(1), 10u}, {Price(2), 25u}, {Price(3), 30u}};
    const nxPriceTradeVolumes::Map theirs = {{Price(2), 5u}, {Price(3), 30u}};
    const std::tuple<unsigned int, bool, nxPriceTradeVolumes::Map> rows[] = {
        {nxPriceTradeVolumesUpdateType_Snapshot, false, theirs},
        {nxPriceTradeVolumesUpdateType_Delta, false, sum},
        {nxEnum_Undefined, false, sum},
        {nxPriceTradeVolumesUpdateType_Snapshot, true, {}}};
    for (const auto& [type, empty, expected] : rows) {
        nxPriceTradeVolumes volumes;
        volumes.SetText("earlier");
        for (const auto& [price, volume] : own)
            volumes.AddTrade(price, volume);
        nxPriceTradeVolumes update;
        update.SetUpdateType(type);
        if (!empty)
            for (const auto& [price, volume] : theirs)
                update.AddTrade(price, volume);
        volumes.ApplyUpdate(update);
        EXPECT_EQ(volumes.GetPriceMap(), expected) << type << empty;
        EXPECT_EQ(volumes.GetText(), "earlier");
        EXPECT_TRUE(volumes.GetUpdateType().IsUndefined());
    }
}

TEST(nxPriceTradeVolumes, AnUpdateMayBeItself)
{
    nxPriceTradeVolumes volumes;
    volumes.AddTrade(Price(1), 10);
    volumes.ApplyUpdate(volumes);
    EXPECT_EQ(volumes.GetTradeVolume(Price(1)), 20u);
    volumes.SetUpdateType(nxPriceTradeVolumesUpdateType_Snapshot);
    volumes.ApplyUpdate(volumes);
    EXPECT_EQ(volumes.GetTradeVolume(Price(1)), 20u);
}

}  // namespace

#include "host/debug/nxDebugSnapshots.h"

#include <gtest/gtest.h>

namespace {

// The widest gap between two copies in which a place lies, in microseconds of the run.
long long GetGap(nxDebugSnapshots& snapshots, unsigned long long step)
{
    const std::size_t after = snapshots.CountUpTo({step});
    if (after == snapshots.GetCount()) return 0;
    return snapshots.Get(after).work - snapshots.Get(after - 1).work;
}

void GoOn(nxDebugSnapshots& snapshots, unsigned long long from, unsigned long long to)
{
    constexpr unsigned long long every = 200;
    for (unsigned long long step = from; step <= to; step += every)
        snapshots.Add({{step}, static_cast<long long>(1000 * step), nxDebugChannel()}, {to});
}

}  // namespace

// As many copies as are kept tell a minute of a run where it is, and where it went back to.
TEST(nxDebugSnapshotsTest, CopiesAreCloseWhereTheRunIs)
{
    nxDebugSnapshots snapshots;
    GoOn(snapshots, 0, 60'000);
    EXPECT_EQ(snapshots.GetCount(), 24u);
    EXPECT_EQ(GetGap(snapshots, 59'900), 200'000);
    EXPECT_LE(GetGap(snapshots, 100), 20'000'000);
    const auto first = snapshots.Get(snapshots.CountUpTo({30'000}) - 1).position.step;
    GoOn(snapshots, first, 30'000);
    EXPECT_EQ(snapshots.GetCount(), 24u);
    for (const unsigned long long step : {29'000, 29'500, 29'900})
        EXPECT_LE(GetGap(snapshots, step), 400'000) << step;
    EXPECT_EQ(snapshots.Get(0).position.step, 0u);
}

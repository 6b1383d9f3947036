#include "host/run/nxTimerQueue.h"

#include <gtest/gtest.h>

#include "host/jobs/nxLaunchedJob.h"

namespace {

// Jobs are told apart by their address only; this one is never run.
class nxTimerQueueTest : public ::testing::Test
{
protected:
    nxLaunchedJob job{nxHostServices(), {}, 0, "job"};
    nxTimerQueue queue;
};

}  // namespace

TEST_F(nxTimerQueueTest, AnIntervalBeyondTheEndOfTimeIsNeverDue)
{
    queue.Start(job, "a", nxTime::Never - 5, 10);
    EXPECT_EQ(queue.GetNextTime(), nxTime::Never);
    queue.Start(job, "b", nxTime::Never - 5, 4);
    EXPECT_EQ(queue.GetNextTime(), nxTime::Never - 1);
    EXPECT_EQ(queue.Pop().name, "b");
    EXPECT_EQ(queue.GetNextTime(), nxTime::Never);
}

TEST_F(nxTimerQueueTest, SkipsToTheLastTimeThatIsNotAfterTheOneGiven)
{
    queue.Start(job, "a", -15, 10);
    queue.Start(job, "b", 0, 7);
    EXPECT_EQ(queue.Skip(24), 2u);  // of a: -5 and 5
    EXPECT_EQ(queue.GetNextTime(), 7);
    EXPECT_EQ(queue.Skip(7), 0u);
    EXPECT_EQ(queue.Skip(13), 0u);
    EXPECT_EQ(queue.Skip(14), 1u);
    EXPECT_EQ(queue.Pop().name, "b");
    EXPECT_EQ(queue.GetNextTimeOf([](const auto& timer) { return timer.name == "a"; }), 15);
    EXPECT_EQ(queue.Skip(nxTime::Never), (static_cast<unsigned long long>(nxTime::Never) - 15) / 10);
    EXPECT_EQ(queue.GetNextTime(), 21);
}

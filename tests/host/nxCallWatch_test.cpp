#include "host/run/nxCallWatch.h"

#include <gtest/gtest.h>

// It waits for the watching thread, however long that takes.
TEST(nxCallWatchThread, TellsOfTheCallThatDoesNotReturnAndOfNoneBefore)
{
    std::mutex mutex;
    std::optional<nxCallWatch::Stall> told;
    nxCallWatch watch({}, [&](const nxCallWatch::Stall& stall) {
        const std::scoped_lock lock(mutex);
        if (!told) told = stall;
    });
    const auto isTold = [&] {
        const std::scoped_lock lock(mutex);
        return told.has_value();
    };
    watch.Start();
    for (const nxCallback callback : {nxCallback::OnInit, nxCallback::OnTimer}) {
        watch.Leave();
        watch.Enter({70'000, nxRunCall::Part::Callback, callback});
    }
    while (!isTold())
        std::this_thread::yield();
    watch.Leave();
    watch.Stop();
    EXPECT_EQ(told->call.job, 70'000u);
    EXPECT_EQ(told->call.callback, nxCallback::OnTimer);
    EXPECT_GE(told->since.count(), 1);
}

#include "host/run/nxTimerQueue.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <sstream>

#include "host/jobs/nxHostJob.h"
#include "host/jobs/nxHostServices.h"

namespace {

// Jobs are told apart by their address only; these two are never run.
class Silence : public nxHostServices
{
    nxMarketProduct* FindMarket(const std::string&) override { return nullptr; }
    void Describe(nxHostProduct&) override {}
    void LogText(nxHostJob&, const std::string&) override {}
    void Record(const nxHostJob&, const char*, nxRunRecord::Fields) override {}
    void StartTimer(nxHostJob&, const std::string&, unsigned int) override {}
    void StopTimer(nxHostJob&, const std::string&) override {}
    void StartTimer(nxHostJob&, nxTimerCallback&, double) override {}
    void StopTimer(nxHostJob&, nxTimerCallback&) override {}
    void DeliverWindow(nxHostJob&, nxAlgoEventWindowObject&) override {}
    void NoteShutdown(nxHostJob&) override {}
    void NoteUnknownProduct(nxHostJob&, const std::string&) override {}
    void NoteSubscription(nxHostJob&, nxHostProduct&, nxMarketEvent) override {}
    void NoteChange(nxHostJob&) override {}
    std::vector<nxHostJob*> GetOtherJobs(const nxHostJob&) override { return {}; }
    nxErrorEnum StopJob(nxHostJob&, const nxHostJob&) override { return {}; }
    nxAlgoDataStoreObject* GetDataStore(nxHostJob&, const std::string&, bool) override { return nullptr; }
    long long GetTime() const override { return 0; }
    unsigned int ReserveOrder() override { return 0; }
    bool HasExchange() const override { return false; }
    nxSimulatedExchange& GetExchange() override { std::abort(); }
    unsigned int GetExchangeProduct(const nxHostProduct&) override { return 0; }
    void NoteOrder(nxHostOrder&) override {}
    nxHostOrder* FindOrder(unsigned int) override { return nullptr; }
    const std::vector<nxHostOrder*>& GetOrders() const override { return _orders; }
    void NoteRequest(nxHostJob&) override {}
    bool MayTrade(const nxHostJob&) override { return false; }
    bool IsRecording() const override { return false; }
    nxBarServices& GetBars() override { std::abort(); }
    std::string GetDynamicParameter(const std::string&, const std::string&) override { return {}; }
    void SetDynamicParameter(const std::string&, const std::string&, const std::string&) override {}

    std::vector<nxHostOrder*> _orders;
};

class nxTimerQueueTest : public ::testing::Test
{
protected:
    // The next timers with their times: "a 10, b 20".
    std::string Take(int count)
    {
        std::string text;
        for (int i = 0; i < count; ++i) {
            const long long time = queue.GetNextTime();
            const nxTimerQueue::Due due = queue.Pop();
            text += (i == 0 ? "" : ", ") + (due.job == &other ? "other:" + due.name : due.name) + " " +
                    std::to_string(time);
        }
        return text;
    }

    Silence services;
    nxHostJob job{services, {}, 0, "job"};
    nxHostJob other{services, {}, 1, "other"};
    nxTimerQueue queue;
};

}  // namespace

TEST_F(nxTimerQueueTest, NothingIsDueInAnEmptyQueue)
{
    EXPECT_EQ(queue.GetNextTime(), nxTimerQueue::Never);
    queue.Stop(job, "none");
    EXPECT_EQ(queue.GetNextTime(), nxTimerQueue::Never);
}

TEST_F(nxTimerQueueTest, RepeatsAtItsInterval)
{
    queue.Start(job, "a", 5, 10);
    EXPECT_EQ(Take(3), "a 15, a 25, a 35");
}

TEST_F(nxTimerQueueTest, TiesComeInTheOrderOfStartingEachTime)
{
    queue.Start(job, "z", 0, 10);
    queue.Start(job, "a", 0, 10);
    queue.Start(job, "slow", 0, 20);
    EXPECT_EQ(Take(5), "z 10, a 10, z 20, a 20, slow 20");
}

TEST_F(nxTimerQueueTest, StartingAgainForgetsTheOldTimerAndItsPlace)
{
    queue.Start(job, "a", 0, 10);
    queue.Start(job, "b", 0, 10);
    queue.Start(job, "a", 4, 6);
    EXPECT_EQ(Take(3), "b 10, a 10, a 16");
}

TEST_F(nxTimerQueueTest, StopTakesOutThatTimerOnly)
{
    queue.Start(job, "a", 0, 10);
    queue.Start(job, "b", 0, 10);
    queue.Start(other, "a", 0, 10);
    EXPECT_EQ(Take(1), "a 10");
    queue.Stop(job, "a");
    EXPECT_EQ(Take(4), "b 10, other:a 10, b 20, other:a 20");
}

TEST_F(nxTimerQueueTest, TiesOfSeveralJobsComeInTheOrderOfTheJobs)
{
    queue.Start(other, "a", 0, 10);
    queue.Start(job, "z", 0, 10);
    EXPECT_EQ(Take(4), "z 10, other:a 10, z 20, other:a 20");
    queue.StopAll(job);
    EXPECT_EQ(Take(2), "other:a 30, other:a 40");
}

TEST_F(nxTimerQueueTest, AnIntervalBeyondTheEndOfTimeIsNeverDue)
{
    queue.Start(job, "a", nxTimerQueue::Never - 5, 10);
    EXPECT_EQ(queue.GetNextTime(), nxTimerQueue::Never);
    queue.Start(job, "b", nxTimerQueue::Never - 5, 4);
    EXPECT_EQ(Take(1), "b " + std::to_string(nxTimerQueue::Never - 1));
    EXPECT_EQ(queue.GetNextTime(), nxTimerQueue::Never);
}

TEST_F(nxTimerQueueTest, CountsBefore1970Too)
{
    queue.Start(job, "a", -15, 10);
    EXPECT_EQ(Take(3), "a -5, a 5, a 15");
}

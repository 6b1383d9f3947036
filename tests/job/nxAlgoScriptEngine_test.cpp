#include "scriptFramework/job/nxAlgoScriptEngine.h"

#include <gtest/gtest.h>

#include <functional>
#include <thread>

#include "base/log/nxLogManager.h"
#include "base/records/nxMarketDepth.h"
#include "base/records/nxPrice.h"
#include "scriptFramework/orders/nxAlgoOrderUpdateObject.h"
#include "tests/support/nxRecordingLog.h"
#include "tests/support/nxScriptJob.h"
#include "tests/support/nxTestJob.h"
#include "tests/support/nxTestOrder.h"
#include "tests/support/nxTestVorantJob.h"

namespace {

// One row a callback that a host can deliver in this version.
struct Callback
{
    std::string name;
    std::function<nxErrorEnum(nxAlgoJobObject&, nxAlgoJobInterface*)> deliver;
    std::string arguments;          // as the script sees them
    const char* failure = nullptr;  // the log line ahead of the error, unless it begins with the name
};

// Of an object that the host makes with an id alone.
template <class Object, auto Entry>
Callback Of(const std::string& name, unsigned int id)
{
    const auto deliver = [id](nxAlgoJobObject& job, nxAlgoJobInterface* host) {
        Object object(host, id);
        return (job.*Entry)(object);
    };
    return {name, deliver, "id " + std::to_string(id)};
}

template <auto Entry>
Callback OfOrder(const std::string& name)
{
    const auto deliver = [](nxAlgoJobObject& job, nxAlgoJobInterface* host) {
        nxTestOrder order(host);
        if constexpr (std::is_invocable_v<decltype(Entry), nxAlgoJobObject&, nxTestOrder&>) {
            return (job.*Entry)(order);
        } else {
            // The making logs a line of its own.
            const nxLogLevelEnum level = nxLogManager::GetLevel();
            nxLogManager::SetLevel(nxLogLevel::Error);
            nxAlgoOrderUpdateObject update(host, &order, nullptr, nxTimeStamp());
            nxLogManager::SetLevel(level);
            return (job.*Entry)(update);
        }
    };
    return {name, deliver, "id 1"};
}

const Callback Callbacks[] = {
    Of<nxAlgoPriceObject, &nxAlgoJobObject::OnPrice>("OnPrice", 1),
    {"OnMarketDepth",
     [](auto& job, auto* host) {
         const nxMarketDepth depth;
         nxAlgoMarketDepthObject object(host, &depth, 2);
         return job.OnMarketDepth(object);
     },
     "id 2"},
    OfOrder<&nxAlgoJobObject::OnOrderFill>("OnOrderFill"),
    OfOrder<&nxAlgoJobObject::OnOrderNew>("OnOrderNew"),
    OfOrder<&nxAlgoJobObject::OnOrderWorking>("OnOrderWorking"),
    OfOrder<&nxAlgoJobObject::OnOrderRejected>("OnOrderRejected"),
    OfOrder<&nxAlgoJobObject::OnOrderCancelled>("OnOrderCancelled"),
    OfOrder<&nxAlgoJobObject::OnOrderCompleted>("OnOrderCompleted"),
    OfOrder<&nxAlgoJobObject::OnOrderAmendRejected>("OnOrderAmendRejected"),
    OfOrder<&nxAlgoJobObject::OnOrderCancelRejected>("OnOrderCancelRejected"),
    Of<nxAlgoStateObject, &nxAlgoJobObject::OnProductState>("OnProductState", 3),
    {"OnParameter", [](auto& job, auto*) { return job.OnParameter("width", "5", "me"); }, "width 5 me",
     "OnParameter ( width , 5 ) Tag = me failed. Error : "},
    Of<nxAlgoPositionObject, &nxAlgoJobObject::OnPosition>("OnPosition", 4),
    {"OnTimer", [](auto& job, auto*) { return job.OnTimer("beat"); }, "beat",
     "OnTimer ( beat ) failed. Error : "},
    {"OnJobChanged", [](auto& job, auto*) { return job.OnJobChanged(); }, ""},
    {"OnJobParametersChanged", [](auto& job, auto*) { return job.OnJobParametersChanged(); }, ""},
    {"OnShutdown", [](auto& job, auto*) { return job.OnShutdown(); }, ""},
    Of<nxTestVorantJob, &nxAlgoJobObject::OnJobNew>("OnVorantJobNew", 6),
    Of<nxTestVorantJob, &nxAlgoJobObject::OnJobStarted>("OnVorantJobStarted", 6),
    Of<nxTestVorantJob, &nxAlgoJobObject::OnJobStopped>("OnVorantJobStopped", 6),
    Of<nxTestVorantJob, &nxAlgoJobObject::OnJobStatusUpdate>("OnVorantJobStatusUpdate", 6),
    Of<nxTestVorantJob, &nxAlgoJobObject::OnJobUpdate>("OnVorantJobUpdate", 6),
    OfOrder<&nxAlgoJobObject::OnOrderQPosition>("OnOrderQPosition"),
    Of<nxAlgoPriceTradeVolumesObject, &nxAlgoJobObject::OnPriceTradeVolumes>("OnPriceTradeVolumes", 5),
};

TEST(nxAlgoScriptEngine, EachCallbackBringsItsArgumentsAndTellsItsFailure)
{
    for (const Callback& row : Callbacks) {
        SCOPED_TRACE(row.name);
        nxRecordingHost host;
        nxTestJob job(&host);
        ASSERT_TRUE(job.LoadScript("function OnInit() end function " + row.name +
                                   "(...) local shown = {...} for i, value in ipairs(shown) do "
                                   "if type(value) == 'table' then shown[i] = 'id ' .. value.id end end "
                                   "job:logText('[' .. table.concat(shown, ' ') .. ']') "
                                   "if fail then error('boom', 0) end end")
                        .IsSuccess());
        ASSERT_TRUE(job.StartJob().IsSuccess());
        nxRecordingLog log;
        EXPECT_TRUE(row.deliver(job, &host).IsSuccess()) << job.GetErrorText();
        EXPECT_EQ(host.TakeCalls() + log.TakeLines(), "[" + row.arguments + "]");

        ASSERT_TRUE(job.LoadScript("fail = true").IsSuccess());
        EXPECT_EQ(row.deliver(job, &host), nxErrorEnum(nxError_CallbackFailed));
        EXPECT_EQ(log.TakeLines(),
                  "32 [test] " + (row.failure == nullptr ? row.name + " failed. Error : " : row.failure) +
                      "boom\n");
        host.TakeCalls();

        job.StopJob();
        log.TakeLines();
        const bool afterStop = row.name == "OnShutdown";
        EXPECT_NE(row.deliver(job, &host).IsSuccess(), afterStop);
        EXPECT_EQ(host.TakeCalls(), afterStop ? "[]" : "");
        EXPECT_EQ(log.TakeLines().empty(), !afterStop);
    }
}

// Whatever raises outside the script's own protected calls: the entry fails with a text, and the next works.
TEST(nxAlgoScriptEngine, AnErrorBeforeTheScriptRunsFailsTheEntry)
{
    for (const Callback& row : Callbacks) {
        SCOPED_TRACE(row.name);
        nxRecordingHost host;
        nxTestJob job(&host);
        ASSERT_TRUE(
            job.LoadScript(
                   "function OnInit() end setmetatable(_G, {__index = function() error('boo', 0) end})")
                .IsSuccess());
        ASSERT_TRUE(job.StartJob().IsSuccess()) << job.GetErrorText();
        EXPECT_EQ(row.deliver(job, &host), nxErrorEnum(nxError_CallbackFailed));
        EXPECT_EQ(job.GetErrorText(), "boo");
        ASSERT_TRUE(job.LoadScript("setmetatable(_G, nil)").IsSuccess());
        EXPECT_TRUE(row.deliver(job, &host).IsSuccess()) << job.GetErrorText();
    }
}

TEST(nxAlgoScriptEngine, WorksWithoutAJob)
{
    nxAlgoScriptEngine engine(nullptr);
    nxRecordingLog log;
    ASSERT_TRUE(
        engine.LoadText("function OnInit() job:logText('nobody') assert(clock.year > 2000) end "
                        "function OnTimer() error('boom', 0) end"));
    EXPECT_TRUE(engine.Start().IsSuccess()) << engine.GetLastError();
    EXPECT_FALSE(engine.OnTimer("t").IsSuccess());
    EXPECT_EQ(log.TakeLines(), "32 OnTimer ( t ) failed. Error : boom\n");
}

// The script spins until another thread, which looks at the job meanwhile, lets it go.
class SpinningHost : public nxRecordingHost
{
public:
    std::atomic<bool> inScript = false;
    std::atomic<bool> released = false;
    void LogText(const std::string&) override
    {
        inScript = true;
        while (!released)
            std::this_thread::yield();
    }
};

TEST(nxAlgoScriptEngineThread, IsActiveAnswersWhileAScriptRuns)
{
    SpinningHost host;
    nxTestJob job(&host);
    ASSERT_TRUE(job.LoadScript("function OnInit() end function OnTimer() job:logText('') end").IsSuccess());
    ASSERT_TRUE(job.StartJob().IsSuccess());
    bool delivered = false;
    std::thread script([&] { delivered = job.OnTimer("t").IsSuccess(); });
    while (!host.inScript)
        std::this_thread::yield();
    EXPECT_TRUE(job.IsActive());
    EXPECT_FALSE(job.IsInShutdown());
    host.released = true;
    script.join();
    EXPECT_TRUE(delivered);
}

// A host that hands Shutdown on to another thread and waits for it there, while the script's thread has the
// job.
class HandingOverHost : public nxRecordingHost
{
public:
    nxAlgoJobObject* stopped = nullptr;
    void Shutdown() override
    {
        std::thread([this] {
            calls.emplace_back(stopped->StopJob().IsSuccess() ? "stopped" : "not stopped");
        }).join();
    }
};

TEST(nxAlgoScriptEngineThread, StopJobOfAJobThatShutItselfDownWaitsForNoLock)
{
    HandingOverHost host;
    nxTestJob job(&host);
    host.stopped = &job;
    ASSERT_TRUE(job.LoadScript("function OnInit() end function OnTimer() job:shutdown() end").IsSuccess());
    ASSERT_TRUE(job.StartJob().IsSuccess());
    EXPECT_TRUE(job.OnTimer("t").IsSuccess());
    EXPECT_EQ(host.TakeCalls(), "stopped");
}

TEST(nxAlgoScriptEngineThread, EventsFromSeveralThreadsRunOneAfterTheOther)
{
    constexpr int threads = 4;
    constexpr int events = 500;
    nxRecordingHost host;
    nxTestJob job(&host);
    ASSERT_TRUE(
        job.LoadScript("count = 0 function OnInit() end function OnTimer() assert(not busy) busy = true "
                       "for i = 1, 20 do count = count + 1 end busy = nil end "
                       "function OnShutdown() job:logText(count) end")
            .IsSuccess());
    ASSERT_TRUE(job.StartJob().IsSuccess());
    std::atomic<int> failures = 0;
    std::vector<std::thread> running;
    for (int i = 0; i < threads; ++i)
        running.emplace_back([&] {
            for (int k = 0; k < events; ++k)
                if (!job.OnTimer("t").IsSuccess() || !job.IsActive()) ++failures;
        });
    for (std::thread& thread : running)
        thread.join();
    EXPECT_EQ(failures, 0);
    job.StopJob();
    EXPECT_TRUE(job.OnShutdown().IsSuccess());
    EXPECT_EQ(host.TakeCalls(), std::to_string(threads * events * 20));
}

TEST(nxAlgoScriptEngineThread, JobsOfTheProcessRunSideBySide)
{
    std::atomic<int> failures = 0;
    std::vector<std::thread> running;
    for (int i = 0; i < 4; ++i)
        running.emplace_back([&] {
            for (int k = 0; k < 5; ++k) {
                nxScriptJob script;
                script.AddProduct("FDAX", 12);
                for (int n = 0; n < 20; ++n)
                    if (script.Evaluate("job:getProduct('FDAX').price.bidPrice, clock.year > 2000") !=
                        "nil true")
                        ++failures;
            }
        });
    for (std::thread& thread : running)
        thread.join();
    EXPECT_EQ(failures, 0);
}

}  // namespace

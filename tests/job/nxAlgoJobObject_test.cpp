#include "scriptFramework/job/nxAlgoJobObject.h"

#include <gtest/gtest.h>

#include "tests/support/nxRecordingHost.h"
#include "tests/support/nxRecordingLog.h"
#include "tests/support/nxTestJob.h"

namespace {

class nxAlgoJobObjectTest : public testing::Test
{
protected:
    void Load(const std::string& script)
    {
        ASSERT_TRUE(job.LoadScript(script).IsSuccess()) << job.GetErrorText();
    }
    void Start(const std::string& script)
    {
        Load(script);
        ASSERT_TRUE(job.StartJob().IsSuccess()) << job.GetErrorText();
    }

    nxRecordingHost host;
    nxTestJob job{&host};
};

TEST_F(nxAlgoJobObjectTest, AFailedLoadIsAnsweredLoggedAndForATextTold)
{
    nxRecordingLog log;
    EXPECT_EQ(job.LoadScript("x = = 1"), nxErrorEnum(nxError_ScriptLoadFailed));
    EXPECT_EQ(log.TakeLines(), "32 [test] Failed to load text\n");
    EXPECT_EQ(job.GetErrorText(), "[string \"x = = 1\"]:1: unexpected symbol near '='");
    EXPECT_EQ(job.LoadFile("/no/such/file.lua"), nxErrorEnum(nxError_ScriptLoadFailed));
    EXPECT_EQ(log.TakeLines(), "32 [test] Failed to load file /no/such/file.lua\n");
    EXPECT_EQ(job.GetErrorText(), "");
    EXPECT_TRUE(job.LoadFile(NX_TEST_DIR "/tools/noise.lua").IsSuccess());
    EXPECT_EQ(log.TakeLines(), "");
}

TEST_F(nxAlgoJobObjectTest, WithoutOnInitNothingIsStarted)
{
    Load("function OnPrice() end");
    nxRecordingLog log;
    EXPECT_EQ(job.StartJob(), nxErrorEnum(nxError_NoOnInit));
    EXPECT_EQ(log.TakeLines(), "32 [test] OnInit does not exist\n");
    const bool isStrict = nxGetTestedProfile() == nxScriptProfile::Strict;
    Load(isStrict ? "assert(not io and not job and not round)"
                  : "assert(io and os and not job and not round)");
    EXPECT_TRUE(job.IsActive());
    // Whether a callback exists is asked once in the life of a job.
    Load("function OnInit() end");
    EXPECT_EQ(job.StartJob(), nxErrorEnum(nxError_NoOnInit));
}

TEST_F(nxAlgoJobObjectTest, AFailedStartTellsWhyAndMayBeRepeated)
{
    const std::tuple<const char*, const char*, const char*> rows[] = {
        {"function OnInit() error('not yet', 0) end", "32 [test] OnInit failed. Error : not yet\n",
         "not yet"},
        {"function OnInit() end OnInit2, OnInit = OnInit, nil "
         "setmetatable(_G, {__index = function(t, k) if k ~= 'OnInit' then return end error('boo', 0) end})",
         "32 [test] OnInit does not exist\n", "boo"},
        {"function OnInit() end setmetatable(_G, {__newindex = function(_, k) error('no ' .. k, 0) end})",
         "37 [test] Script Engine Start Failed. Error : no job\n", "no job"},
    };
    for (const auto& [script, logged, error] : rows) {
        SCOPED_TRACE(script);
        nxTestJob starting(&host);
        ASSERT_TRUE(starting.LoadScript(script).IsSuccess());
        nxRecordingLog log;
        const bool hasOnInit = std::string(logged).find("does not exist") == std::string::npos;
        EXPECT_EQ(starting.StartJob(), nxErrorEnum(hasOnInit ? nxError_StartFailed : nxError_NoOnInit));
        EXPECT_EQ(log.TakeLines(), logged);
        EXPECT_EQ(starting.GetErrorText(), error);
        EXPECT_TRUE(starting.IsActive());
        ASSERT_TRUE(starting.LoadScript("setmetatable(_G, nil); function OnInit() end").IsSuccess());
        EXPECT_TRUE(starting.StartJob().IsSuccess()) << starting.GetErrorText();
    }
}

// What a script finds from then on is told by the rows of tests/data/scripts/job.txt.
TEST_F(nxAlgoJobObjectTest, TheSandboxTakesGlobalsAwayAtTheStart)
{
    if (nxGetTestedProfile() == nxScriptProfile::Strict) GTEST_SKIP() << "nothing is there to be taken";
    Load(
        "for name in ('io os package coroutine loadfile loadstring load dofile "
        "collectgarbage'):gmatch('%a+') do "
        "  assert(_G[name], name) end "
        "for name in ('job clock date round sortUp sortDown sort copy mapSize vorant'):gmatch('%a+') do "
        "  assert(_G[name] == nil, name) end "
        "local time = os.time "
        "function round() return 'mine' end "
        "function OnInit() assert(not os and type(time()) == 'number' and round(2.4) == 2) end");
    EXPECT_TRUE(job.StartJob().IsSuccess()) << job.GetErrorText();
}

TEST_F(nxAlgoJobObjectTest, EventsReachTheScriptUntilTheJobIsStopped)
{
    const auto timer = [this] { return job.OnTimer("t").IsSuccess(); };
    Load(
        "function OnTimer(name) count = (count or 0) + 1; if job then job:logText(name .. count) end end "
        "function OnShutdown() job:logText('bye') end function OnInit() end");
    EXPECT_TRUE(timer());  // even before the start
    EXPECT_TRUE(job.StartJob().IsSuccess());
    EXPECT_TRUE(timer());
    EXPECT_EQ(host.TakeCalls(), "t2");
    EXPECT_TRUE(job.IsActive());
    {
        nxRecordingLog log;
        EXPECT_TRUE(job.StopJob().IsSuccess());
        EXPECT_EQ(log.TakeLines(), "32 [test] Stopping Algo Job Object \n");
    }
    EXPECT_FALSE(job.IsActive());
    EXPECT_TRUE(timer());
    EXPECT_EQ(host.TakeCalls(), "");
    EXPECT_TRUE(job.OnShutdown().IsSuccess());
    EXPECT_TRUE(job.OnShutdown().IsSuccess());
    EXPECT_TRUE(job.StopJob().IsSuccess());
    EXPECT_EQ(host.TakeCalls(), "bye bye");
}

// What the host sees while the script is inside one of its calls.
class WatchingHost : public nxRecordingHost
{
public:
    const nxAlgoJobObject* watched = nullptr;
    void LogText(const std::string& text) override
    {
        calls.push_back(text + (watched->IsInShutdown() ? " in shutdown" : "") +
                        (watched->IsActive() ? " active" : ""));
    }
};

TEST(nxAlgoJobObject, IsInShutdownOnlyWhileOnShutdownRuns)
{
    WatchingHost host;
    nxTestJob job(&host);
    host.watched = &job;
    ASSERT_TRUE(
        job.LoadScript(
               "function OnInit() job:logText('init') end function OnTimer() job:logText('timer') end "
               "function OnShutdown() job:logText('shutdown'); error('boom', 0) end")
            .IsSuccess());
    EXPECT_TRUE(job.StartJob().IsSuccess());
    EXPECT_TRUE(job.OnTimer("").IsSuccess());
    EXPECT_FALSE(job.IsInShutdown());
    EXPECT_EQ(job.OnShutdown(), nxErrorEnum(nxError_CallbackFailed));
    EXPECT_FALSE(job.IsInShutdown());
    EXPECT_TRUE(job.OnTimer("").IsSuccess());
    job.StopJob();
    EXPECT_EQ(job.OnShutdown(), nxErrorEnum(nxError_CallbackFailed));
    EXPECT_EQ(host.TakeCalls(),
              "init active timer active shutdown in shutdown active timer active shutdown in shutdown");
}

TEST_F(nxAlgoJobObjectTest, AnExceptionOfTheHostIsALuaError)
{
    Start(
        "function OnInit() end function OnTimer(name) "
        "if name == 'caught' then caught, text = pcall(job.logText, job, 'x') return end "
        "if name == 'tell' then job:logText(tostring(caught) .. ' ' .. text) return end job:logText('x') "
        "end");
    host.throwOnLogText = "the host's reason: %s";
    EXPECT_TRUE(job.OnTimer("caught").IsSuccess());
    EXPECT_EQ(job.OnTimer("uncaught"), nxErrorEnum(nxError_CallbackFailed));
    EXPECT_TRUE(job.GetErrorText().ends_with(":1: the host's reason: %s")) << job.GetErrorText();
    host.throwOnLogText.clear();
    EXPECT_TRUE(job.OnTimer("tell").IsSuccess());
    EXPECT_EQ(host.TakeCalls(), "false the host's reason: %s");
}

TEST_F(nxAlgoJobObjectTest, AScriptShutsItsJobDown)
{
    Start(
        "function OnInit() end function OnTimer() job:shutdown('ignored') job:logText('still here') end "
        "function OnShutdown() job:logText('bye') end");
    host.stopOnShutdown = &job;
    nxRecordingLog log;
    EXPECT_TRUE(job.OnTimer("").IsSuccess());
    EXPECT_EQ(host.TakeCalls(), "Shutdown still here");
    EXPECT_EQ(log.TakeLines(), "32 [test] Shutdown job\n32 [test] Stopping Algo Job Object \n");
    EXPECT_FALSE(job.IsActive());
    EXPECT_TRUE(job.OnTimer("").IsSuccess());
    EXPECT_EQ(host.TakeCalls(), "");
    EXPECT_TRUE(job.OnShutdown().IsSuccess());
    EXPECT_EQ(host.TakeCalls(), "bye");
}

TEST_F(nxAlgoJobObjectTest, RunsOutOfMemoryAndGoesOn)
{
    Start(
        "function OnInit() end function OnTimer(name) if name == 'eat' then local t = {} "
        "for i = 1, 1e7 do t[i] = {} end end job:logText(name) end");
    job.SetMemoryLimit(job.GetMemory().GetBytesInUse() + 1000000);
    EXPECT_EQ(job.OnTimer("eat"), nxErrorEnum(nxError_LimitMemory));
    job.SetMemoryLimit(1);
    EXPECT_EQ(job.OnTimer("a name that Lua has not seen yet"), nxErrorEnum(nxError_LimitMemory));
    EXPECT_EQ(job.GetErrorText(), "limit of 1 bytes of memory exceeded: not enough memory");
    EXPECT_EQ(job.LoadScript("x = 1"), nxErrorEnum(nxError_LimitMemory));
    job.SetMemoryLimit(0);
    EXPECT_TRUE(job.OnTimer("good").IsSuccess()) << job.GetErrorText();
    EXPECT_EQ(host.TakeCalls(), "good");
}

// They run when the state closes, and what they touch must still be there.
TEST_F(nxAlgoJobObjectTest, FinalizersOfTheScriptFindItsObjectsAlive)
{
    if (nxGetTestedProfile() == nxScriptProfile::Strict) GTEST_SKIP() << "a script has no finalizers";
    {
        nxTestJob closing(&host);
        ASSERT_TRUE(
            closing
                .LoadScript("function OnInit() kept = newproxy(true) "
                            "getmetatable(kept).__gc = function() "
                            "job:logText(tostring(clock.year > 2000) .. date:getAsDate(86400)) end end")
                .IsSuccess());
        ASSERT_TRUE(closing.StartJob().IsSuccess()) << closing.GetErrorText();
        host.TakeCalls();
    }
    EXPECT_EQ(host.TakeCalls(), "true19700102:00:00:00");
}

}  // namespace

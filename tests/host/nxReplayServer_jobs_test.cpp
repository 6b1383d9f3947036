#include "tests/host/nxHostFixture.h"

namespace {

// Logs each piece of news of a watched job, and what that job shows.
constexpr const char* Watch = R"(
local function tell(kind)
  return function(other)
    job:logText(table.concat({ kind, other.name, tostring(other.running), other.userText1,
                               tostring(other:getOutputParameter("n")), other.reference }, " "))
  end
end
OnVorantJobNew, OnVorantJobStarted, OnVorantJobStopped = tell("new"), tell("started"), tell("stopped")
OnVorantJobStatusUpdate, OnVorantJobUpdate = tell("status"), tell("update")
)";

constexpr const char* TwoQuotes = "@00,A,1,1,,,,,\n@01,A,2,1,,,,,\n";

}  // namespace

TEST(nxReplayServerJobs, EventsReachTheJobsInTheirOrderHoweverTheyAskedForThem)
{
    nxHostRun run;
    const std::string logs = R"(
function OnPrice(p) job:logText("price " .. p.bidPrice) end
function OnShutdown() job:logText("bye") end
function OnTimer(name)
  if name == "u" then return job:logText(name) end
  job:stopTimer("t") job:startTimer("u", 700) job:getProduct("A"):subscribePrice()
end
)";
    run.AddJob("late",
               logs + "function OnInit() job:getProduct('B'):subscribePrice() job:startTimer('t', 500) end");
    run.AddJob("early",
               logs + "function OnInit() job:getProduct('A'):subscribePrice() job:startTimer('u', 1200) end");
    run.AddQuotes("@00,A,1,1,,,,,\n@01,A,2,1,,,,,\n@01,B,3,1,,,,,\n@01.3,A,4,1,,,,,\n");
    EXPECT_EQ(run.RunForLog(), R"(00.000  [early] price 1
01.000  [late] price 2
01.000  [early] price 2
01.000  [late] price 3
01.200  [late] u
01.200  [early] u
01.300  [late] price 4
01.300  [early] price 4
01.300  [late] bye
01.300  [early] bye
)");
}

TEST(nxReplayServerJobs, EachJobEndsByItselfAndTheRunWithTheLast)
{
    nxHostRun run;
    const std::string prices = R"(
function OnInit() job:getProduct("A"):subscribePrice() end
function OnShutdown() job:logText("bye") end
function OnPrice(p) job:logText(p.bidPrice) )";
    run.AddJob("first", prices + "job:shutdown() end");
    run.AddJob("second", prices + "if p.bidPrice == 2 then job:shutdown() end end");
    run.AddQuotes("@00,A,1,1,,,,,\n@01,A,2,1,,,,,\n@02,A,bad row,1,,,,,\n");
    EXPECT_EQ(run.Run(), nxRunResult::Done);
    EXPECT_EQ(run.GetLog(), R"(00.000  [first] 1
00.000  [first] bye
00.000  [second] 1
01.000  [second] 2
01.000  [second] bye
)");
    EXPECT_EQ(run.GetLine("end"), "all jobs have ended");
    EXPECT_EQ(run.statistics.jobs[0].end, "the script shut down");
}

TEST(nxReplayServerJobs, AJobThatDoesNotStartIsReportedAndTheOthersRunOn)
{
    const struct
    {
        const char* script;
        const char* end;
    } rows[] = {
        {"function OnInit() error('x') end", "OnInit failed"},
        {"function", "the script could not be loaded"},
        {"", "the script defines no function OnInit"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.end);
        nxHostRun run;
        run.AddJob("bad", row.script);
        run.AddJob("good",
                   "function OnInit() job:getProduct('A'):subscribePrice() end "
                   "function OnPrice(p) job:logText(p.bidPrice) end");
        run.AddQuotes(TwoQuotes);
        EXPECT_EQ(run.Run(), nxRunResult::ScriptFailed);
        EXPECT_EQ(run.GetLog(), "00.000  [good] 1\n01.000  [good] 2\n");
        EXPECT_EQ(run.statistics.jobs[0].end, row.end);
        EXPECT_EQ(run.GetLine("end"), "the data ended");
    }
}

TEST(nxReplayServerJobs, AFailingCallbackEndsTheRunAndNamesItsJob)
{
    nxHostRun run;
    run.AddJob("a", "function OnInit() end function OnShutdown() job:logText('bye') end");
    run.AddJob(
        "b", "function OnInit() job:getProduct('A'):subscribePrice() end\nfunction OnPrice() error('x') end");
    run.AddQuotes(TwoQuotes);
    EXPECT_EQ(run.Run(), nxRunResult::ScriptFailed);
    EXPECT_EQ(run.GetLog(), "00.000  [a] bye\n");
    EXPECT_EQ(run.GetLine("end"), "a callback of b failed");
    EXPECT_EQ(run.GetLine("failure"), "b  b.lua:2: x (in OnPrice, 1 time, first at 00.000000000)");
    EXPECT_NE(run.err.find("in OnPrice of b at 00.000000000\n"), std::string::npos) << run.err;
}

TEST(nxReplayServerJobs, NewsOfAWatchedJobComeWhenItsCallbackHasReturned)
{
    nxHostRun run;
    run.AddJob("before", "function OnInit() end");
    run.AddJob("watcher", std::string(Watch) + R"(
function OnInit()
  local jobs = job:getVorantJobs()
  job:logText(jobs.count .. " " .. jobs:getVorantJob(1).name .. " " .. jobs:getVorantJob(2).name)
  job:logText(tostring(jobs:getVorantJob(0).name) .. " " .. tostring(jobs:getVorantJob(3).name))
  jobs:getVorantJob(2):subscribe()
end)");
    run.AddJob("worker", R"(
function OnInit()
  job:getProduct("A"):subscribePrice()
  job:setReference("r")
  job:sendUserText1("x")
end
function OnPrice(p)
  job:sendUserText1("a") job:sendUserText1("b") job:sendUserText2("c")
  if p.bidPrice == 2 then job:setOutputParameter("n", "=;1") job:shutdown() end
  job:logText("returns")
end
function OnShutdown() job:sendUserText1("last") end)");
    run.AddQuotes("@00,A,1,1,,,,,\n@00.5,A,1,2,,,,,\n@01,A,2,1,,,,,\n");
    EXPECT_EQ(run.RunForLog(), R"(00.000  [watcher] 2 before worker
00.000  [watcher] nil nil
00.000  [watcher] new worker false  nil 
00.000  [watcher] started worker true x nil r
00.000  [watcher] status worker true x nil r
00.000  [watcher] update worker true x nil r
00.000  [worker] returns
00.000  [watcher] status worker true b nil r
00.500  [worker] returns
00.500  [watcher] status worker true b nil r
01.000  [worker] returns
01.000  [watcher] status worker false last =;1 r
01.000  [watcher] update worker false last =;1 r
01.000  [watcher] status worker false last =;1 r
01.000  [watcher] stopped worker false last =;1 r
)");
}

TEST(nxReplayServerJobs, AWatchedJobIsStoppedAfterTheCallbackThatAskedForIt)
{
    const std::string worker = R"(
function OnInit() job:logText("init") job:getProduct("A"):subscribePrice() end
function OnPrice(p) job:logText("price") end
function OnShutdown() job:logText("bye") end)";
    const struct
    {
        const char* name;
        const char* parent;
        const char* log;
        const char* end;
    } rows[] = {
        {"in an event",
         "function OnInit() w = job:getVorantJobs():getVorantJob(1) job:getProduct('A'):subscribePrice() end "
         "function OnPrice() w:stop() w:stop() job:logText('asked ' .. tostring(w.running)) end",
         "00.000  [parent] new worker false  nil \n00.000  [worker] init\n"
         "00.000  [parent] started worker true  nil \n00.000  [parent] asked true\n00.000  [worker] bye\n"
         "00.000  [parent] stopped worker false  nil \n01.000  [parent] asked false\n",
         "stopped by parent"},
        {"before it has started", "function OnInit() job:getVorantJobs():getVorantJob(1):stop() end",
         "00.000  [parent] stopped worker false  nil \n", "stopped by parent"},
        {"when it is new",
         "function OnInit() job:getVorantJobs() end function OnVorantJobNew(j) j:stop() end",
         "00.000  [parent] stopped worker false  nil \n", "stopped by parent"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        nxHostRun run;
        run.AddJob("parent", std::string(Watch) + row.parent);
        run.AddJob("worker", worker);
        run.AddQuotes(TwoQuotes);
        EXPECT_EQ(run.RunForLog(), row.log);
        EXPECT_EQ(run.statistics.jobs[1].end, row.end);
    }
}

TEST(nxReplayServerJobs, JobsThatAnswerEachOtherWithoutEndFail)
{
    for (const bool goOn : {false, true}) {
        nxHostRun run;
        run.options.continueOnError = goOn;
        for (const char* name : {"a", "b", "c"})
            run.AddJob(name, R"(
function OnInit() for i = 1, 2 do job:getVorantJobs():getVorantJob(i):subscribe() end job:startTimer("t", 500) end
local n = 0
function OnTimer() job:sendUserText1("go") end
function OnVorantJobStatusUpdate() n = n + 1 job:sendUserText1(n) end)");
        run.AddQuotes(TwoQuotes);
        EXPECT_EQ(run.Run(), nxRunResult::ScriptFailed);
        EXPECT_NE(
            run.GetLine("failure").find("answer each other without end: 3000 callbacks at one recorded time"),
            std::string::npos)
            << run.out;
        EXPECT_EQ(run.GetLine("recorded"),
                  std::string("00.000000000 to ") + (goOn ? "01" : "00") + ".000000000");
    }
}

TEST(nxReplayServerJobs, WhatAScriptKeepsOfOtherJobsStaysGoodUntilItsEnd)
{
    nxHostRun run;
    for (const char* name : {"a", "b"})
        run.AddJob(name, R"(
function OnInit()
  local other = job:getVorantJobs():getVorantJob(1)
  keep = newproxy(true)
  getmetatable(keep).__gc = function() job:logText("gone " .. other.name .. tostring(other.running)) end
end)");
    run.AddQuotes(TwoQuotes);
    static_cast<void>(run.Run());
    EXPECT_NE(run.out.find("[a] gone bfalse\n"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("[b] gone afalse\n"), std::string::npos) << run.out;
}

TEST(nxReplayServerJobs, ParametersChangeAtTheirTimeOnceForAllOfThatTime)
{
    nxHostRun run;
    const char* const script = R"(
function OnInit() job:getProduct("A"):subscribePrice() job:startTimer("timer", 500) end
function OnParameter(n, v, t) job:logText(n .. "=" .. v .. " " .. t .. " " .. tostring(job:getParameter("n"))) end
function OnJobParametersChanged() job:logText("changed " .. job:getDynamicParameter("T", "n")) end
function OnTimer(name) job:logText(name) job:stopTimer(name) end
function OnPrice(p) job:logText("price") end)";
    run.AddJob("a", script);
    run.AddJob("b", script);
    constexpr long long Start = 1'704'724'200'000'000'000;
    constexpr long long Half = 500'000'000;
    run.options.changes = {{Start - Half, 0, "n", "0", ""},
                           {Start + Half, {}, "n", "1", "T"},
                           {Start + Half, 1, "m", "x", ""},
                           {Start + 10 * Half, {}, "n", "9", ""}};
    run.AddQuotes("@00,A,1,1,,,,,\n@01,A,2,1,,,,,\n");
    EXPECT_EQ(run.RunForLog(), R"(00.000  [a] n=0  0
00.000  [a] changed 
00.000  [a] price
00.000  [b] price
00.500  [a] n=1 T 1
00.500  [b] n=1 T 1
00.500  [b] m=x  1
00.500  [a] changed 1
00.500  [b] changed 1
00.500  [a] timer
00.500  [b] timer
01.000  [a] price
01.000  [b] price
)");
    EXPECT_EQ(run.GetLine("events"), "2 quotes, 2 timers, 3 parameter changes");
    EXPECT_NE(run.out.find("data        1 parameter change from before the data\n"
                           "data        1 parameter change behind the end\n"),
              std::string::npos)
        << run.out;
}

TEST(nxReplayServerJobs, TheRecordHoldsWhatLeftTheScripts)
{
    nxHostRun run;
    run.SetScript(R"(
function OnInit()
  job:logText("caf\233") job:sendUserState("ERROR", "s") job:sendUserText3("t") job:sendUserLog({ b = 2, a = "x" })
  job:setOutputParameter("o", 1.5) job:publish("p", "v") job:sendParameter("T", "n", "v")
  job:startTimer("t", 5) job:stopTimer("t") job:setChartLine("c", "l", 0/0, 255) job:removeChartLine("c", "l")
  job:setShatterOnExit(true) job:setEnableCrossProtection(false) job:setDisableParentFills(true)
  job:setDisableReport(true) job:setEnablePandL(true) job:setReference("r") job.tag = "g"
  job:setOrderUserString("1") job:setOrderUserString2("2") job.selectedPrice = 1.25
  job:logText(job.tag .. tostring(job:getPandL("USD")) .. job.transactionCount)
  job:getProduct("A"):subscribePrice()
end
function OnPrice(p) if p.bidPrice == 2 then job:shutdown() error("x") end end)");
    run.AddQuotes(TwoQuotes);
    run.options.recordFile = run.Write("record.jsonl", "old");
    EXPECT_EQ(run.Run(), nxRunResult::ScriptFailed);
    EXPECT_EQ(run.GetLog(), "00.000  caf\xe9\n00.000  ERROR s\n00.000  g00\n");
    const char* const expected[] = {
        R"("log","text":"caf�"})",
        R"("state","level":"ERROR","text":"s"})",
        R"("text3","text":"t"})",
        R"("userLog","fields":{"a":"x","b":"2"}})",
        R"("outputParameter","name":"o","value":"1.5"})",
        R"("published","name":"p","value":"v"})",
        R"("sent","tag":"T","name":"n","value":"v"})",
        R"("timerStart","name":"t","interval":5})",
        R"("timerStop","name":"t"})",
        R"("chartLine","chart":"c","line":"l","value":null,"colour":255})",
        R"("removeChartLine","chart":"c","line":"l"})",
        R"("flag","name":"shatterOnExit","value":true})",
        R"("flag","name":"enableCrossProtection","value":false})",
        R"("flag","name":"disableParentFills","value":true})",
        R"("flag","name":"disableReport","value":true})",
        R"("flag","name":"enablePandL","value":true})",
        R"("reference","text":"r"})",
        R"("tag","text":"g"})",
        R"("orderUserString1","text":"1"})",
        R"("orderUserString2","text":"2"})",
        R"("selectedPrice","price":1.25})",
        R"("log","text":"g00"})",
        R"("jobStarted"})",
        R"("shutdown"})",
        R"("callbackFailure","callback":"OnPrice","text":"script.lua:12: x"})",
        R"("jobStopped","reason":"the script shut down"})",
    };
    std::ifstream record(run.options.recordFile);
    std::string line;
    for (std::size_t i = 0; i < std::size(expected); ++i) {
        std::getline(record, line);
        EXPECT_EQ(run.Hide(line), "{\"sequence\":" + std::to_string(i + 1) + ",\"time\":\"" +
                                      (i < 23 ? "00" : "01") +
                                      ".000000000\",\"job\":\"script\",\"type\":" + expected[i]);
    }
    EXPECT_FALSE(std::getline(record, line)) << line;
}

TEST(nxReplayServerJobs, ARecordThatCannotBeWrittenFailsTheRun)
{
    for (const char* file : {"/nowhere/record.jsonl", "/dev/full"}) {
        SCOPED_TRACE(file);
        nxHostRun run;
        run.SetScript(
            "function OnInit() for i = 1, 2000 do job:publish('name', string.rep('x', 100)) end end");
        run.AddQuotes(TwoQuotes);
        run.options.recordFile = file;
        EXPECT_EQ(run.Run(), nxRunResult::InputFailed);
        EXPECT_NE(run.err.find(file + std::string(": the record cannot be written: ")), std::string::npos)
            << run.err;
    }
}

TEST(nxReplayServerJobs, TheClockGoesOnWhateverTheLengthOfTheData)
{
    nxHostRun run;
    run.SetScript(R"(
function OnInit() job:getProduct("A"):subscribePrice() end
function OnPrice(p) job:logText(clock.year .. " " .. clock.second) end)");
    run.AddQuotes(
        "19710101:00:00:30.75,A,1,1,,,,,\n19990101:00:00:01,A,1,1,,,,,\n20600101:00:00:02.5,A,1,1,,,,,\n"
        "22600101:00:00:03,A,1,1,,,,,\n");
    EXPECT_EQ(run.RunForLog(),
              "19710101:00:00:30.750  1971 30\n19990101:00:00:01.000  1999 1\n"
              "20600101:00:00:02.500  2060 2\n22600101:00:00:03.000  2260 3\n");
}

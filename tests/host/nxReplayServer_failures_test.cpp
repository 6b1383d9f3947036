#include "tests/host/nxHostFixture.h"

namespace {

constexpr const char* TwoQuotes = "@00.5,A,1,1,,,,,\n@01,A,2,1,,,,,\n";

struct Outcome
{
    nxRunResult result;
    const char* log;
    const char* end;
    const char* failure;  // the summary's first one
};

void Check(nxHostRun& run, const Outcome& expected)
{
    EXPECT_EQ(run.Run(), expected.result);
    EXPECT_EQ(run.GetLog(), expected.log);
    EXPECT_EQ(run.GetLine("end"), expected.end);
    EXPECT_EQ(run.GetLine("failure"), expected.failure);
}

}  // namespace

TEST(nxReplayServerFailures, TheFirstFailingCallbackEndsTheRunAfterOnShutdown)
{
    const struct
    {
        const char* name;
        const char* script;
        Outcome expected;
    } rows[] = {
        {"OnPrice",
         "function OnPrice(p)\n job:logText('price') local x = nil .. 'a' end",
         {nxRunResult::ScriptFailed, "00.500  price\n00.500  bye\n", "a callback failed",
          "script.lua:4: attempt to concatenate a nil value (in OnPrice, 1 time, first at 00.500000000)"}},
        {"OnTimer",
         "function OnTimer(name) error(name) end",
         {nxRunResult::ScriptFailed, "00.400  bye\n", "a callback failed",
          "script.lua:3: t (in OnTimer, 1 time, first at 00.400000000)"}},
        {"OnProductState before the price of its row",
         "function OnProductState() error('s') end function OnPrice() job:logText('price') end",
         {nxRunResult::ScriptFailed, "00.500  bye\n", "a callback failed",
          "script.lua:3: s (in OnProductState, 1 time, first at 00.500000000)"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        nxHostRun run;
        run.SetScript(
            std::string("function OnInit() local a = job:getProduct('A') a:subscribe() a:subscribeState() "
                        "job:startTimer('t', 400) end\nfunction OnShutdown() job:logText('bye') end\n") +
            row.script);
        run.AddQuotes("@00.5,A,1,1,,,,,\n@01,A,bad row,1,,,,,\n");
        Check(run, row.expected);
        EXPECT_EQ(run.err.find("quotes.csv"), std::string::npos) << "nothing is read behind the failure";
    }
}

TEST(nxReplayServerFailures, AFailureIsToldAtOnceWithItsSourceLineAndTime)
{
    nxHostRun run;
    run.SetScript(
        "function OnInit() job:getProduct('A'):subscribe() end\nfunction OnPrice(p)\n\terror('x')\nend\n");
    run.AddQuotes(TwoQuotes);
    static_cast<void>(run.Run());
    EXPECT_EQ(run.GetErrors(), "script.lua:3: x\n     3 | error('x')\n       in OnPrice at 00.500000000\n");
}

TEST(nxReplayServerFailures, ContinuingCountsEachWayOfFailing)
{
    nxHostRun run;
    run.options.continueOnError = true;
    run.SetScript(R"(function OnInit() job:getProduct("A"):subscribe() end
function OnPrice(p)
  if p.bidPrice ~= 2 then error("not two") end
  job:logText("two")
end
function OnShutdown() error("bye") end)");
    run.AddQuotes("@00,A,1,1,,,,,\n@01,A,2,1,,,,,\n@02,A,3,1,,,,,\n@03,A,4,1,,,,,\n");
    Check(run, {nxRunResult::ScriptFailed, "01.000  two\n", "the data ended",
                "script.lua:3: not two (in OnPrice, 3 times, first at 00.000000000)"});
    EXPECT_NE(
        run.out.find("\nfailure     script.lua:6: bye (in OnShutdown, 1 time, first at 03.000000000)\n"),
        std::string::npos);
    EXPECT_NE(run.out.find("OnPrice                      4  3 failed\n"), std::string::npos) << run.out;
    EXPECT_EQ(run.GetErrors().find("not two"), run.GetErrors().rfind("script.lua:3: not two") + 14)
        << "told once: " << run.GetErrors();
}

TEST(nxReplayServerFailures, AScriptWhoseEveryMessageDiffersDoesNotGrowTheSummaryWithoutEnd)
{
    nxHostRun run;
    run.options.continueOnError = true;
    run.SetScript(
        "function OnInit() job:getProduct('A'):subscribe() end\nfunction OnPrice(p) error(p.bidPrice) end");
    std::string rows;
    for (int i = 0; i < 500; ++i)
        rows += "@00,A," + std::to_string(i) + ",1,,,,,\n";
    run.AddQuotes(rows);
    EXPECT_EQ(run.Run(), nxRunResult::ScriptFailed);
    EXPECT_EQ(run.statistics.jobs[0].failures.size(), 100u);
    EXPECT_EQ(run.statistics.jobs[0][nxCallback::OnPrice].failures, 500u);
}

TEST(nxReplayServerFailures, AScriptThatDoesNotStart)
{
    const struct
    {
        const char* name;
        const char* script;
        Outcome expected;
    } rows[] = {
        {"syntax",
         "function OnInit(",
         {nxRunResult::ScriptFailed, "", "the script could not be loaded",
          "script.lua:2: <name> or '...' expected near '<eof>' (while the script was loaded)"}},
        {"main chunk",
         "x = y.z function OnInit() end function OnShutdown() job:logText('bye') end",
         {nxRunResult::ScriptFailed, "", "the script could not be loaded",
          "script.lua:1: attempt to index global 'y' (a nil value) (while the script was loaded)"}},
        {"main chunk reaches for the job",
         "job:logText('x') function OnInit() end",
         {nxRunResult::ScriptFailed, "", "the script could not be loaded",
          "script.lua:1: attempt to index global 'job' (a nil value) (while the script was loaded)"}},
        {"empty", "", {nxRunResult::ScriptFailed, "", "the script defines no function OnInit", ""}},
        {"no OnInit",
         "function OnPrice() end function OnShutdown() job:logText('bye') end",
         {nxRunResult::ScriptFailed, "", "the script defines no function OnInit", ""}},
        {"OnInit fails",
         "function OnInit() error('x') end function OnShutdown() job:logText('bye') end",
         {nxRunResult::ScriptFailed, "00.000  bye\n", "OnInit failed",
          "script.lua:1: x (in OnInit, 1 time, first at 00.000000000)"}},
        {"OnInit fails after asking to shut down",
         "function OnInit() job:shutdown() error('x') end",
         {nxRunResult::ScriptFailed, "", "OnInit failed",
          "script.lua:1: x (in OnInit, 1 time, first at 00.000000000)"}},
    };
    for (const auto& row : rows) {
        for (const bool goOn : {false, true}) {
            SCOPED_TRACE(std::string(row.name) + (goOn ? ", continue" : ", stop"));
            nxHostRun run;
            run.options.continueOnError = goOn;
            run.SetScript(row.script);
            run.AddQuotes(TwoQuotes);
            Check(run, row.expected);
            EXPECT_EQ(run.statistics.quotes, 0u);
        }
    }
}

TEST(nxReplayServerFailures, AMissingOnInitIsToldWithTheFile)
{
    nxHostRun run;
    run.SetScript("");
    run.AddQuotes(TwoQuotes);
    static_cast<void>(run.Run());
    EXPECT_EQ(run.GetErrors(), "script.lua: defines no function OnInit\n");
}

TEST(nxReplayServerFailures, AScriptThatTakesMoreMemoryThanItMayFailsAndShutsDown)
{
    nxHostRun run;
    run.options.memoryLimit = 2 << 20;
    run.SetScript(R"(function OnInit() job:getProduct("A"):subscribe() end
function OnPrice() local t = {} for i = 1, 1e7 do t[i] = { i } end end
function OnShutdown() job:logText("bye") end)");
    run.AddQuotes(TwoQuotes);
    Check(run, {nxRunResult::ScriptFailed, "00.500  bye\n", "a callback failed",
                "not enough memory; the script may hold 2 MiB (in OnPrice, 1 time, first at 00.500000000)"});
}

TEST(nxReplayServerFailures, ABadRowEndsTheRunAfterEverythingBeforeIt)
{
    nxHostRun run;
    run.SetScript(R"(function OnInit() job:getProduct("A"):subscribe() end
function OnPrice(p) job:logText("price " .. p.bidPrice) end
function OnMarketDepth(d) job:logText("depth " .. d.bidCount) end
function OnShutdown() job:logText("bye") end)");
    run.AddQuotes("@00,A,1,1,,,,,\n@01,A,1,x,,,,,\n@02,A,3,1,,,,,\n");
    const std::string reason = "quotes.csv:3:23: bidVolume: not a number: \"x\"";
    Check(run,
          {nxRunResult::InputFailed, "00.000  price 1\n00.000  bye\n", ("bad data: " + reason).c_str(), ""});
    EXPECT_EQ(run.GetErrors(), reason + "\n");

    run.options.lenient = true;
    Check(run, {nxRunResult::Done, "00.000  price 1\n02.000  price 3\n02.000  bye\n", "the data ended", ""});
    EXPECT_EQ(run.GetLine("data"), "quotes.csv: 1 bad row skipped");
    EXPECT_EQ(run.GetErrors(), "");
}

TEST(nxReplayServerFailures, TheRowsOfADepthEventInFrontOfABadRowAreDelivered)
{
    nxHostRun run;
    run.SetScript(R"(function OnInit() job:getProduct("A"):subscribeMarketDepth() end
function OnMarketDepth(d) job:logText("depth " .. d.bidCount) end)");
    run.AddDepth("@00,A,BUY,1,1\n@01,A,BUY,2,1\n@01,A,BUY,3,1\n@01,A,BID,4,1\n");
    Check(run, {nxRunResult::InputFailed, "00.000  depth 1\n01.000  depth 3\n",
                "bad data: depth.csv:5:21: side: neither BUY nor SELL: \"BID\"", ""});
}

TEST(nxReplayServerFailures, AFailureOfOnShutdownDoesNotHideBadData)
{
    nxHostRun run;
    run.SetScript("function OnInit() end function OnShutdown() error('x') end");
    run.AddQuotes("@01,A,1,1,,,,,\n@00,A,1,1,,,,,\n");
    Check(run, {nxRunResult::InputFailed, "",
                "bad data: quotes.csv:3:1: time: runs backwards: 00.000000000 after 01.000000000",
                "script.lua:1: x (in OnShutdown, 1 time, first at 01.000000000)"});
}

TEST(nxReplayServerFailures, SaysWhyNothingReachedTheScript)
{
    const struct
    {
        const char* name;
        const char* script;  // behind "function OnInit() "
        const char* why;
    } rows[] = {
        {"no product", "end", "the script asked for no product; the data holds A, AB"},
        {"no subscription", "job:getProduct('A') end",
         "the script subscribed to nothing: call subscribePrice() or subscribeMarketDepth() of a product"},
        {"unknown product", "pcall(job.getProduct, job, 'X') end",
         "the script asked for product X, which is not in the data; it holds A, AB"},
        {"unknown product that ends OnInit", "job:getProduct('X') end",
         "the script asked for product X, which is not in the data; it holds A, AB"},
        {"described only, the name within another's",
         "job:getProduct('B'):subscribe() end function OnPrice() end",
         "the data holds nothing of product B; it holds A, AB"},
        {"no OnPrice", "job:getProduct('A'):subscribe() end",
         "the script subscribed to the prices of A but defines no function OnPrice"},
        {"no OnMarketDepth", "job:getProduct('A'):subscribeMarketDepth() end function OnPrice() end",
         "the script subscribed to the depth of A but defines no function OnMarketDepth"},
        {"no depth recorded", "job:getProduct('A'):subscribeMarketDepth() end function OnMarketDepth() end",
         "the script subscribed to the depth of A, of which the data holds none"},
        {"no OnProductState", "job:getProduct('A'):subscribeState() end",
         "the script subscribed to the state of A but defines no function OnProductState"},
        {"no OnTradeWindowEvent", "job:getProduct('A'):createTradeWindow(60):start() end",
         "the script started a trade window of A but defines no function OnTradeWindowEvent"},
        {"OnShutdown fails, too", "end function OnShutdown() error('x') end",
         "the script asked for no product; the data holds A, AB"},
        {"ended by the script itself", "job:shutdown() end", ""},
        {"OnInit fails", "error('x') end", ""},
        {"something was delivered", "job:startTimer('t', 100) end function OnTimer() end", ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        nxHostRun run;
        run.options.products.emplace_back();
        run.options.products.back().name = "B";
        run.SetScript(std::string("function OnInit() ") + row.script);
        run.AddQuotes("@00.5,A,1,1,,,,,\n@01,AB,1,1,,,,,\n");
        static_cast<void>(run.Run());
        EXPECT_EQ(run.GetLine("no events"), row.why);
    }
}

TEST(nxReplayServerFailures, SaysThatTheDataHoldsNoRowsAndNamesSomeOfManyProducts)
{
    nxHostRun run;
    run.SetScript("function OnInit() end");
    run.AddQuotes("");
    Check(run, {nxRunResult::Done, "", "the data ended", ""});
    EXPECT_EQ(run.GetLine("no events"), "the data holds no rows");
    EXPECT_EQ(run.GetLine("data"), "quotes.csv: no rows");

    std::string rows;
    for (int i = 1; i <= 25; ++i)
        rows += "@00,P" + std::to_string(i) + ",1,1,,,,,\n";
    run.AddQuotes(rows, "many.csv");
    static_cast<void>(run.Run());
    EXPECT_TRUE(run.GetLine("no events").ends_with("P19, P20 and 5 more")) << run.GetLine("no events");
}

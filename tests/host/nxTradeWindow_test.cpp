#include "tests/host/nxHostFixture.h"

namespace {

class nxTradeWindowTest : public ::testing::Test
{
protected:
    void SetScript(const std::string& text)
    {
        run.SetScript(R"(
function show(what, w)
  job:logText(what .. " " .. w.size .. " " .. tostring(w.totaltraded) .. " " .. tostring(w.vwap))
end
)" + text);
    }

    nxHostRun run;
};

TEST_F(nxTradeWindowTest, ATradeIsInTheWindowBeforeItsPriceIsTold)
{
    SetScript(R"(
function OnInit()
  local a = job:getProduct("A")
  a:subscribePrice()
  w = a:createTradeWindow(2)
  w:start()
end
function OnTradeWindowEvent(window) show("window", window) end
function OnPrice(price) show(price:isLast() and "trade" or "quote", w) end)");
    run.AddQuotes(R"(@00,A,99,1,101,1,,,
@01,A,,,,,100,3,BUY
@02,A,,2,,,,,
@03,A,,,,,102,1,SELL
@03.5,A,,,,,,2,SELL
@04,B,,,,,50,7,BUY
)");
    run.AddBars("@05,A,99,100,98,99,1\n");
    EXPECT_EQ(run.RunForLog(), R"(00.000  quote 0 nil nil
01.000  window 1 3 100
01.000  trade 1 3 100
02.000  quote 1 3 100
03.000  window 2 4 100.5
03.000  trade 2 4 100.5
03.500  window 2 3 102
03.500  trade 2 3 102
05.000  window 3 4 101.25
05.000  trade 3 4 101.25
)");
    EXPECT_EQ(run.statistics.jobs[0][nxCallback::OnTradeWindowEvent].count, 4u);
}

// A frequency is in seconds of recorded time; no timer is shorter than a millisecond.
TEST_F(nxTradeWindowTest, ATimedWindowTellsInRecordedTime)
{
    SetScript(R"(
local count = 0
function OnInit()
  job:startTimer("", 1500)
  w = job:getProduct("A"):createTradeWindow(2, 1.5)
  w:start()
  fast = job:getProduct("A"):createTradeWindow(2, 1e-9)
end
function OnTimer() job:logText("timer") if not started then started = true fast:start() end end
function OnTradeWindowEvent(window)
  if window.id ~= fast.id then return show("tick", window) end
  count = count + 1
  if count == 1000 then show("fast", fast) fast:stop() end
end)");
    run.AddQuotes("@00,A,,,,,100,3,BUY\n@02,A,,,,,100,4,BUY\n@05,A,99,1,,,,,\n");
    EXPECT_EQ(run.RunForLog(), R"(01.500  timer
01.500  tick 1 3 100
02.500  fast 1 4 100
03.000  timer
03.000  tick 1 4 100
04.500  timer
04.500  tick 0 0 nil
)");
}

TEST_F(nxTradeWindowTest, WindowsMayStartAndStopEachOtherInsideAnEvent)
{
    SetScript(R"(
local names = {}
local function create(name, product)
  local w = product:createTradeWindow(60)
  names[w.id] = name
  return w
end
function OnInit()
  local a = job:getProduct("A")
  one, two, three = create("one", a), create("two", a), create("three", a)
  one:start() two:start()
end
function OnTradeWindowEvent(w)
  show(names[w.id], w)
  if w.id == one.id then two:stop() three:start() end
  if w.id == three.id then three:stop() one:stop() one:start() end
end
function OnShutdown() one:start() two:stop() end)");
    run.AddQuotes("@00,A,,,,,100,1,BUY\n@01,A,,,,,100,1,BUY\n@02,A,,,,,100,1,BUY\n");
    EXPECT_EQ(run.RunForLog(), R"(00.000  one 1 1 100
01.000  one 2 2 100
01.000  three 1 1 100
02.000  one 3 3 100
)");
}

TEST_F(nxTradeWindowTest, AFailureEndsTheRunUnlessItGoesOnOnErrors)
{
    SetScript(R"(
function OnInit()
  one, two = job:getProduct("A"):createTradeWindow(60), job:getProduct("A"):createTradeWindow(60, 1)
  one:start() two:start()
  s = job:createDataSeries()
end
function OnTradeWindowEvent(w) if w.id == one.id then error("broken") end s:add(1, w.size) show("two", w) end
function OnShutdown() show("end " .. s.size, two) end)");
    run.AddQuotes("@00,A,,,,,100,1,BUY\n@02,A,,,,,100,2,BUY\n");
    EXPECT_EQ(run.Run(), nxRunResult::ScriptFailed);
    EXPECT_EQ(run.GetLog(), "00.000  end 0 0 nil nil\n");
    EXPECT_NE(run.err.find("in OnTradeWindowEvent at 00.000000000"), std::string::npos) << run.err;
    run.options.continueOnError = true;
    EXPECT_EQ(run.RunForLog(), "01.000  two 1 1 100\n02.000  two 1 1 100\n02.000  end 2 1 1 100\n");
}

}  // namespace

#include "tests/host/nxHostFixture.h"

namespace {

class nxTradeWindowTest : public ::testing::Test
{
protected:
    // A function show(window) stands in front.
    void SetScript(const std::string& text)
    {
        run.SetScript(R"(
function show(what, w) job:logText(table.concat({ what, tostring(w.size), tostring(w.totaltraded), tostring(w.vwap) }, " ")) end
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

TEST_F(nxTradeWindowTest, AFailureEndsTheJobAndTheOthersGoOn)
{
    SetScript(R"(
function OnInit()
  one, two = job:getProduct("A"):createTradeWindow(60), job:getProduct("A"):createTradeWindow(60, 1)
  one:start() two:start()
end
function OnTradeWindowEvent(w) if w.id == one.id then error("broken") end show("two", w) end
function OnShutdown() show("end", two) end)");
    run.AddQuotes("@00,A,,,,,100,1,BUY\n@02,A,,,,,100,2,BUY\n@03,A,99,1,,,,,\n");
    EXPECT_EQ(run.Run(), nxRunResult::ScriptFailed);
    EXPECT_EQ(run.GetLog(), "00.000  end 0 nil nil\n");
    EXPECT_NE(run.err.find("in OnTradeWindowEvent at 00.000000000"), std::string::npos) << run.err;
    run.options.continueOnError = true;
    EXPECT_EQ(run.RunForLog(),
              "01.000  two 1 1 100\n02.000  two 1 1 100\n03.000  two 2 3 100\n03.000  end 2 3 100\n");
}

TEST_F(nxTradeWindowTest, AWindowThatTellsNobodyIsExplained)
{
    SetScript("function OnInit() job:getProduct('A'):createTradeWindow(60):start() end");
    run.AddQuotes("@00,A,,,,,100,1,BUY\n");
    static_cast<void>(run.Run());
    EXPECT_EQ(run.GetLine("no events"),
              "the script started a trade window of A but defines no function OnTradeWindowEvent");
}

TEST_F(nxTradeWindowTest, DataSeriesLiveThroughTheRun)
{
    SetScript(R"(
function OnInit() s = job:createDataSeries() s.capacity = 2 job:getProduct("A"):subscribePrice() end
function OnPrice(price) s:add(clock.totalSeconds, price.lastPrice) end
function OnShutdown() job:logText(s.size .. " " .. select(2, s:average())) end)");
    run.AddQuotes("@00,A,,,,,100,1,BUY\n@01,A,,,,,101,1,BUY\n@02,A,,,,,102,1,BUY\n");
    EXPECT_EQ(run.RunForLog(), "02.000  2 101.5\n");
}

}  // namespace

// Tick data collections over a replay: where their bars come from, when they end, and what a script sees.

#include "tests/host/nxHostFixture.h"

namespace {

// Runs a script that says what it notes by say(text) at its end, in one line.
class nxReplayBarsTest : public testing::Test
{
protected:
    std::string RunFor(const std::string& script)
    {
        run.SetScript(R"lua(
local said = {}
function say(...) said[#said + 1] = table.concat({...}, " ") end
function bar(b) return string.format("%s %g %g %g %g %d", b.time:sub(10, 14), b.open, b.high, b.low, b.close, b.volume) end
function make(request)
  c = job:getProduct("A"):createTickDataCollection(request)
  c:subscribe()
  return c
end
function all()
  for i = c.count - 1, 0, -1 do say(bar(c:get(i))) end
end
function OnShutdown() job:logText("> " .. table.concat(said, "; ")) end
)lua" + script);
        static_cast<void>(run.Run());
        const std::string log = run.GetLog();
        const std::size_t begin = log.find("> ");
        return begin == log.npos ? run.out + run.err : log.substr(begin + 2, log.size() - begin - 3);
    }

    // One-minute rows up to 14:31, 14:32 and so on, a price each; 0: none.
    void AddMinutes(std::initializer_list<int> prices)
    {
        std::string rows;
        int minute = 30;
        for (const int price : prices) {
            const std::string p = std::to_string(price);
            ++minute;
            if (price != 0)
                rows += "20240108:14:" + std::to_string(minute) + ",A," + p + "," +
                        std::to_string(price + 2) + "," + std::to_string(price - 1) + "," + p + ".5,10\n";
        }
        run.AddBars(rows);
    }

    nxHostRun run;
};

TEST_F(nxReplayBarsTest, ARowIsInTheCollectionBeforeItsPriceIsTold)
{
    AddMinutes({1, 2, 3});
    EXPECT_EQ(RunFor(R"lua(
function OnInit()
  make{period = "MINUTE", ticks = 1, realTime = true}
  mean = c:createIndicator{name = "mean", type = "SMA", period = 2}
  job:getProduct("A"):subscribePrice()
  say(c.count)
end
function OnPrice(price)
  say(c.count, bar(c:get()), tostring(price.lastPrice == c:get().close), tostring(mean:getValue("value")), tostring(c.realTime))
end)lua"),
              "0; 1 14:30 1 3 0 1.5 10 true nil nil; 2 14:31 2 4 1 2.5 10 true 2 nil; 3 14:32 3 5 2 3.5 10 "
              "true 3 nil");
}

TEST_F(nxReplayBarsTest, RowsThatBearTheirStartAreHeardOfAtTheirEnd)
{
    const struct
    {
        const char* period;
        const char* rows;
        const char* expected;
    } cases[] = {
        {"MINUTE", "20240108:14:30,A,1,3,0,1,10\n20240108:14:31,A,2,4,1,2,10\n20240108:14:34,A,3,3,3,3,10\n",
         "20240108:14:31 of 20240108:14:30; 20240108:14:32 of 20240108:14:31; 20240108:14:35 of "
         "20240108:14:34"},
        {"SESSION", "20240105,A,1,3,0,1,10\n20240108,A,2,4,1,2,10\n20240109,A,3,3,3,3,10\n",
         "20240106:00:00 of 20240105:00:00; 20240109:00:00 of 20240108:00:00; 20240110:00:00 of "
         "20240109:00:00"},
    };
    for (const auto& [period, rows, expected] : cases) {
        SCOPED_TRACE(period);
        run.options.barsBearStart = true;
        run.options.data.clear();
        run.AddBars(rows);
        EXPECT_EQ(RunFor(std::string("function OnInit() make{ticks = 1, period = '") + period +
                         "'} job:getProduct('A'):subscribePrice() end\n"
                         "function OnPrice() say(date:getAsDate(clock.totalSeconds):sub(1, 14), 'of', "
                         "c:get().time:sub(1, 14)) end"),
                  expected);
    }
}

TEST_F(nxReplayBarsTest, FinerRowsAreFoldedAndEndByTheirTime)
{
    // 14:35 is missing, so only the time ends that bar; the last one is cut short by the end of the data.
    AddMinutes({5, 9, 1, 4, 0, 7, 8, 8, 8, 6, 3});
    EXPECT_EQ(RunFor(R"lua(
function OnInit()
  make{period = "5_MINUTE", ticks = 1, realTime = true}
  job:getProduct("A"):subscribePrice()
  job:startTimer("gap", 270000)  -- after the first row, at 14:35:30
end
function OnPrice() if c.realTime then say(bar(c.realTime)) end end
function OnTimer(name) say("gap", c.count, tostring(c.realTime)) job:stopTimer(name) end
local done = OnShutdown
function OnShutdown() all() done() end)lua"),
              "14:30 5 7 4 5.5 10; 14:30 5 11 4 9.5 20; 14:30 5 11 0 1.5 30; 14:30 5 11 0 4.5 40; gap 1 nil; "
              "14:35 7 9 6 7.5 10; 14:35 7 10 6 8.5 20; 14:35 7 10 6 8.5 30; 14:35 7 10 6 8.5 40; "
              "14:40 3 5 2 3.5 10; 14:30 5 11 0 4.5 40; 14:35 7 10 5 6.5 50");
}

TEST_F(nxReplayBarsTest, TradesMakeBarsThatEndByRecordedTime)
{
    run.AddQuotes(
        "@01,A,9,1,11,1,,,\n@02,A,,,,,10,3,BUY\n@30,A,,,,,12,1,SELL\n@59.999,A,,,,,9,2,\n"
        "20240108:14:31:00,A,,,,,8,1,BUY\n20240108:14:33:30,A,,,,,7,1,BUY\n20240108:14:33:31,A,,,,,,5,\n");
    EXPECT_EQ(
        RunFor(R"lua(
function OnInit()
  make{period = "MINUTE", ticks = 1, realTime = true}
  job:startTimer("end", 59000)  -- at 0:01:00, 0:01:59 and on
end
function OnTimer() say(c.count, tostring(c.realTime ~= nil)) end
function OnTickData(tick)
  say(tick.open, tick.high, tick.low, tick.close, tick.volume, tostring(tick.time), tick.collection.count)
end
local done = OnShutdown
function OnShutdown() all() done() end)lua"),
        "10 10 10 10 3 nil 0; 10 12 10 12 4 nil 0; 10 12 9 9 6 nil 0; 1 false; 8 8 8 8 1 nil 1; 1 true; "
        "2 false; 7 7 7 7 1 nil 2; 7 7 7 7 6 nil 2; 14:30 10 12 9 9 6; 14:31 8 8 8 8 1");
}

TEST_F(nxReplayBarsTest, ACollectionMadeLaterKnowsThePast)
{
    const std::string trades =
        "@05,A,,,,,1,1,\n20240108:14:31:05,A,,,,,2,1,\n20240108:14:32:05,A,,,,,3,1,\n20240108:14:32:30,A,,,,,"
        "4,1,\n"
        "20240108:14:33:05,A,,,,,5,1,\n20240108:14:34:05,A,,,,,6,1,\n";
    const struct
    {
        const char* request;
        const char* expected;
    } rows[] = {
        {"ticks = 9", "2; 14:30 1 1 1 1 1; 14:31 2 2 2 2 1; 14:32 3 4 3 4 2; 14:33 5 5 5 5 1"},
        {"ticks = 1", "1; 14:31 2 2 2 2 1; 14:32 3 4 3 4 2; 14:33 5 5 5 5 1"},
        {"startDate = '20240108:14:31'", "1; 14:31 2 2 2 2 1; 14:32 3 4 3 4 2; 14:33 5 5 5 5 1"},
        {"startDate = '20240108:14:33'", "0; 14:33 5 5 5 5 1"},
        {"ticks = 9, endDate = '20240108:14:32'", "2; 14:30 1 1 1 1 1; 14:31 2 2 2 2 1; 14:32 3 4 3 4 2"},
        {"ticks = 9, endDate = '20240107'", "0"},
    };
    for (const bool isLate : {false, true}) {
        for (const auto& row : rows) {
            run.options.data.clear();
            run.AddQuotes(trades);
            // Made at the first price of 14:32, and subscribed there or only after further trades.
            EXPECT_EQ(RunFor("late = " + std::string(isLate ? "true" : "false") +
                             " request = {period = 'MINUTE', " + row.request + R"lua(}
function OnInit() job:getProduct("A"):subscribePrice() end
function OnPrice(price)
  if price.lastPrice == 3 then
    c = job:getProduct("A"):createTickDataCollection(request)
    say(c.count)
  end
  if price.lastPrice == (late and 6 or 3) then c:subscribe() end
end
local done = OnShutdown
function OnShutdown() all() done() end)lua"),
                      row.expected)
                << row.request << (isLate ? ", late" : "");
        }
    }
}

TEST_F(nxReplayBarsTest, RowsAndTradesMakeTheSameBars)
{
    const std::string script = R"lua(
function OnInit() make{period = period, ticks = 1} end
local done = OnShutdown
function OnShutdown() all() done() end)lua";
    std::string trades;
    for (int i = 0; i < 5000; ++i)
        trades += std::to_string(1'704'724'200 + i * 7) + ",A,,,,," + std::to_string(100 + i * i % 17) + "," +
                  std::to_string(1 + i % 3) + ",\n";
    run.AddQuotes(trades);
    // The minutes as a bars file would have them, up to their ends.
    const std::string minutes = RunFor(R"lua(
function OnInit() make{period = "MINUTE", ticks = 1} end
local done = OnShutdown
function OnShutdown()
  for i = c.count - 1, 0, -1 do
    local b = c:get(i)
    say(string.format("%d,A,%g,%g,%g,%g,%d\n", b.timeValue + 60, b.open, b.high, b.low, b.close, b.volume))
  end
  done()
end)lua");
    std::string rows = minutes;
    for (std::size_t at = 0; (at = rows.find("\n; ", at)) != rows.npos;)
        rows.erase(at + 1, 2);
    for (const std::string period : {"MINUTE", "5_MINUTE", "10_MINUTE", "30_MINUTE", "HOUR"}) {
        run.options.data.clear();
        run.AddQuotes(trades);
        const std::string ofTrades = RunFor("period = '" + period + "'" + script);
        run.options.data.clear();
        run.AddBars(rows);
        const std::string ofRows = RunFor("period = '" + period + "'" + script);
        EXPECT_GT(ofRows.size(), 100u) << ofRows;
        EXPECT_EQ(ofRows, ofTrades) << period;
    }
}

TEST_F(nxReplayBarsTest, ASessionIsThatOfTheTradingHours)
{
    const struct
    {
        const char* hours;
        const char* expected;
    } rows[] = {
        {nullptr, "00:00 1 2 1 2 3; 00:00 3 5 3 5 12"},
        {"00:00-24:00", "00:00 1 2 1 2 3; 00:00 3 5 3 5 12"},
        {"08:00-09:00, 22:00-02:00", "22:00 2 3 2 3 5; 08:00 4 4 4 4 4"},  // the first trade lies outside
    };
    for (const auto& row : rows) {
        run.options.data.clear();
        run.options.products.clear();
        run.AddQuotes(
            "20240108:14:30,A,,,,,1,1,\n20240108:23:00,A,,,,,2,2,\n20240109:01:59,A,,,,,3,3,\n"
            "20240109:08:00,A,,,,,4,4,\n20240109:22:00,A,,,,,5,5,\n20240110:00:00,A,,,,,6,6,\n");
        if (row.hours != nullptr) {
            nxProductDescription& product = run.options.products.emplace_back();
            product.name = "A";
            ASSERT_EQ(nxTradingHours::SetFromText(row.hours, product.tradingHours), nullptr);
        }
        EXPECT_EQ(RunFor(R"lua(
function OnInit() make{period = "SESSION", ticks = 1} end
local done = OnShutdown
function OnShutdown() all() done() end)lua"),
                  row.expected)
            << (row.hours == nullptr ? "none" : row.hours);
    }
}

TEST_F(nxReplayBarsTest, RowsTooCoarseGiveNoBars)
{
    run.AddBars("20240108,A,1,1,1,1,1\n20240109,A,1,1,1,1,1\n20240112,A,2,2,2,2,1\n");
    EXPECT_EQ(RunFor(R"lua(
function OnInit() make{period = "SESSION", ticks = 1} day = c make{period = "HOUR", ticks = 1} end
local done = OnShutdown
function OnShutdown() say(c.count) c = day all() say(day:get().time) done() end)lua"),
              "0; 00:00 1 1 1 1 1; 00:00 1 1 1 1 1; 00:00 2 2 2 2 1; 20240112:00:00:00");
    EXPECT_NE(run.out.find("no HOUR bars of A: the rows of its bars file are 86400 seconds apart\n"),
              std::string::npos)
        << run.out;
    EXPECT_EQ(run.GetLine("data"),
              "bars.csv:4: 1 gap between bars, the longest of 72:00:00 in front of this line");
}

TEST_F(nxReplayBarsTest, AFailureInOnTickDataIsTold)
{
    run.AddQuotes("@01,A,,,,,10,3,BUY\n@02,A,,,,,10,3,BUY\n");
    RunFor(
        "function OnInit() make{period = 'MINUTE', ticks = 1, realTime = true} end "
        "function OnTickData() error('no') end");
    EXPECT_NE(run.GetErrors().find("in OnTickData at 01.000"), std::string::npos) << run.err;
    EXPECT_EQ(run.GetLine("end"), "a callback failed");
}

}  // namespace

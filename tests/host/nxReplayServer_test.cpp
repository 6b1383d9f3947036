#include "host/run/nxRun.h"

#include <thread>

#include "tests/host/nxHostFixture.h"

namespace {

// Names the parts of a price that the script sees change: "bid ask last".
constexpr const char* ChangeFunction = R"(
function changes(price)
  local text = ""
  for _, name in ipairs({ "isBid", "isAsk", "isLast" }) do
    if price[name](price) then text = text .. " " .. name end
  end
  return text
end
function log(...)
  local texts = {}
  for i = 1, select("#", ...) do texts[i] = tostring((select(i, ...))) end
  job:logText(table.concat(texts, " "))
end
)";

class nxReplayServerTest : public ::testing::Test
{
protected:
    void SetScript(const std::string& text) { run.SetScript(ChangeFunction + text); }

    nxHostRun run;
};

}  // namespace

TEST_F(nxReplayServerTest, APriceTellsWhatItsRowChangedAndWhatTheMarketShows)
{
    SetScript(R"(
function OnInit() job:getProduct("A"):subscribePrice() end
function OnPrice(p)
  log(p.bidPrice, p.bidVolume, p.askPrice, p.askVolume, p.lastPrice, p.lastVolume, p.lastBuySell .. changes(p))
end)");
    run.AddQuotes(R"(@00,A,99,1,,,,,
@01,A,,,101.5,2,,,
@02,A,,7,,,,,
@03,A,,,,,100,3,SELL
@04,A,,,,,,4,BUY
@05,A,99.5,1,,,99.5,2,
@06,A,102,1,,,,,
)");
    EXPECT_EQ(run.RunForLog(), R"(00.000  99 1 nil nil nil nil  isBid
01.000  99 1 101.5 2 nil nil  isAsk
02.000  99 7 101.5 2 nil nil  isBid
03.000  99 7 101.5 2 100 3 SELL isLast
04.000  99 7 101.5 2 100 4 BUY isLast
05.000  99.5 1 101.5 2 99.5 2  isBid isLast
06.000  102 1 101.5 2 99.5 2  isBid
)");
    EXPECT_EQ(run.GetLine("events"), "4 quotes, 3 trades");
    EXPECT_EQ(run.GetLine("data"), "A: 1 crossed quote (bid above ask)");
}

TEST_F(nxReplayServerTest, DailyFiguresBeginAnewWithTheFirstTradeOfAUtcDay)
{
    SetScript(R"(
function OnInit() job:getProduct("A"):subscribePrice() end
function OnPrice(p) log(p.open, p.high, p.low, p.close, p.previousClose, p.totalTradedVolume) end)");
    run.AddQuotes(R"(20240108:23:59:58,A,,,,,100,3,BUY
20240108:23:59:59.999,A,,,,,99,2,BUY
20240109:00:00:00,A,98,1,,,,,
20240109:00:00:01,A,,,,,97,1,BUY
)");
    EXPECT_EQ(run.RunForLog(), R"(20240108:23:59:58.000  100 100 100 100 nil 3
20240108:23:59:59.999  100 100 99 99 nil 5
20240109:00:00:00.000  100 100 99 99 nil 5
20240109:00:00:01.000  97 97 97 97 99 1
)");
}

TEST_F(nxReplayServerTest, ABarIsAPrice)
{
    SetScript(R"(
function OnInit() job:getProduct("A"):subscribePrice() end
function OnPrice(p)
  log(p.open, p.high, p.low, p.close, p.lastPrice, p.lastVolume, p.totalTradedVolume, p.bidPrice, changes(p))
end)");
    run.AddBars("20240108,A,10,12.5,9,11,100\n20240109,A,11,11,11,11,0\n");
    EXPECT_EQ(run.RunForLog(), R"(20240108:00:00:00.000  10 12.5 9 11 11 100 100 nil  isLast
20240109:00:00:00.000  11 11 11 11 11 0 0 nil  isLast
)");
    EXPECT_EQ(run.GetLine("events"), "2 bars");
}

TEST_F(nxReplayServerTest, RowsOfOneTimeAreOneDepthEventAndMakeThePriceOfAProductWithoutQuotes)
{
    const std::string depth = R"(@00,A,BUY,99,5
@00,A,BUY,98,6
@00,A,SELL,101,7
@01,A,BUY,98,1
@02,A,BUY,99,0
@02,A,BUY,98,0
)";
    SetScript(R"(
function OnInit() job:getProduct("A"):subscribe() end
function OnMarketDepth(d) log("depth", d.bidCount, d.askCount, d:getBidVolumeAtPrice(98)) end
function OnPrice(p) log("price", p.bidPrice, p.bidVolume, p.askPrice, changes(p)) end)");
    run.AddDepth(depth);
    EXPECT_EQ(run.RunForLog(), R"(00.000  depth 2 1 11
00.000  price 99 5 101  isBid isAsk
01.000  depth 2 1 6
02.000  depth 0 1 0
02.000  price nil nil 101  isBid
)");
    EXPECT_EQ(run.GetLine("events"), "3 depth changes (from 6 depth rows)");

    run.AddQuotes("@01.5,A,99,4,,,,,\n");
    EXPECT_EQ(run.RunForLog(), R"(00.000  depth 2 1 11
01.000  depth 2 1 6
01.500  price 99 4 nil  isBid
02.000  depth 0 1 0
)") << "with quotes of its own the price comes from there only";
}

TEST_F(nxReplayServerTest, DeliversWhatIsSubscribedAndNothingElse)
{
    const struct
    {
        const char* name;
        const char* subscribe;
        const char* log;
    } rows[] = {
        {"prices and depth", "a:subscribe()", "price 1\ndepth 1\nprice 1\n"},
        {"prices", "a:subscribePrice()", "price 1\nprice 1\n"},
        {"depth", "a:subscribeMarketDepth()", "depth 1\n"},
        {"state", "a:subscribeState()", "state 1 true false\nstate 1 false true\n"},
        {"twice is once", "a:subscribe() a:subscribePrice() a:subscribeMarketDepth()",
         "price 1\ndepth 1\nprice 1\n"},
        {"the other product", "b:subscribe() b:subscribeState()",
         "state 2 true false\nprice 2\nstate 2 false true\n"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        nxHostRun one;
        one.SetScript(ChangeFunction + std::string(R"(
function OnInit() local a, b = job:getProduct("A"), job:getProduct("B") )") +
                      row.subscribe + R"( end
function OnPrice(p) log("price", p.id) end
function OnMarketDepth(d) log("depth", d.id) end
function OnProductState(s) log("state", s.id, s:isOpen(), s:isClosed()) end)");
        one.AddQuotes("@00,A,1,1,,,,,\n@01,B,1,1,,,,,\n@01,C,1,1,,,,,\n@03,A,2,1,,,,,\n");
        one.AddDepth("@02,A,BUY,1,1\n");
        std::string log = one.RunForLog();
        for (std::size_t line = 0; line < log.size(); line = log.find('\n', line) + 1)
            log.erase(line, std::string_view("00.000  ").size());
        EXPECT_EQ(log, row.log);
    }
}

TEST_F(nxReplayServerTest, AProductIsOpenFromItsFirstRowAndClosedWhenTheDataEnds)
{
    SetScript(R"(
function OnInit() a = job:getProduct("A") a:subscribeState() a:subscribePrice() log(a.state:isOpen()) end
function OnProductState(s) log(s:isPreOpen(), s:isOpen(), s:isClosed(), a.price.bidPrice) end
function OnPrice() log(a.state:isOpen()) end
function OnShutdown() log("end", a.state:isOpen(), a.state:isClosed()) end)");
    run.AddQuotes("@00,B,1,1,,,,,\n@01,A,1,1,,,,,\n@02,A,2,1,,,,,\n");
    EXPECT_EQ(run.RunForLog(), R"(00.000  false
01.000  false true false nil
01.000  true
02.000  true
02.000  false false true 2
02.000  end false true
)");
}

// Also where the data hold no row at that time, and quotes from outside the hours open nothing.
TEST_F(nxReplayServerTest, TradingHoursOpenAndCloseTheMarketAtTheirTimes)
{
    SetScript(R"(
function OnInit() a = job:getProduct("A") a:subscribeState() a:subscribePrice() log(a.state:isOpen()) end
function OnProductState(s) log(s:isOpen() and "open" or "closed") end
function OnPrice(p) log(p.bidPrice, a.state:isOpen()) end)");
    nxProductDescription product;
    product.name = "A";
    ASSERT_EQ(nxTradingHours::SetFromText("14:31-14:32", product.tradingHours), nullptr);
    run.options.products = {product};
    run.AddQuotes("@30,A,1,1,,,,,\n20240108:14:31:00,A,2,1,,,,,\n20240108:14:32:30,A,4,1,,,,,\n");
    EXPECT_EQ(run.RunForLog(), R"(30.000  false
30.000  1 false
20240108:14:31:00.000  open
20240108:14:31:00.000  2 true
20240108:14:32:00.000  closed
20240108:14:32:30.000  4 false
)");
}

TEST_F(nxReplayServerTest, TradedVolumesBeginWithWhatTheMarketHasAndFollowTheTrades)
{
    SetScript(R"(
function OnInit() a = job:getProduct("A") a:subscribePrice() end
local function show(v) local t = {} for i = 1, v.count do t[i] = table.concat({v:getPriceVolumeAtIndex(i)}, "x") end return table.concat(t, " ") end
function OnPrice(p)
  if p.bidPrice == 2 then a:subscribePriceTradeVolumes() end
  log("price", show(a.priceTradeVolumes))
end
function OnPriceTradeVolumes(v) log(v.id, show(v), v:getVolumeAtPrice(10)) end)");
    run.AddQuotes(
        "@00,A,1,1,,,10,3,BUY\n@01,A,2,1,,,,,\n@02,A,,,,,10,2,BUY\n@03,A,3,1,,,,,\n@04,A,,,,,11,1,SELL\n");
    EXPECT_EQ(run.RunForLog(), R"(00.000  price 
01.000  price 10x3
02.000  price 10x5
02.000  1 10x5 5
03.000  price 10x5
04.000  price 10x5 11x1
04.000  1 10x5 11x1 5
)");
}

TEST_F(nxReplayServerTest, ASubscriptionToPositionsBeginsWithTheOneOfNow)
{
    SetScript(R"(
function OnInit() a = job:getProduct("A") a:subscribePositions() a:subscribePositions() log("started") end
function OnPosition(p) log(p.id, p.totalNet, p.openPos) end)");
    run.AddQuotes("@00,A,1,1,,,,,\n");
    EXPECT_EQ(run.RunForLog(), "00.000  started\n00.000  1 0 0\n");
}

TEST_F(nxReplayServerTest, AProductMetWhileTheMarketsCloseDoesNoHarm)
{
    SetScript(R"(
function OnInit() job:getProduct("A"):subscribeState() end
function OnProductState(s) if s:isClosed() then for i = 1, 50 do job:getProduct("X" .. i) end end end)");
    for (int i = 1; i <= 50; ++i) {
        run.options.products.emplace_back();
        run.options.products.back().name = "X" + std::to_string(i);
    }
    run.AddQuotes("@00,A,1,1,,,,,\n");
    EXPECT_EQ(run.Run(), nxRunResult::Done) << run.err;
}

TEST_F(nxReplayServerTest, SubscribingInsideACallbackBeginsThere)
{
    SetScript(R"(
function OnInit() job:getProduct("A"):subscribePrice() end
function OnPrice(p)
  log(p.id, p.bidPrice)
  if p.id == 1 then job:getProduct("B"):subscribePrice() end
end)");
    run.AddQuotes("@00,B,1,1,,,,,\n@01,A,2,1,,,,,\n@02,B,3,1,,,,,\n");
    EXPECT_EQ(run.RunForLog(), "01.000  1 2\n02.000  2 3\n");
}

TEST_F(nxReplayServerTest, ACallbackDefinedLaterIsCalledFromThenOn)
{
    SetScript(R"(
function OnInit()
  job:getProduct("A"):subscribe()
  function OnPrice(p)
    log("price", p.bidPrice)
    function OnMarketDepth(d) log("depth", d.bidCount) end
  end
end)");
    run.AddQuotes("@01,A,1,1,,,,,\n");
    run.AddDepth("@00,A,BUY,1,1\n@02,A,BUY,2,1\n");
    EXPECT_EQ(run.RunForLog(), "01.000  price 1\n02.000  depth 2\n");
}

TEST_F(nxReplayServerTest, FilesAreMergedByTimeTheOneNamedEarlierFirst)
{
    SetScript(R"(
function OnInit() job:getProduct("A"):subscribePrice() job:getProduct("B"):subscribePrice() end
function OnPrice(p) log(p.id, p.bidPrice) end)");
    run.AddQuotes("@00,A,1,1,,,,,\n@02,A,2,1,,,,,\n@02,A,3,1,,,,,\n", "first.csv");
    run.AddQuotes("@01,B,4,1,,,,,\n@02,B,5,1,,,,,\n@03,B,6,1,,,,,\n", "second.csv");
    EXPECT_EQ(run.RunForLog(),
              "00.000  1 1\n01.000  2 4\n02.000  1 2\n02.000  1 3\n02.000  2 5\n03.000  2 6\n");
}

TEST_F(nxReplayServerTest, ProductsKnowWhatTheirDescriptionSays)
{
    SetScript(R"(
function OnInit()
  for _, name in ipairs({ "A", "B", "C" }) do
    local p = job:getProduct(name)
    p:subscribePrice()
    log(p.name, p.tickSize, p.pointValue, p.currency, job:getProduct(name).id == p.id)
  end
end
function OnPrice(p) log(p.bidVolume, job:getProduct("B").tickSize) end)");
    nxProductDescription a;
    a.name = "A";
    a.tickSize = nxDecimal::FromMantissa(25, 2);
    a.lotSize = nxDecimal::FromMantissa(1, 3);
    a.pointValue = nxDecimal::FromMantissa(50, 0);
    ASSERT_TRUE(a.currency.SetFromString("EUR"));
    nxProductDescription c;
    c.name = "C";
    run.options.products = {a, c};
    run.AddQuotes("@00,A,99.25,2.507,,,,,\n@01,B,1.5,1,,,,,\n");
    EXPECT_EQ(run.RunForLog(), R"(00.000  A 0.25 50 EUR true
00.000  B 0.1 nil nil true
00.000  C 1 nil nil true
00.000  2507 0.1
01.000  1 0.1
)");
}

TEST_F(nxReplayServerTest, AFinerPriceLateInTheDataMakesTheTickFiner)
{
    SetScript(R"(
function OnInit() a = job:getProduct("A") a:subscribe() log(a.tickSize) end
function OnPrice(p) if p.bidPrice ~= 1 then log(a.tickSize) end end)");
    std::string rows;
    for (unsigned int i = 0; i < nxFeedReader::PeekRows; ++i)
        rows += "@00,A,1,1,,,,,\n";
    run.AddQuotes("@00,B,1,1,,,,,\n" + rows + "@01,A,1.25,1,,,,,\n@02,B,1,1,,,,,\n");
    EXPECT_EQ(run.RunForLog(), "00.000  1\n01.000  0.01\n");
    // Also for a script that only looks at the product.
    SetScript(R"(
function OnInit() a = job:getProduct("A") job:getProduct("B"):subscribe() log(a.tickSize) end
function OnPrice() log(a.tickSize) end)");
    EXPECT_EQ(run.RunForLog(), "00.000  1\n00.000  1\n02.000  0.01\n");
}

TEST_F(nxReplayServerTest, TimersRunInRecordedTime)
{
    const struct
    {
        const char* name;
        const char* onInit;
        const char* onTimer;
        const char* rows;  // of product A
        const char* log;
    } rows[] = {
        {"before the event of the same time", "job:startTimer('t', 1000)", "",
         "@00,A,1,1,,,,,\n@01,A,2,1,,,,,\n", "00.000  1\n01.000  t\n01.000  2\n"},
        {"in the gap between events", "job:startTimer('t', 1500)", "", "@00,A,1,1,,,,,\n@05,A,2,1,,,,,\n",
         "00.000  1\n01.500  t\n03.000  t\n04.500  t\n05.000  2\n"},
        {"from the whole second in front of the first event", "job:startTimer('t', 250)", "",
         "@00.6,A,1,1,,,,,\n", "00.250  t\n00.500  t\n00.600  1\n"},
        {"two due at once come as they were started", "job:startTimer('z', 1000) job:startTimer('a', 500)",
         "", "@00,A,1,1,,,,,\n@01,A,2,1,,,,,\n", "00.000  1\n00.500  a\n01.000  z\n01.000  a\n01.000  2\n"},
        {"stopped from inside", "job:startTimer('t', 100)", "job:stopTimer('t')",
         "@00,A,1,1,,,,,\n@01,A,2,1,,,,,\n", "00.000  1\n00.100  t\n01.000  2\n"},
        {"started anew from inside, with another interval", "job:startTimer('t', 100)",
         "job:startTimer('t', 600)", "@00,A,1,1,,,,,\n@02,A,2,1,,,,,\n",
         "00.000  1\n00.100  t\n00.700  t\n01.300  t\n01.900  t\n02.000  2\n"},
        {"another one started from inside", "job:startTimer('t', 600)",
         "if name == 't' then job:startTimer('u', 100) end", "@00,A,1,1,,,,,\n@01,A,2,1,,,,,\n",
         "00.000  1\n00.600  t\n00.700  u\n00.800  u\n00.900  u\n01.000  u\n01.000  2\n"},
        {"one that is stopped by another due at the same time",
         "job:startTimer('a', 500) job:startTimer('b', 500)", "if name == 'a' then job:stopTimer('b') end",
         "@00,A,1,1,,,,,\n@00.5,A,2,1,,,,,\n", "00.000  1\n00.500  a\n00.500  2\n"},
        {"a name started again counts from then", "job:startTimer('t', 300) job:startTimer('t', 700)", "",
         "@00,A,1,1,,,,,\n@01,A,2,1,,,,,\n", "00.000  1\n00.700  t\n01.000  2\n"},
        {"none behind the last event", "job:startTimer('t', 1000)", "", "@00,A,1,1,,,,,\n@00.5,A,2,1,,,,,\n",
         "00.000  1\n00.500  2\n"},
        {"before 1970", "job:startTimer('t', 1000)", "",
         "19691231:23:59:58.5,A,1,1,,,,,\n19691231:23:59:59.5,A,2,1,,,,,\n",
         "19691231:23:59:58.500  1\n19691231:23:59:59.000  t\n19691231:23:59:59.500  2\n"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        nxHostRun one;
        one.SetScript(ChangeFunction +
                      std::string("function OnInit() job:getProduct('A'):subscribePrice() ") + row.onInit +
                      " end\nfunction OnPrice(p) log(p.bidPrice) end\n" +
                      "function OnTimer(name) log(name) " + row.onTimer + " end");
        one.AddQuotes(row.rows);
        EXPECT_EQ(one.RunForLog(), row.log);
        EXPECT_EQ(one.GetErrors(), "");
    }
}

TEST_F(nxReplayServerTest, TheSummaryCountsTimersAndNamesTheRecordedTime)
{
    SetScript(R"(
function OnInit() job:startTimer("t", 250) end
function OnTimer() end)");
    run.AddQuotes("@00.6,A,1,1,,,,,\n@01.5,A,1,2,,,,,\n");
    ASSERT_EQ(run.Run(), nxRunResult::Done);
    EXPECT_EQ(run.GetLine("recorded"), "00.600000000 to 01.500000000");
    EXPECT_EQ(run.GetLine("events"), "2 quotes, 6 timers");

    SetScript(R"(
function OnInit() job:startTimer("t", 250) end
function OnTimer() job:shutdown() end)");
    ASSERT_EQ(run.Run(), nxRunResult::Done);
    EXPECT_EQ(run.GetLine("events"), "1 timer");
    EXPECT_EQ(run.GetLine("recorded"), "") << "the script ended before the first row";
}

TEST_F(nxReplayServerTest, TheClockFollowsTheRecordedTime)
{
    SetScript(R"(
function now()
  local text = string.format("%d-%d-%d %d:%d:%d", clock.year, clock.month, clock.day, clock.hour, clock.minute, clock.second)
  log(text, date:getAsDate(clock.totalSeconds), clock.totalSeconds % 1, clock:isInRange("14:00", "15:00"))
end
function OnInit() job:getProduct("A"):subscribePrice() job:startTimer("t", 300000) now() end
function OnTimer(name) job:stopTimer(name) now() end
OnPrice, OnShutdown = now, now)");
    run.AddQuotes("@59.5,A,1,1,,,,,\n20240108:14:39:00.25,A,2,1,,,,,\n20240301:00:00:00,A,2,1,,,,,\n");
    const std::string log = run.RunForLog();
    EXPECT_EQ(run.GetErrors(), "");
    EXPECT_EQ(log, R"(59.000  2024-1-8 14:30:59 59 0 true
59.500  2024-1-8 14:30:59 59 0.5 true
20240108:14:35:59.000  2024-1-8 14:35:59 20240108:14:35:59 0 true
20240108:14:39:00.250  2024-1-8 14:39:0 20240108:14:39:00 0.25 true
20240301:00:00:00.000  2024-3-1 0:0:0 20240301:00:00:00 0 false
20240301:00:00:00.000  2024-3-1 0:0:0 20240301:00:00:00 0 false
)");
}

TEST_F(nxReplayServerTest, ShutdownEndsTheRunAfterOnShutdown)
{
    const struct
    {
        const char* name;
        const char* script;
        const char* log;
    } rows[] = {
        {"in OnInit", "function OnInit() job:shutdown() log('init') end", "00.000  init\n00.000  bye\n"},
        {"in OnPrice",
         "function OnInit() job:getProduct('A'):subscribe() end\n"
         "function OnPrice(p) job:shutdown() log(p.bidPrice) end",
         "00.000  1\n00.000  bye\n"},
        {"in OnTimer",
         "function OnInit() job:startTimer('t', 700) job:getProduct('A'):subscribe() end\n"
         "function OnPrice(p) log(p.bidPrice) end\nfunction OnTimer() job:shutdown() end",
         "00.000  1\n00.700  bye\n"},
        {"in OnProductState, before the price of the same row",
         "function OnInit() local a = job:getProduct('A') a:subscribeState() a:subscribe() end\n"
         "function OnProductState() job:shutdown() end function OnPrice() log('price') end",
         "00.000  bye\n"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        nxHostRun one;
        one.SetScript(ChangeFunction + std::string(row.script) + "\nfunction OnShutdown() log('bye') end");
        one.AddQuotes("@00,A,1,1,,,,,\n@01,B,1,1,,,,,\n@02,A,x,1,,,,,\n");
        EXPECT_EQ(one.Run(), nxRunResult::Done) << "the bad row behind is never read";
        EXPECT_EQ(one.GetLog(), row.log);
        EXPECT_EQ(one.GetLine("end"), "the script shut down");
        EXPECT_EQ(one.GetErrors(), "");
    }
}

TEST_F(nxReplayServerTest, NothingIsReadBehindTheEventThatEndedTheRun)
{
    SetScript("function OnInit() job:getProduct('A'):subscribe() end\nfunction OnPrice() job:shutdown() end");
    run.options.lenient = true;
    run.AddQuotes("@00,A,1,1,,,,,\n@01,A,x,1,,,,,\n@02,A,1,1,,,,,\n");
    EXPECT_EQ(run.Run(), nxRunResult::Done);
    EXPECT_EQ(run.GetLine("data"), "") << "no remark on the bad row";
}

TEST_F(nxReplayServerTest, AnInterruptionEndsTheRunProperly)
{
    // Wherever the replay is when the flag is set, at the latest it waits for a row that is an hour away.
    std::atomic<bool> interrupted = false;
    run.options.interrupted = &interrupted;
    run.options.speed = 1.0;
    SetScript(R"(
function OnInit() job:getProduct("A"):subscribePrice() end
function OnPrice(p) log(p.bidPrice) end
function OnShutdown() log("bye") end)");
    run.AddQuotes("@00,A,1,1,,,,,\n20240108:15:30:00,A,2,1,,,,,\n");
    std::thread other([&] { interrupted = true; });
    EXPECT_EQ(run.Run(), nxRunResult::Done);
    other.join();
    EXPECT_TRUE(run.GetLog().ends_with("00.000  bye\n")) << run.GetLog();
    EXPECT_EQ(run.GetLine("end"), "interrupted");
    EXPECT_LE(run.statistics.quotes, 1u) << "the row that was waited for is not played";
}

TEST_F(nxReplayServerTest, TheSameRunGivesTheSameBytes)
{
    SetScript(R"(
function OnInit() a = job:getProduct("A") a:subscribe() job:startTimer("t", 333) end
function OnPrice(p) log(p.bidPrice) if p.bidVolume == 4 then error("four") end end
function OnMarketDepth(d) log(d.bidCount) end
function OnTimer(name) log(name, clock.dateTime) end
function OnShutdown() log("bye") end)");
    run.options.continueOnError = true;
    run.AddQuotes("@00,A,1,1,,,,,\n@01,A,2,4,,,,,\n@02,A,1,4,1,1,,,\n");
    run.AddDepth("@00,A,BUY,1,1\n@01.1,A,BUY,2,1\n@01.1,A,BUY,1,0\n");
    EXPECT_EQ(run.Run(), nxRunResult::ScriptFailed);
    const std::string first = run.out;
    static_cast<void>(run.Run());
    EXPECT_EQ(run.out, first);
}

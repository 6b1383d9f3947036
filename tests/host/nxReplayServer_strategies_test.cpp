#include <filesystem>

#include "host/market/nxProductFile.h"
#include "tests/host/nxHostFixture.h"

namespace {

constexpr const char* Functions = R"(
function log(...)
  local texts = {}
  for i = 1, select("#", ...) do texts[i] = tostring((select(i, ...))) end
  job:logText(table.concat(texts, " "))
end
function implied(p) return p.impliedBidPrice, p.impliedBidVolume, p.impliedAskPrice, p.impliedAskVolume end
)";

constexpr const char* Spread =
    R"(product = [{ name = "A" }, { name = "B" }, { name = "S", pointValue = 10, legs = [
  { product = "A" }, { product = "B", side = "SELL" }] }])";

class nxReplayServerStrategiesTest : public ::testing::Test
{
protected:
    void Describe(const std::string& products)
    {
        run.options.productFile = run.Write("products.toml", products);
        nxFeedError error;
        ASSERT_TRUE(nxProductFile::Read(run.options.productFile, run.options.products, error))
            << error.GetText();
    }
    void SetScript(const std::string& text) { run.SetScript(Functions + text); }

    nxHostRun run;
};

}  // namespace

TEST_F(nxReplayServerStrategiesTest, AScriptReadsTheLegsOfTheFile)
{
    Describe(R"(product = [{ name = "A" }, { name = "B" }, { name = "S", priceOffset = -0.25, legs = [
  { product = "A", priceRatio = 2.5 }, { product = "B", side = "SELL", tradeRatio = 3 }] }])");
    SetScript(R"(
function OnInit()
  local s = job:getProduct("S")
  log(s.tickSize, s.noLegs, s.priceOffset, s:getLeg(3), job:getProduct("A").noLegs, job:getProduct("A").priceOffset)
  for i = 1, 2 do log(s:getLeg(i).name, s:getLegSide(i), s:getLegPriceRatio(i), s:getLegTradeRatio(i)) end
end)");
    run.AddQuotes("@00,A,99,1,101,1,,,\n");
    EXPECT_EQ(run.RunForLog(), "00.000  0.01 2 -0.25 nil 0 nil\n00.000  A BUY 2.5 1\n00.000  B SELL 1 3\n");
}

TEST_F(nxReplayServerStrategiesTest, AnImpliedQuoteFollowsTheLegsEventWhereItChanged)
{
    Describe(Spread);
    SetScript(R"(
function OnInit()
  for _, name in ipairs({ "A", "S" }) do job:getProduct(name):subscribePrice() end
  job:getProduct("S"):subscribeState()
end
function OnProductState(state) log("S", state:isOpen() and "opens" or "closes") end
function OnPrice(p)
  if p.impliedBidPrice then log("S", implied(p)) else log(p.bidPrice, p:isBid(), p:isAsk(), p:isLast()) end
end)");
    run.AddQuotes(R"(@00,A,10,4,11,5,,,
@01,B,3,9,3.5,7,,,
@02,A,10,4,12,5,,,
@03,A,,,,,11,1,BUY
@04,B,,,,8,,,
@05,A,,,12.25,,,,
)");
    EXPECT_EQ(run.RunForLog(), R"(00.000  10 true true false
01.000  S opens
01.000  S 6.5 4 8 5
02.000  10 true true false
02.000  S 6.5 4 9 5
03.000  10 false false true
05.000  10 false true false
05.000  S 6.5 4 9.25 5
05.000  S closes
)");
    EXPECT_EQ(run.GetLine("events"), "5 quotes, 1 trade, 3 implied quotes");
}

// The file names them in the wrong order, and one event of A is one price of each.
TEST_F(nxReplayServerStrategiesTest, StrategiesOfStrategiesAreOfOneEvent)
{
    Describe(R"(product = [{ name = "T", legs = [{ product = "S" }, { product = "U", side = "SELL" }] },
  { name = "U", tickSize = 0.5, legs = [{ product = "A" }, { product = "B" }] }, { name = "A" },
  { name = "B" }, { name = "S", legs = [{ product = "A" }, { product = "B", side = "SELL" }] }])");
    SetScript(R"(
function OnInit()
  for _, name in ipairs({ "T", "S", "U" }) do job:getProduct(name):subscribePrice() end
end
function OnPrice(p)
  for _, name in ipairs({ "S", "U", "T" }) do log(name, implied(job:getProduct(name).price)) end
end)");
    run.AddQuotes("@00,B,3,9,3.2,7,,,\n@01,A,10,4,11,5,,,\n");
    EXPECT_EQ(run.RunForLog(), R"(01.000  S nil nil nil nil
01.000  U 13 4 14.5 5
01.000  T nil nil nil nil
01.000  S 6.8 4 8 5
01.000  U 13 4 14.5 5
01.000  T nil nil nil nil
01.000  S 6.8 4 8 5
01.000  U 13 4 14.5 5
01.000  T -7.7 4 -5 4
)");
}

TEST_F(nxReplayServerStrategiesTest, RowsOfItsOwnAreItsDirectQuotes)
{
    Describe(Spread);
    SetScript(R"(
function OnInit() s = job:getProduct("S") s:subscribePrice() end
function OnPrice(p) log(p.bidPrice, p.bidVolume, p.paperBidPrice, p.impliedBidPrice, p.lastPrice, s.tickSize) end)");
    run.AddQuotes(R"(@00,A,10,4,11,5,,,
@01,B,3,9,3.5,7,,,
@02,S,6.5,3,,,6.75,1,BUY
@03,S,6.625,2,,,,,
@04,B,,,,,3,1,BUY
@05,B,,,3.25,,,,
)");
    EXPECT_EQ(run.RunForLog(), R"(01.000  6.5 4 nil 6.5 nil 0.001
02.000  6.5 7 6.5 6.5 6.75 0.001
03.000  6.625 2 6.625 6.5 6.75 0.001
05.000  6.75 4 6.625 6.75 6.75 0.001
)");
}

TEST_F(nxReplayServerStrategiesTest, AStrategyIsOpenWhileAllItsLegsAre)
{
    Describe(R"(product = [{ name = "A", tradingHours = "14:30-14:31" }, { name = "B" },
  { name = "S", legs = [{ product = "A" }, { product = "B" }] },
  { name = "T", legs = [{ product = "S" }, { product = "B" }] }])");
    SetScript(R"(
function OnInit() for _, name in ipairs({ "S", "T", "A" }) do job:getProduct(name):subscribeState() end end
function OnProductState(state)
  log(job:getProduct("A").state:isOpen(), job:getProduct("S").state:isOpen(), job:getProduct("T").state:isOpen())
end)");
    run.AddQuotes("@00,A,1,1,2,1,,,\n@01,B,1,1,2,1,,,\n@59,B,1,1,2,1,,,\n20240108:14:32:00,B,1,1,2,1,,,\n");
    EXPECT_EQ(run.RunForLog(), R"(01.000  true true false
01.000  true true true
20240108:14:31:00.000  false true true
20240108:14:31:00.000  false false true
20240108:14:31:00.000  false false false
)");
}

TEST_F(nxReplayServerStrategiesTest, OrdersMeetTheBestOfDirectAndImplied)
{
    Describe(Spread);
    SetScript(R"(
function OnInit()
  s = job:getProduct("S")
  s:subscribePrice()
end
function OnPrice(p)
  if sent then return end
  sent = true
  s:createOrder{ side = "BUY", type = "LIMIT", spreadSpec = "cal", spreadInstance = "1" }:work{ volume = 2, price = 7 }
  s:createOrder{ side = "BUY", type = "MARKET" }:work{ volume = 3 }
end
function OnOrderFill(update)
  log(update.order.spreadSpec, update.fillVolume, update.fillPrice, s.position.openPos, s.totalPandL)
end)");
    run.options.recordFile = run.Write("record.jsonl", "");
    run.AddQuotes(R"(@00,A,10,4,11,5,,,
@01,B,3,9,3.5,2,,,
@02,B,3.5,9,3.75,2,,,
@03,A,,,10.5,1,,,
)");
    // Of 5 at 8 the market order takes 3; later there is one at 10.5 - 3.5 = 7, when the bid is 6.25. The
    // point value is 10.
    EXPECT_EQ(run.RunForLog(), R"(01.000   3 8 3 -45
03.000  cal 1 7 4 -60
)");
    std::ifstream record(run.options.recordFile);
    const std::string text{std::istreambuf_iterator<char>(record), {}};
    EXPECT_NE(text.find(R"("spreadSpec":"cal","spreadInstance":"1")"), std::string::npos) << text;
}

namespace {

// Takes what a run logs, and does something between two lines of it: the run is on the thread of the test.
class LineBuffer : public std::stringbuf
{
public:
    std::map<std::string, std::function<void()>> actions;  // by the end of the line

protected:
    std::streamsize xsputn(const char* text, std::streamsize count) override
    {
        const std::streamsize written = std::stringbuf::xsputn(text, count);
        const std::string all = str();
        for (const auto& [line, action] : actions)
            if (all.ends_with(line)) action();
        return written;
    }
};

}  // namespace

TEST_F(nxReplayServerStrategiesTest, AWatchedFileIsTakenOverAsFarAsItMayChange)
{
    Describe(Spread);
    SetScript(R"(
function OnInit() s = job:getProduct("S") s:subscribePrice() job:getProduct("A"):subscribePrice() end
function OnPrice(p) if p.impliedBidPrice then log(s.priceOffset, implied(p)) else log("A") end end)");
    run.AddQuotes("@00,B,3,9,3.5,7,,,\n@01,A,10,4,11,5,,,\n@02,A,,1,,,,,\n@03,A,,2,,,,,\n@04,A,,3,,,,,\n");
    run.options.watchProducts = true;
    run.options.watchInterval = {};
    LineBuffer buffer;
    int version = 0;
    const auto write = [&](const std::string& from, const std::string& to) {
        std::string text = Spread;
        text.replace(text.find(from), from.size(), to);
        run.Write("products.toml", text);
        std::filesystem::last_write_time(
            run.options.productFile,
            std::filesystem::file_time_type::clock::now() + std::chrono::hours(++version));
    };
    buffer.actions = {
        {" 6.5 4 8 5\n", [&] { write("legs =", "priceOffset = 0.5, legs ="); }},
        {" 7 1 8.5 5\n", [&] { write("pointValue = 10", "pointValue = 5"); }},
        {" 7 2 8.5 5\n", [&] { write("SELL", "HOLD"); }},
    };
    std::ostream out(&buffer);
    std::ostringstream err;
    nxRun server(run.options, out, err);
    EXPECT_EQ(server.Run(), nxRunResult::Done);
    const std::string log = run.Hide(buffer.str());
    EXPECT_EQ(log.substr(0, log.find("--- summary")), R"(01.000  A
01.000  nil 6.5 4 8 5
01.000  products.toml: S: priceOffset is 0.5, was none
01.000  0.5 7 4 8.5 5
02.000  A
02.000  0.5 7 1 8.5 5
02.000  products.toml: pointValue of "S" cannot change during a run; the products stay as they were
03.000  A
03.000  0.5 7 2 8.5 5
03.000  products.toml:2:46: side is neither "BUY" nor "SELL"; the products stay as they were
04.000  A
04.000  0.5 7 3 8.5 5
)");
}

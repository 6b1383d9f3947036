#include "tests/host/nxHostFixture.h"

namespace {

constexpr const char* Script = R"(
function OnInit()
  a = job:getProduct("A")
  a:subscribePrice()
  a:subscribePositions()
end
function OnPosition(p) job:logText(table.concat({"position", p.totalNet, p.localNet, p.dayNet, p.openAveragePrice}, " ")) end
function take(side, volume) a:createOrder{side = side, type = "MARKET"}:work{volume = volume} end
function OnPrice(price)
  n = (n or 0) + 1
  if step then step(n) end
  if n > 1 then job:logText(table.concat({a.totalPandL, a.dayPandL, tostring(job:getPandL("USD")), tostring(a.ownBestBid)}, " ")) end
end
)";

constexpr const char* Rows =
    "@00,A,99,10,101,10,,,\n"
    "@01,A,103,10,105,10,,,\n"
    "20240109:00:00:00,A,107,10,109,10,,,\n";

nxProductDescription Describe(bool isRate)
{
    nxProductDescription product;
    product.name = "A";
    product.tickSize = nxDecimalOne;
    product.pointValue = nxDecimal::FromMantissa(5, 1);
    product.currency.SetFromString("USD");
    product.takerFee = isRate ? nxDecimal::FromMantissa(1, 2) : nxDecimal::FromMantissa(25, 2);
    product.feeIsRate = isRate;
    return product;
}

// 4 lots at 101, half a unit of money a point, a quarter a lot in fees: -1 at once, and the spread of 2.
TEST(JobProfit, FollowsTheMarketAndTheDay)
{
    nxHostRun run;
    run.options.products = {Describe(false)};
    run.SetScript(
        std::string(Script) +
        "function step(n) if n == 1 then take('BUY', 4) end\n"
        "if n == 2 then a:createOrder{side = 'BUY', type = 'LIMIT'}:work{volume = 1, price = 90} end end");
    run.AddQuotes(Rows);
    EXPECT_EQ(run.RunForLog(),
              "00.000  position 0 0 0 0\n"
              "00.000  position 4 4 4 101\n"
              "01.000  3 3 3 nil\n"
              "20240109:00:00:00.000  11 8 11 nil\n");
    EXPECT_EQ(run.GetLine("orders"), "2 orders, 1 fill, volume 4, maker share 0.0%");
    EXPECT_EQ(run.GetLine("profit"), "USD 11: realised -1, open 12, fees in it 1, largest drawdown 5");
}

TEST(JobProfit, FeesByRate)
{
    nxHostRun run;
    run.options.products = {Describe(true)};
    run.SetScript(std::string(Script) +
                  "function step(n) take(n == 1 and 'BUY' or 'SELL', n == 1 and 2 or 1) end");
    run.AddQuotes(Rows);
    static_cast<void>(run.Run());
    // Bought 2 at 101, sold one at 103 and one at 107: 101 + 51.5 + 53.5 changed hands by a hundredth.
    EXPECT_EQ(run.GetLine("profit"),
              "USD 1.94: realised 1.94, open 0, fees in it 2.06, largest drawdown 3.01");
}

TEST(JobProfit, TotalsAreThoseOfAllJobs)
{
    nxHostRun run;
    run.AddJob("one", std::string(Script) + "function step(n) if n == 1 then take('BUY', 4) end end");
    run.AddJob("two", std::string(Script) + "function step(n) if n == 1 then take('SELL', 1) end end");
    run.AddQuotes("@00,A,99,10,101,10,,,\n");
    EXPECT_EQ(run.RunForLog(),
              "00.000  [one] position 0 0 0 0\n00.000  [two] position 0 0 0 0\n"
              "00.000  [one] position 4 4 4 101\n00.000  [two] position 4 0 4 101\n"
              "00.000  [one] position 3 4 3 101\n00.000  [two] position 3 -1 3 101\n");
}

TEST(JobProfit, RunsWithoutOrdersSayNothing)
{
    nxHostRun run;
    run.SetScript(Script);
    run.AddQuotes(Rows);
    static_cast<void>(run.Run());
    EXPECT_EQ(run.GetLine("orders") + run.GetLine("profit"), "");
}

}  // namespace

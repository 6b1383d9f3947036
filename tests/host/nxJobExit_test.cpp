#include "tests/host/nxHostFixture.h"

namespace {

// Buys 4 with the first price, and leaves an order to buy 2 at 98.
constexpr const char* Holder = R"(
function OnInit() p = job:getProduct("A") p:subscribePrice() if before then before() end end
function OnPrice(price)
  n = (n or 0) + 1
  if n == 1 then
    p:createOrder{side = "BUY", type = "MARKET"}:work{volume = 4}
    p:createOrder{side = "BUY", type = "LIMIT"}:work{volume = 2, price = 98}
  end
  if n == last then job:shutdown() end
end
)";

struct Case
{
    const char* name;
    const char* script;
    const char* rows;
    const char* exit;
    const char* orders;
    const char* hours = "";
};

TEST(JobExit, WhatIsLeftAtTheEndOfTheRunMeetsTheLastBook)
{
    constexpr const char* flatten = "function before() p:setFlattenOnExit(true) end";
    const Case cases[] = {
        {"whole", flatten, "@00,A,99,10,101,10,,,\n@01,A,97,9,98,9,,,\n", "A: sold 6 at 97",
         "3 orders, 3 fills, volume 12, maker share 16.7%"},
        {"as far as the book goes", flatten, "@00,A,99,3,101,10,,,\n",
         "A: sold 3 at 99, 1 long stay open: the book showed no more",
         "3 orders, 2 fills, volume 7, maker share 0.0%"},
        {"after the close", flatten, "@00,A,99,10,101,10,,,\n20240108:14:32:00,A,99,9,101,10,,,\n",
         "A: 4 long stay open: the market is closed", "2 orders, 1 fill, volume 4, maker share 0.0%",
         "14:30-14:31"},
        {"taken back", "function before() p:setFlattenOnExit(true) p:setFlattenOnExit(false) end",
         "@00,A,99,10,101,10,,,\n", "", "2 orders, 1 fill, volume 4, maker share 0.0%"},
        {"own orders are passed by",
         "function before() p:setFlattenOnExit(true) end\n"
         "function OnShutdown() end OnOrderCompleted = function() p:createOrder{side='BUY', "
         "type='LIMIT'}:work{volume=1, price=100} end",
         "@00,A,99,10,101,10,,,\n", "A: sold 4 at 99", "4 orders, 2 fills, volume 8, maker share 0.0%"},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.name);
        nxHostRun run;
        run.options.products.emplace_back().name = "A";
        if (*row.hours != '\0') {
            EXPECT_EQ(nxTradingHours::SetFromText(row.hours, run.options.products.back().tradingHours),
                      nullptr);
        }
        run.options.recordFile = run.Write("record.jsonl", "");
        run.SetScript(std::string(Holder) + row.script);
        run.AddQuotes(row.rows);
        EXPECT_EQ(run.Run(), nxRunResult::Done) << run.err;
        EXPECT_EQ(run.GetLine("on exit"), row.exit);
        EXPECT_EQ(run.GetLine("orders"), row.orders);
        std::ifstream record(run.options.recordFile);
        const std::string lines{std::istreambuf_iterator<char>(record), {}};
        const bool isSent = std::string(row.exit).find("sold") != std::string::npos;
        EXPECT_EQ(lines.find(R"("request":"flatten")") != std::string::npos, isSent);
    }
    nxHostRun bars;
    bars.SetScript(std::string(Holder) + flatten);
    bars.AddBars("@00,A,100,101,99,100,5\n@01,A,100,101,99,100,5\n");
    static_cast<void>(bars.Run());
    EXPECT_EQ(bars.GetLine("on exit"), "A: 4 long stay open: bars show no book");
}

// The other job runs on; requests and answers take a second each.
TEST(JobExit, AJobThatEndsEarlierPullsClosesOrLeavesItsOrders)
{
    constexpr const char* rows =
        "@00,A,99,10,101,10,,,\n@10,A,99,9,101,10,,,\n@11,A,,,,,97,1,SELL\n@20,A,97,9,99,10,,,\n@30,A,97,8,"
        "99,10,,,\n";
    const Case cases[] = {
        {"pulled", "last = 2", rows, "", "holder  2 orders, 1 fill, volume 4, maker share 0.0%"},
        {"left", "last = 2 function before() job:setShatterOnExit(true) end", rows, "",
         "holder  2 orders, 2 fills, volume 5, maker share 20.0%"},
        {"pulled and closed",
         "last = 2 function before() job:setShatterOnExit(true) p:setFlattenOnExit(true) end", rows,
         "holder  A: sold 4 at 99", "holder  3 orders, 2 fills, volume 8, maker share 0.0%"},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.name);
        nxHostRun run;
        run.options.exchange.request = run.options.exchange.answer = {1'000'000'000, 1'000'000'000};
        run.AddJob("holder", std::string(Holder) + row.script);
        run.AddJob("other", Holder);
        run.AddQuotes(row.rows);
        EXPECT_EQ(run.Run(), nxRunResult::Done) << run.err;
        EXPECT_EQ(run.GetLine("on exit"), row.exit);
        EXPECT_EQ(run.GetLine("orders"), row.orders);
    }
}

}  // namespace

#include "host/report/nxOrderStories.h"

#include "tests/host/nxHostFixture.h"

namespace {

constexpr const char* Rows =
    "@00,A,99,10,101,10,100,1,BUY\n"
    "@01,A,99,6,101,10,,,\n"
    "@02,A,,,,,99,2,SELL\n"
    "@03,A,99,3,101,10,,,\n"
    "@04,A,,,,,99,4,SELL\n"
    "@05,A,99,3,100,4,,,\n";

TEST(nxOrderStories, TellWhatHappenedAndWhatTheRestWaitedFor)
{
    const struct
    {
        const char* name;
        const char* script;
        const char* story;
    } cases[] = {
        {"the queue, a fill and a rest", "make{side='BUY', type='LIMIT'}:work{volume=5, price=99}",
         "00.000000000  sent: BUY LIMIT GFD of A, volume 5, price 99 (250 ms to the exchange)\n"
         "00.250000000  arrived, and is in the market\n"
         "00.250000000  joined the queue at 99 with 10 ahead\n"
         "01.000000000  queue ahead from 10 to 3: 1 trade took 2, 2 changes of the level cancelled 5, until "
         "03.000000000\n"
         "04.000000000  filled 1 at 99, 1 of 5 executed: maker, a trade reached its place in the queue, fee "
         "0.5\n"
         "04.000000000  queue ahead from 3 to 0: 1 trade took 3\n"
         "4 not filled: the market traded 6 at 99, and never through it; best ask 100 at 05.000000000\n"},
        {"out of reach, amended and pulled",
         "o = make{side='SELL', type='LIMIT'} o:work{volume=5, price=103} o:work{price=102} o:pull()",
         "00.000000000  sent: SELL LIMIT GFD of A, volume 5, price 103 (250 ms to the exchange)\n"
         "00.000000000  amendment sent: price 102 (250 ms to the exchange)\n"
         "00.000000000  pull sent (250 ms to the exchange)\n"
         "00.250000000  arrived, and is in the market\n"
         "00.250000000  joined the queue at 103 with an unknown volume ahead\n"
         "00.250000000  amended: volume 5, price 102\n"
         "00.250000000  joined the queue at 102 with an unknown volume ahead\n"
         "00.250000000  pulled\n"
         "not filled: its place in the queue is not known; the market never traded at 102; best bid 99 at "
         "00.250000000\n"},
        {"a stop", "make{side='BUY', type='MARKET', exec='STOP'}:work{volume=1, stopPrice=110}",
         "00.000000000  sent: BUY MARKET STOP GFD of A, volume 1, stop 110 (250 ms to the exchange)\n"
         "00.250000000  arrived, and is held out of the market\n"
         "not filled: the stop at 110 was never reached; nearest trade 99 at 02.000000000\n"},
        {"nothing within the price", "make{side='BUY', type='LIMIT', exec='FOK'}:work{volume=3, price=100}",
         "00.000000000  sent: BUY LIMIT FOK GFD of A, volume 3, price 100 (250 ms to the exchange)\n"
         "00.250000000  arrived, and is in the market\n"
         "00.250000000  ended: it could not be filled at once\n"
         "not filled: the market showed too little within the price; best ask 101 at 00.250000000\n"},
        {"never sent", "make{side='BUY', type='LIMIT'}", "created, and never worked\n"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        nxHostRun run;
        run.options.exchange.request = {250'000'000, 250'000'000};
        run.options.products.emplace_back().name = "A";
        run.options.products.back().makerFee = nxDecimal::FromMantissa(5, 1);
        run.SetScript(
            "function OnInit() p = job:getProduct('A') p:subscribePrice() end\n"
            "function make(what) return p:createOrder(what) end\n"
            "function OnPrice() if done then return end done = true " +
            std::string(row.script) + " end\n");
        run.AddQuotes(Rows);
        EXPECT_EQ(run.Run(), nxRunResult::Done);
        const std::string summary = run.out;
        run.options.explain = {1, 9, 1};
        EXPECT_EQ(run.Run(), nxRunResult::ScriptFailed);
        EXPECT_EQ(run.out, summary + "--- order 1\n" + row.story);
        EXPECT_TRUE(run.err.ends_with("--explain 9: there is no such order; the run had 1 order\n"));
    }
}

}  // namespace

#include "host/report/nxOrderStories.h"

#include "tests/host/nxHostFixture.h"
#include "tests/support/nxRowFile.h"

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
    nxExpectRows("host/stories.txt", [](const std::string& script) {
        nxHostRun run;
        run.options.exchange.request = {250'000'000, 250'000'000};
        run.options.products.emplace_back().name = "A";
        run.options.products.back().makerFee = nxDecimal::FromMantissa(5, 1);
        run.SetScript(
            "function OnInit() p = job:getProduct('A') p:subscribePrice() end\n"
            "function make(what) return p:createOrder(what) end\n"
            "function OnPrice() if done then return end done = true " +
            script + " end\n");
        run.AddQuotes(Rows);
        EXPECT_EQ(run.Run(), nxRunResult::Done);
        const std::string summary = run.out + "--- order 1\n";
        run.options.explain = {1, 9, 1};
        EXPECT_EQ(run.Run(), nxRunResult::ScriptFailed);
        EXPECT_TRUE(run.out.starts_with(summary)) << run.out;
        EXPECT_TRUE(run.err.ends_with("--explain 9: there is no such order; the run had 1 order\n"));
        return run.out.substr(summary.size());
    });
}

}  // namespace

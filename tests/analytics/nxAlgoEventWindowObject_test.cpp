#include "scriptFramework/analytics/nxAlgoEventWindowObject.h"

#include <gtest/gtest.h>

#include "tests/support/nxRecordingLog.h"
#include "tests/support/nxRowFile.h"
#include "tests/support/nxScriptJob.h"
#include "tests/support/nxSetTime.h"

namespace {

constexpr const char* Shown = "w.size, w.totaltraded, w.first, w.last, w.averagePrice, w.change, w.slope";

class nxAlgoEventWindowObjectTest : public testing::Test
{
protected:
    void Create(const std::string& arguments)
    {
        const std::string code = "w = job:getProduct('FDAX'):createTradeWindow(" + arguments + ") w:start()";
        ASSERT_EQ(script.Evaluate(code), "");
        ASSERT_NE(product.window, nullptr);
    }
    void SetTime(long long seconds) { time.now = nxTimeStamp(1704724200 + seconds, 0u); }
    // What the host is told of it.
    std::string Trade(long long seconds, const nxDecimal& price, const nxVolume& volume)
    {
        SetTime(seconds);
        nxPrice record;
        record.SetLastPrice(price);
        record.SetLastVolume(volume);
        product.window->OnPrice(record);
        return script.host.TakeCalls();
    }

    nxSetTime time{nxTimeStamp(1704724200, 0u)};
    nxScriptJob script;
    nxTestProduct& product = script.AddProduct("FDAX", 3);
    const nxDecimal usual{1005, 10, 1};
};

TEST_F(nxAlgoEventWindowObjectTest, IsMadeByTheProduct)
{
    nxExpectRows("scripts/times.txt", [this](const std::string& code) { return script.Tell(code); });
    EXPECT_EQ(product.windowCalls, "");
}

TEST_F(nxAlgoEventWindowObjectTest, TellsOfEachTradeThatChangesSomething)
{
    Create("5");
    EXPECT_EQ(script.Evaluate("w:start()"), "");
    EXPECT_EQ(product.windowCalls, "+");
    EXPECT_EQ(Trade(0, usual, 2u), "OnEventWindow");
    EXPECT_EQ(script.Evaluate(std::string("it.id == w.id, ") + Shown), "true 1 2 100.5 100.5 100.5 0 nil");
    EXPECT_EQ(Trade(1, usual, 2u), "OnEventWindow");  // the same once more is one more
    EXPECT_EQ(Trade(2, nxDecimal(), 2u), "");
    EXPECT_EQ(Trade(2, usual, nxVolume(nxNoChangeInitalizer())), "");
    EXPECT_EQ(Trade(2, usual, nxVolume()), "");
    EXPECT_EQ(Trade(6, usual, 2u), "");  // one goes and one like it comes
    EXPECT_EQ(script.Evaluate("w:enableRegression()"), "");
    EXPECT_EQ(Trade(6, nxDecimal(2010, 10, 1), 1u), "OnEventWindow");
    EXPECT_EQ(script.Evaluate(Shown), "3 5 100.5 201 134 100 10.05");
    EXPECT_EQ(script.Evaluate("w.min, w.max, w.range, w.vwap, w.stddev, w.averageVolume"),
              "100.5 201 100.5 120.6 47.37615434 1.66666667");
    EXPECT_EQ(script.Evaluate("w:stop() w:stop()"), "");
    EXPECT_EQ(product.windowCalls + script.host.TakeCalls(), "+-StopEventWindowTimer");
    EXPECT_EQ(script.Evaluate("w:start() return w.size"), "3");
    EXPECT_EQ(product.windowCalls, "+-+");
}

TEST_F(nxAlgoEventWindowObjectTest, ATimedWindowTellsAtEachTickAndAtNothingElse)
{
    Create("5, -1");
    EXPECT_EQ(Trade(0, usual, 3u), "");  // and neither at a tick, for it has none
    Create("5, 2");
    EXPECT_EQ(script.host.TakeCalls(), "StartEventWindowTimer(2)");
    EXPECT_EQ(Trade(0, usual, 3u), "");
    product.window->OnTimer();
    product.window->OnTimer();
    EXPECT_EQ(script.host.TakeCalls(), "OnEventWindow OnEventWindow");
    EXPECT_EQ(script.Evaluate(Shown), "1 3 100.5 100.5 100.5 0 nil");
    SetTime(6);
    product.window->OnTimer();
    EXPECT_EQ(script.Evaluate(Shown), "0 0 nil nil nil 0 nil");
    // A failing callback is told under another name, and the product's end stops the timer.
    ASSERT_EQ(script.Evaluate("function OnTradeWindowEvent() error('broken', 0) end"), "");
    nxRecordingLog log;
    product.window->OnTimer();
    EXPECT_EQ(log.TakeLines(), "32 [test] OnTradeStreamEvent failed. Error : broken\n");
    script.host.TakeCalls();
    script.host.products.clear();
    EXPECT_EQ(script.host.TakeCalls(), "StopEventWindowTimer StopEventWindowTimer");
}

}  // namespace

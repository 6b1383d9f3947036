#include "scriptFramework/analytics/nxAlgoEventWindowObject.h"

#include <gtest/gtest.h>

#include "tests/support/nxRecordingLog.h"
#include "tests/support/nxScriptJob.h"
#include "tests/support/nxSetTime.h"

namespace {

class nxAlgoEventWindowObjectTest : public testing::Test
{
protected:
    void Create(const std::string& arguments)
    {
        ASSERT_EQ(
            script.Evaluate("w = job:getProduct('FDAX'):createTradeWindow(" + arguments + ") w:start()"), "");
        window = product.window;
        ASSERT_NE(window, nullptr);
    }
    void Trade(long long seconds, const nxDecimal& price, const nxVolume& volume)
    {
        time.now = nxTimeStamp(1704724200 + seconds, 0u);
        nxPrice record;
        record.SetLastPrice(price);
        record.SetLastVolume(volume);
        window->OnPrice(record);
    }

    nxSetTime time{nxTimeStamp(1704724200, 0u)};
    nxScriptJob script;
    nxTestProduct& product = script.AddProduct("FDAX", 3);
    nxAlgoEventWindowObject* window = nullptr;
};

const nxDecimal Price(1005, 10, 1);
constexpr const char* Shown = "w.size, w.totaltraded, w.first, w.last, w.averagePrice, w.change, w.slope";

TEST_F(nxAlgoEventWindowObjectTest, IsMadeByTheProduct)
{
    nxRecordingLog log;
    const std::pair<const char*, const char*> rows[] = {
        {"p = job:getProduct('FDAX') p:createTradeWindow()",
         "error: createTradeWindow requires 1 or 2 parameters"},
        {"p:createTradeWindow(1, 2, 3)", "error: createTradeWindow requires 1 or 2 parameters"},
        {"a, b = p:createTradeWindow(60), p:createTradeWindow(60, 2.5) return a.id == b.id, a.size",
         "false 0"},
        {"a.min, a.max, a.averagePrice, a.vwap, a.range, a.totaltraded, a.stddev",
         "nil nil nil nil nil nil nil"},
        {"a.change, a.averageVolume, a.first, a.last, a.slope", "nil nil nil nil nil"},
        // Without a start there is nothing to stop.
        {"a:stop('ignored')", ""},
    };
    for (const auto& [code, expected] : rows)
        EXPECT_EQ(script.Evaluate(code), expected) << code;
    EXPECT_EQ(log.TakeLines(),
              "32 [test] Create Trade Window.  Duration : 60 , Frequency : 0\n"
              "32 [test] Create Trade Window.  Duration : 60 , Frequency : 2.5\n"
              "32 [test] Stopping Trade Window\n");
    EXPECT_EQ(product.windowCalls + script.host.TakeCalls(), "");
}

TEST_F(nxAlgoEventWindowObjectTest, TellsOfEachTradeThatChangesSomething)
{
    Create("5");
    EXPECT_EQ(script.Evaluate("w:start()"), "");
    EXPECT_EQ(product.windowCalls, "+");
    Trade(0, Price, 2u);
    EXPECT_EQ(script.Evaluate(std::string("it.id == w.id, ") + Shown), "true 1 2 100.5 100.5 100.5 0 nil");
    // The same once more is one more.
    Trade(1, Price, 2u);
    EXPECT_EQ(script.host.TakeCalls(), "OnEventWindow OnEventWindow");
    // No trade, or one that does not tell its volume.
    Trade(2, nxDecimal(), 2u);
    Trade(2, Price, nxVolume(nxNoChangeInitalizer()));
    Trade(2, Price, nxVolume());
    EXPECT_EQ(script.host.TakeCalls(), "");
    // One goes and one like it comes: nothing has changed.
    Trade(6, Price, 2u);
    EXPECT_EQ(script.host.TakeCalls(), "");
    EXPECT_EQ(script.Evaluate("w:enableRegression()"), "");
    Trade(6, nxDecimal(2010, 10, 1), 1u);
    EXPECT_EQ(script.host.TakeCalls(), "OnEventWindow");
    EXPECT_EQ(script.Evaluate(Shown), "3 5 100.5 201 134 100 10.05");
    EXPECT_EQ(script.Evaluate("w:stop() w:stop()"), "");
    EXPECT_EQ(product.windowCalls + script.host.TakeCalls(), "+-StopEventWindowTimer");
    EXPECT_EQ(script.Evaluate("w.size"), "3");
    EXPECT_EQ(script.Evaluate("w:start()"), "");
    EXPECT_EQ(product.windowCalls, "+-+");
}

TEST_F(nxAlgoEventWindowObjectTest, ATimedWindowTellsAtEachTickAndAtNothingElse)
{
    Create("5, 2");
    EXPECT_EQ(script.host.TakeCalls(), "StartEventWindowTimer(2)");
    Trade(0, Price, 3u);
    EXPECT_EQ(script.host.TakeCalls(), "");
    EXPECT_EQ(script.Evaluate(Shown), "0 nil nil nil nil nil nil");
    window->OnTimer();
    window->OnTimer();
    EXPECT_EQ(script.host.TakeCalls(), "OnEventWindow OnEventWindow");
    EXPECT_EQ(script.Evaluate(Shown), "1 3 100.5 100.5 100.5 0 nil");
    time.now = nxTimeStamp(1704724206, 0u);
    window->OnTimer();
    EXPECT_EQ(script.host.TakeCalls(), "OnEventWindow");
    EXPECT_EQ(script.Evaluate(Shown), "0 0 nil nil nil 0 nil");
}

TEST_F(nxAlgoEventWindowObjectTest, ANegativeFrequencyTellsNothing)
{
    Create("5, -1");
    Trade(0, Price, 3u);
    EXPECT_EQ(script.host.TakeCalls(), "");
}

TEST_F(nxAlgoEventWindowObjectTest, AFailingCallbackIsToldUnderItsOwnName)
{
    ASSERT_EQ(script.Evaluate("function OnTradeWindowEvent() error('broken', 0) end"), "");
    Create("5");
    nxRecordingLog log;
    Trade(0, Price, 3u);
    EXPECT_EQ(log.TakeLines(), "32 [test] OnTradeStreamEvent failed. Error : broken\n");
}

TEST_F(nxAlgoEventWindowObjectTest, EndsTimerAndSubscriptionWithItsProduct)
{
    Create("5, 2");
    script.host.TakeCalls();
    script.host.products.clear();
    EXPECT_EQ(script.host.TakeCalls(), "StopEventWindowTimer");
}

}  // namespace

#include "scriptFramework/orders/nxAlgoOrderObject.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "tests/support/nxRecordingLog.h"
#include "tests/support/nxScriptJob.h"
#include "tests/support/nxTestOrder.h"

namespace {

class nxAlgoOrderObjectTest : public testing::Test
{
protected:
    nxAlgoOrderObjectTest() { EXPECT_TRUE(script.job.OnOrderNew(order).IsSuccess()); }

    nxScriptJob script;
    nxTestProduct& product = script.AddProduct("FDAX", 12);
    nxTestOrder order{&script.host, &product};
};

TEST_F(nxAlgoOrderObjectTest, ShowsTheHostsAnswersEachUnderItsLock)
{
    // locks: of the calls into the host
    const std::tuple<const char*, const char*, const char*, const char*> rows[] = {
        {"it.id, it.product.id, it.price, it.side, it.hedgeCount, it.volume, it.working, it.executed",
         "0 12 nil '' 0 0 0 0", "1 12 2.25 'BUY' 6 3 4 5", "oooooo"},
        {"it.type, it.exec, it.time, it.spreadSpec, it.exchangeID, it.account, it.bracketStopLossType",
         "'' '' '' '' '' '' ''", "'LIMIT' 'IOC' 'GTC' '1:2' 'X14' 'ACC' 'MARKET'", "ooooooo"},
        {"it.stopPrice, it.zephrinID, it.icebergMinPeakSize, it.icebergMaxPeakSize, it.icebergThreshold",
         "nil nil nil nil nil", "12 13 15 16 17", "ooooo"},
        {"it.bracketProfit, it.bracketStopLoss, it.bracketStopLossLimit, it.bracketStopLossVolume",
         "nil nil nil nil", "18 nil 21 23", "oooo"},
        {"it.bracketStopLossTrailing, it.paidUp, it.qposition, it.originatingZephrinID", "true false 0 nil",
         "false true 27 26", "oooo"},
        {"it.isSpreadHedge, it.isSpreadWorking, it.isCurrentJob, it.averagePrice", "false false true nil",
         "true false false 24", "----"},
        {"it.parent, it.spreadWorkingOrder, it.lastVorantUpdateTime, it.lastExchangeFillTime",
         "nil nil nil nil", "nil table nil nil", "----"},
        {"it.lastFillPrice, it.lastFillVolume, it.reference", "nil nil ''", "nil nil ''", ""},
        {"it.state:isPending(), it.state:isFailed()", "true false", "true false", "--"},
        {"it:getHedgeID(0), it:getHedgeID(2 ^ 32 + 2.9)", "nil nil", "nil 2", "oo"},
    };
    order.SetSide("BUY");
    for (const auto& [code, bases, host, locks] : rows) {
        EXPECT_EQ(script.Evaluate(code), host) << code;
        EXPECT_EQ(order.TakeLocks(), locks) << code;
        EXPECT_FALSE(order.IsMutexHeld()) << code;
    }
    nxAlgoOrderObject base(&script.host, &product);
    ASSERT_TRUE(script.job.OnOrderNew(base).IsSuccess());
    for (const auto& [code, bases, host, locks] : rows)
        EXPECT_EQ(script.Evaluate(code), bases) << code;
    EXPECT_EQ(script.Evaluate("it:work{volume = 1} it:pull()"), "");
}

TEST_F(nxAlgoOrderObjectTest, FollowsTheHost)
{
    nxTestOrder parent(&script.host);
    parent.SetProduct(&product);
    order.parent = &parent;
    order._SetLastFill(nxDecimal::FromMantissa(1005, 1), 7);
    order.fillTime = nxDateTime(2024, 1, 31, 12, 30, 15, 0);
    EXPECT_EQ(script.Evaluate("it.parent.product.id, it.lastFillPrice, it.lastFillVolume, "
                              "it.lastExchangeFillTime.minute, it.lastVorantUpdateTime.second"),
              "12 100.5 7 30 16");
    EXPECT_EQ(script.Evaluate("it.reference = 42 it.id = 5 return it.reference, it.id"), "'42' 1");
    const std::pair<const char*, nxBuySellEnum> sides[] = {
        {"BUY", nxBuySell_Buy}, {"SELL", nxBuySell_Sell}, {"buy", nxEnum_Undefined}};
    for (const auto& [text, side] : sides) {
        order.SetSide(text);
        EXPECT_EQ(order.GetBuySellEnum(), side) << text;
    }
}

// The locks are free again on every path, also where Lua raises or the host throws.
TEST_F(nxAlgoOrderObjectTest, WorkPullAndHedgesFailWithTheHostsReasonOrTheirOwn)
{
    const std::string badHedge = "bad argument #1 to 'getHedgeID' (number expected, got string)";
    const std::tuple<const char*, bool, const char*, const char*, std::string> rows[] = {
        {"it:work()", false, "", "", "Requires named value parameter"},
        {"it:work{volume = 5}", true, "no market", "", "no market"},
        {"it:work{volume = 5}", false, "", "broken", "broken"},
        {"it:pull()", true, "", "", "Pull Order Validation Failed"},
        {"it:pull()", false, "", "broken", "broken"},
        {"it:getHedgeID()", false, "", "", "Requires index parameter"},
        {"it:getHedgeID('x')", false, "", "", badHedge},
        {"it:getHedgeID(1)", false, "", "broken", "broken"},
    };
    for (const auto& [code, refuse, hostError, throws, answer] : rows) {
        SCOPED_TRACE(code);
        order.refuse = refuse;
        order.throwOnCall = throws;
        script.host.lastError = hostError;
        EXPECT_EQ(script.Evaluate(code), "error: " + answer);
        EXPECT_FALSE(order.IsMutexHeld());
    }
    nxRecordingLog log;
    EXPECT_EQ(script.Evaluate("it:work{volume = 5}"), "error: broken");
    EXPECT_EQ(log.TakeLines(), "32 [test] Work order\n32 [test]  Volume (5)\n");
    order.throwOnCall.clear();
    script.host.lastError = "old";
    EXPECT_EQ(script.Evaluate("it:work(5) it:pull()"), "");
    EXPECT_TRUE(order.changes.GetVolume().IsNoChange());
    EXPECT_EQ(order.locks, "oooo");
}

TEST_F(nxAlgoOrderObjectTest, PullPassesTheAlgoIDOrNone)
{
    const std::pair<const char*, nxVolume> rows[] = {
        {"{algoID = 7}", 7},
        {"", {}},
        {"{algoID = '8'}", 8},
        {"{algoID = 7}, 1", {}},
    };
    for (const auto& [arguments, expected] : rows) {
        order.algoID = 99;
        EXPECT_EQ(script.Evaluate("it:pull(" + std::string(arguments) + ")"), "");
        EXPECT_EQ(order.algoID, expected) << arguments;
    }
}

TEST(nxAlgoOrderObjectThread, AHostThreadFillsAndSetsStatesWhileAScriptReads)
{
    nxScriptJob script;
    nxTestProduct& product = script.AddProduct("FDAX", 12);
    nxTestOrder order(&script.host, &product);
    ASSERT_TRUE(script.job.OnOrderNew(order).IsSuccess());
    std::atomic<bool> done = false;
    std::atomic<bool> writing = false;
    std::thread host([&] {
        for (unsigned int i = 1; !done; ++i) {
            order._SetLastFill(nxDecimal::FromMantissa(i, 0), i);
            order.SetStatus(i % 2 == 0 ? nxOrderStatus_Working : nxOrderStatus_PartiallyFilled);
            product.state = i % 2 == 0 ? nxAlgoStateObject::Open : nxAlgoStateObject::Closed;
            writing = true;
        }
    });
    while (!writing)
        std::this_thread::yield();
    for (int i = 0; i < 300; ++i)
        EXPECT_EQ(script.Evaluate("local price, volume = it.lastFillPrice, it.lastFillVolume "
                                  "assert(price > 0 and volume >= price and it.state:isWorking()) "
                                  "local state = it.product.state assert(state:isOpen() ~= state:isClosed()) "
                                  "it:work{volume = volume} it.reference = price"),
                  "");
    done = true;
    host.join();
}

}  // namespace

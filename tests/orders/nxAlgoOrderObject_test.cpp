#include "scriptFramework/orders/nxAlgoOrderObject.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "tests/support/nxRecordingLog.h"
#include "tests/support/nxRowFile.h"
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
    order.SetSide("BUY");
    nxExpectRows("scripts/orders.txt", [this](const std::string& code) {
        const std::string answer = script.Evaluate(code);
        const std::string locks = order.TakeLocks();
        EXPECT_FALSE(order.IsMutexHeld()) << code;
        return answer + (locks.empty() ? "" : " || " + locks);
    });
    nxAlgoOrderObject base(&script.host, &product);
    ASSERT_TRUE(script.job.OnOrderNew(base).IsSuccess());
    script.ExpectRows("orders.txt", "of none");
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
    const auto expect = [this](const std::string& part) {
        const auto ask = [this](const std::string& code) {
            const std::string answer = script.Evaluate(code);
            EXPECT_FALSE(order.IsMutexHeld()) << code;
            return answer;
        };
        nxExpectRows("scripts/orders.txt", ask, part);
    };
    expect("");
    order.refuse = true;
    expect("refused");
    script.host.lastError = "no market";
    expect("refused with a reason");
    order.refuse = false;
    script.host.lastError.clear();
    order.throwOnCall = "broken";
    expect("broken");
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

#include "scriptFramework/market/nxAlgoProductObject.h"

#include <gtest/gtest.h>

#include "api/nxProductCache.h"
#include "base/records/nxStrategyDefinition.h"
#include "tests/support/nxRecordingLog.h"
#include "tests/support/nxScriptJob.h"

namespace {

using Row = std::pair<const char*, const char*>;  // code and what it evaluates to

class nxAlgoProductObjectTest : public testing::Test
{
protected:
    nxAlgoProductObjectTest() { EXPECT_EQ(script.Evaluate("p = job:getProduct('FDAX')"), ""); }

    void ExpectRows(std::initializer_list<Row> rows)
    {
        for (const auto& [code, expected] : rows)
            EXPECT_EQ(script.Evaluate(code), expected) << code;
    }

    nxScriptJob script;
    nxTestProduct& product = script.AddProduct("FDAX", 12);
};

struct Subscription
{
    const char* function;
    const char* on;
    const char* off;
    bool wantsPrice;
    bool wantsDepth;
};

constexpr Subscription Subscriptions[] = {
    {"subscribe", "SubscribePrices", "UnsubscribePrices", true, true},
    {"subscribePrice", "SubscribePrice", "UnsubscribePrice", true, false},
    {"subscribeMarketDepth", "SubscribeMarketDepth", "UnsubscribeMarketDepth", false, true},
    {"subscribePositions", "SubscribePositions", "UnsubscribePositions", false, false},
    {"subscribeState", "SubscribeState", "UnsubscribeState", false, false},
    {"subscribePriceTradeVolumes", "SubscribePriceTradeVolumes", "UnsubscribePriceTradeVolumes", false,
     false},
};

TEST(nxAlgoProductObject, ASubscriptionIsAskedForUntilTheHostAccepts)
{
    for (const Subscription& row : Subscriptions) {
        SCOPED_TRACE(row.function);
        nxScriptJob script;
        const nxTestProduct& product = script.AddProduct("FDAX", 12);
        const std::string call = std::string("job:getProduct('FDAX'):") + row.function + "(1, 'ignored')";
        EXPECT_FALSE(product._IsPriceWanted() || product._IsDepthWanted());

        script.host.subscriptionAnswer = nxError_GeneralFailure;
        EXPECT_EQ(script.Evaluate(call), "");
        EXPECT_EQ(script.Evaluate(call), "");
        EXPECT_EQ(script.host.TakeCalls(), std::string(row.on) + " " + row.on);
        EXPECT_EQ(product._IsPriceWanted(), row.wantsPrice);
        EXPECT_EQ(product._IsDepthWanted(), row.wantsDepth);

        script.host.subscriptionAnswer = {};
        EXPECT_EQ(script.Evaluate(call), "");
        EXPECT_EQ(script.Evaluate(call), "");
        EXPECT_EQ(script.host.TakeCalls(), row.on);

        // The destructor ends it, whatever the host answers.
        script.host.subscriptionAnswer = nxError_GeneralFailure;
        script.host.products.clear();
        EXPECT_EQ(script.host.TakeCalls(), row.off);
    }
}

TEST_F(nxAlgoProductObjectTest, UnsubscribingEndsWhatIsOnAndAllowsItAgain)
{
    const auto subscribeAll = [&] {
        for (const Subscription& row : Subscriptions)
            EXPECT_EQ(script.Evaluate(std::string("p:") + row.function + "()"), "");
        script.host.TakeCalls();
    };
    for (int round = 0; round < 2; ++round) {
        subscribeAll();
        EXPECT_TRUE(product.Unsubscribe());
        EXPECT_EQ(script.host.TakeCalls(), "UnsubscribePrices UnsubscribePrice UnsubscribeMarketDepth");
        EXPECT_TRUE(product.UnsubscribePositions());
        EXPECT_TRUE(product.UnsubscribeState());
        EXPECT_TRUE(product.UnsubscribePriceTradeVolumes());
        EXPECT_EQ(script.host.TakeCalls(),
                  "UnsubscribePositions UnsubscribeState UnsubscribePriceTradeVolumes");
        EXPECT_TRUE(product.Unsubscribe());
        EXPECT_EQ(script.host.TakeCalls(), "");
        EXPECT_TRUE(product._IsPriceWanted() && product._IsDepthWanted());
    }
    subscribeAll();
    script.host.products.clear();  // the destructor ends all, in order
    EXPECT_EQ(script.host.TakeCalls(),
              "UnsubscribePrices UnsubscribePrice UnsubscribeMarketDepth "
              "UnsubscribePositions UnsubscribeState UnsubscribePriceTradeVolumes");
}

TEST_F(nxAlgoProductObjectTest, ViewsAreRefreshedOnEachRead)
{
    product.price.SetBidPrice(nxDecimal(100, 1, 0));
    ExpectRows({{"older = p.price; return older.bidPrice, older.id", "100 12"}});
    product.price.SetBidPrice(nxDecimal(101, 1, 0));
    ExpectRows({{"older.bidPrice", "100"},
                {"newer = p.price; return newer == older, newer.bidPrice, older.bidPrice", "false 101 101"},
                {"newer:isBid(), newer:isAsk(), newer:isLast()", "false false false"}});

    product.depth.SetBid(nxDecimal(99, 1, 0), 4);
    ExpectRows({{"d = p.depth; return d.id, d.bidCount, d:bid(0)", "12 1 99"}});
    product.depth.SetBid(nxDecimal(98, 1, 0), 5);
    ExpectRows({{"d.bidCount, p.depth.bidCount, d.bidCount", "1 2 2"}});

    ExpectRows({{"s = p.state; return s.id, s:isOpen()", "12 false"}});
    product.state = 1u << 1;
    ExpectRows({{"s:isOpen(), p.state:isOpen(), s:isOpen()", "false true true"}});

    ExpectRows({{"o = p.position; return o.id, o.openPos", "12 0"}});
    product._GetPosition().SetOpenPos(3);
    ExpectRows({{"o.openPos, p.position.openPos, o.openPos", "0 3 3"}});

    ExpectRows({{"v = p.priceTradeVolumes; return v.id, v.count", "12 0"}});
    nxPriceTradeVolumes update;
    update.AddTrade(nxDecimal(1002, 10, 1), 6);
    product._GetPriceTradeVolumes().UpdatePriceTradeVolumes(update);
    ExpectRows({{"v.count, v:getVolumeAtPrice(100.2), v:getVolumeAtPrice(100.4)", "1 6 nil"}});
    product.SetTickSize(nxDecimal(2, 10, 1));
    ExpectRows({{"v:getVolumeAtPrice(100.28)", "nil"}, {"v:getVolumeAtPrice(100.15)", "6"}});

    product.SetPriceManipulator(nxPriceManipulator(nxDecimal(5, 10, 1)));
    ExpectRows({{"p.depth:getBidVolumeAtPrice(98.2), d:getBidVolumeAtPrice(98.4)", "9 4"}});
}

TEST_F(nxAlgoProductObjectTest, APointValueWithoutNumberHasNoCurrencyEither)
{
    EXPECT_EQ(product._GetDPForAverages(), 1);
    product.SetTickSize(nxDecimal::FromMantissa(50, 2));
    EXPECT_EQ(product._GetDPForAverages(), 3);
    product.SetPointValue(nxMoney(nxDecimal(5, 2, 1), nxCurrencyEnum(nxCurrency_EUR)));
    ExpectRows({{"p.tickSize, p.pointValue, p.currency, p.exchange", "0.5 2.5 'EUR' nil"}});
    product.SetPointValue(nxMoney(nxDecimal(), nxCurrencyEnum(nxCurrency_EUR)));
    ExpectRows({{"p.pointValue, p.currency", "nil nil"}});
}

TEST_F(nxAlgoProductObjectTest, SetFlattenOnExitIsLogged)
{
    nxRecordingLog log;
    ExpectRows({{"p:setFlattenOnExit()", "error: setFlattenOnExit requires 1 parameters"},
                {"p:setFlattenOnExit(true)", ""}});
    EXPECT_EQ(product.flattened, "t");
    EXPECT_EQ(log.TakeLines(), "32 [test] setFlattenOnExit = true\n");
}

class nxAlgoProductObjectLegsTest : public nxAlgoProductObjectTest
{
protected:
    ~nxAlgoProductObjectLegsTest() override { nxProductCache::GetInstance().Destroy(); }

    static nxStrategyLeg MakeLeg(const char* name, nxEnumValue side, const nxDecimal& price,
                                 const nxDecimal& trade)
    {
        nxStrategyLeg leg;
        leg.SetProductID(nxProductID(name));
        leg.SetBuySell(side);
        leg.SetPriceRatio(price);
        leg.SetTradeRatio(trade);
        return leg;
    }

    void Define(const nxProductDefinition& definition)
    {
        nxProductCache::GetInstance().SetProductDefinition(nxProductID("FDAX"), definition);
        product.isStrategy = true;
    }
};

TEST_F(nxAlgoProductObjectLegsTest, ReadsLegsOfTheDefinitionAnewEachTime)
{
    nxStrategyDefinition strategy;
    strategy.AddStrategyLeg(MakeLeg("MAR", nxBuySell_Buy, nxDecimal(15, 10, 1), nxDecimal(2, 1, 0)));
    strategy.AddStrategyLeg(MakeLeg("JUN", nxBuySell_Sell, nxDecimal(), nxDecimal(-1, 1, 0)));
    strategy.AddStrategyLeg(MakeLeg("SEP", nxEnum_Undefined, nxDecimal(1, 1, 0), nxDecimal()));
    strategy.AddStrategyLeg(nxStrategyLeg());
    script.AddProduct("MAR", 21);
    script.AddProduct("JUN", 22);
    Define(strategy);
    script.ExpectRows("market.txt");
    script.ExpectRows("market.txt", "by index");
    strategy.SetSyntheticStrategyPriceOffset(nxDecimal(-25, 100, 2));
    strategy.AddStrategyLeg(MakeLeg("MAR", nxBuySell_Sell, nxDecimal(), nxDecimal()));
    Define(strategy);
    ExpectRows({{"p.noLegs, p.priceOffset, p:getLeg(5).id", "5 -0.25 21"}});
    product.isStrategy = false;
    ExpectRows({{"p.noLegs, p.priceOffset, p:getLeg(1), p:getLegSide(1)", "0 nil nil nil"}});
}

TEST_F(nxAlgoProductObjectLegsTest, WithoutADefinitionThereAreNoLegs)
{
    constexpr const char* read =
        "p.noLegs, p.priceOffset, p:getLeg(1), p:getLegSide(1), p:getLegPriceRatio(1), "
        "p:getLegTradeRatio(1)";
    product.isStrategy = true;
    ExpectRows({{read, "0 nil nil nil nil nil"}});
    Define(nxProductDefinition());  // of no strategy
    ExpectRows({{read, "0 nil nil nil nil nil"}});
}

}  // namespace

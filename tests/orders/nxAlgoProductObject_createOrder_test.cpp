#include <gtest/gtest.h>

#include "tests/support/nxRecordingLog.h"
#include "tests/support/nxRowFile.h"
#include "tests/support/nxScriptJob.h"
#include "tests/support/nxTestOrder.h"

namespace {

class nxAlgoProductObjectCreateOrderTest : public testing::Test
{
protected:
    nxAlgoProductObjectCreateOrderTest() { product.order = &order; }

    std::string Create(const std::string& arguments)
    {
        return script.Evaluate("job:getProduct('FDAX'):createOrder" + arguments + ".type");
    }

    nxScriptJob script;
    nxTestProduct& product = script.AddProduct("FDAX", 12);
    nxTestOrder order{&script.host, &product};
};

TEST_F(nxAlgoProductObjectCreateOrderTest, HandsTheHostSixTextsInBothForms)
{
    for (const bool isStrategy : {false, true}) {
        product.isStrategy = isStrategy;
        nxExpectRows(
            "scripts/orders.txt",
            [this](const std::string& arguments) {
                EXPECT_EQ(Create(arguments), "'LIMIT'");
                return std::exchange(product.created, {});
            },
            isStrategy ? "for a strategy" : "");
    }
    product.isStrategy = false;
    for (const std::string exec : {"IOC", "FOK", "STOP", "ICEBERG", "TRAILING_STOP", "BRACKET"})
        for (const std::string time : {"GFD", "GTD", "GTC", "OPEN", "PREOPEN"}) {
            Create("{side = 'BUY', type = 'LIMIT', exec = '" + exec + "', time = '" + time + "'}");
            EXPECT_EQ(std::exchange(product.created, {}), "BUY|LIMIT|" + exec + "|" + time + "|||");
        }
}

TEST_F(nxAlgoProductObjectCreateOrderTest, RefusesInAFixedOrderAndLeavesNoTrace)
{
    nxRecordingLog log;
    nxExpectRows("scripts/orders.txt", [this](const std::string& arguments) { return Create(arguments); });
    EXPECT_EQ(product.created + log.TakeLines(), "");
    product.order = nullptr;
    EXPECT_EQ(Create("('BUY', 'LIMIT')"), "error: createOrder Failed");
}

TEST_F(nxAlgoProductObjectCreateOrderTest, ShowReachesTheOrderOnlyAsABoolean)
{
    const std::string created =
        "32 [test] createOrder. side = BUY , type = LIMIT , exec =  , time = GFD , spreadSpec =  , "
        "spreadInstance = \n";
    bool show = true;
    nxRecordingLog log;
    Create("{side = 'BUY', type = 'LIMIT', show = 1}");
    EXPECT_FALSE(order.GetShowOrder(show));
    EXPECT_TRUE(show);
    EXPECT_EQ(log.TakeLines(), created);
    Create("{side = 'BUY', type = 'LIMIT', show = false}");
    EXPECT_TRUE(order.GetShowOrder(show));
    EXPECT_FALSE(show);
    EXPECT_EQ(log.TakeLines(), "32 [test] createOrder. show set to false\n" + created +
                                   "32 [test] Setting showOrder = false\n");
}

}  // namespace

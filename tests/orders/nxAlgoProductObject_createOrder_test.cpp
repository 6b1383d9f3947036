#include <gtest/gtest.h>

#include "tests/support/nxRecordingLog.h"
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
    const std::tuple<const char*, bool, const char*> rows[] = {
        {"('SELL', 'MARKET', '1:2')", false, "SELL|MARKET||GFD|||"},
        {"('SELL', 'MARKET', '1:2')", true, "SELL|MARKET||GFD|1:2||"},
        {"('BUY', 'STOP', 7)", true, "BUY|MARKET|STOP|GFD|7||"},
        {"{side = 'SELL', type = 'MARKET', time = '', spreadSpec = 's', spreadInstance = 'i', more = 1}",
         false, "SELL|MARKET||GFD|||"},
        {"{side = 'SELL', type = 'MARKET', exec = 'ICEBERG', spreadSpec = 's', spreadInstance = 'i'}", true,
         "SELL|MARKET|ICEBERG|GFD|s|i|"},
    };
    for (const auto& [arguments, strategy, expected] : rows) {
        product.isStrategy = strategy;
        EXPECT_EQ(Create(arguments), "'LIMIT'") << arguments;
        EXPECT_EQ(std::exchange(product.created, {}), expected) << arguments;
    }
    for (const std::string exec : {"IOC", "FOK", "STOP", "ICEBERG", "TRAILING_STOP", "BRACKET"})
        for (const std::string time : {"GFD", "GTD", "GTC", "OPEN", "PREOPEN"}) {
            Create("{side = 'BUY', type = 'LIMIT', exec = '" + exec + "', time = '" + time + "'}");
            EXPECT_EQ(std::exchange(product.created, {}), "BUY|LIMIT|" + exec + "|" + time + "|||");
        }
}

TEST_F(nxAlgoProductObjectCreateOrderTest, RefusesInAFixedOrderAndLeavesNoTrace)
{
    const std::pair<const char*, const char*> rows[] = {
        {"('BUY', 'LIMIT', 'a', 'b')", "createOrder : Invalid number of parameters"},
        {"('BUY')", "createOrder : One one argument that has to be a named value collection"},
        {"('BUY', 'limit', {})", "Invalid type in createOrder"},
        {"('buy', 'LIMIT')", "createOrder : invalid side : [buy] should be BUY or SELL"},
        {"{}", "createOrder : side not specified"},
        {"{side = 'bad', type = false}", "createOrder : type not specified"},
        {"{side = 1, type = 2, exec = 3, time = 4}",
         "createOrder : invalid side : [1] should be BUY or SELL"},
        {"{side = 'BUY', type = 'STOP', exec = 3, time = 4}",
         "createOrder : invalid type : [STOP] should be MARKET or LIMIT"},
        {"{side = 'BUY', type = 'LIMIT', exec = 'ioc', time = 4}",
         "createOrder : invalid exec : [ioc] should be IOC, FOK, STOP, ICEBERG, TRAILING_STOP or BRACKET"},
        {"{side = 'BUY', type = 'LIMIT', time = 'DAY'}",
         "createOrder : invalid time : [DAY] should be GFD, GTC, GTD, OPEN or PREOPEN"},
    };
    nxRecordingLog log;
    for (const auto& [arguments, error] : rows)
        EXPECT_EQ(Create(arguments), std::string("error: ") + error) << arguments;
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

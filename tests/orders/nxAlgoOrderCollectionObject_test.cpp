#include "scriptFramework/orders/nxAlgoOrderCollectionObject.h"

#include <gtest/gtest.h>

#include "tests/support/nxRecordingLog.h"
#include "tests/support/nxScriptJob.h"
#include "tests/support/nxTestOrder.h"

namespace {

TEST(nxAlgoOrderCollectionObject, GivesTheOrdersOfTheHost)
{
    nxScriptJob script;
    nxTestOrder order(&script.host);
    nxTestOrderCollection orders(&script.host, {&order});
    script.host.orders = &orders;
    const std::tuple<const char*, const char*, const char*> rows[] = {
        {"o = job:getOrders() return o.count", "1", ""},
        {"o:getOrder(2 ^ 32 + 1.5).type", "'LIMIT'", "32 [test] Get Order at index 1\n"},
        {"o:getOrder(2)", "error: invalid index for getOrder",
         "32 [test] Get Order at index 2\n37 [test] Get Order at index 2 is invalid. Size1\n"},
        {"o:getOrder()", "error: ", ""},
        {"o:setFilter() o:setFilter('a', {}, nil) return o.count", "1", ""},
    };
    nxRecordingLog log;
    for (const auto& [code, answer, logged] : rows) {
        EXPECT_EQ(script.Evaluate(code), answer) << code;
        EXPECT_EQ(log.TakeLines(), logged) << code;
    }
}

}  // namespace

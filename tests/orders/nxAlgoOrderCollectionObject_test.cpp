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
    const struct
    {
        const char* code;
        const char* answer;
        const char* log;
    } rows[] = {
        {"o = job:getOrders() return o.count", "1", ""},
        {"o:getOrder(2 ^ 32 + 1.5).type", "'LIMIT'", "32 [test] Get Order at index 1\n"},
        {"o:getOrder(2)", "error: invalid index for getOrder",
         "32 [test] Get Order at index 2\n37 [test] Get Order at index 2 is invalid. Size1\n"},
        {"o:getOrder()", "error: ", ""},
        {"o:setFilter() o:setFilter('a', {}, nil) return o.count", "1", ""},
    };
    nxRecordingLog log;
    for (const auto& row : rows) {
        EXPECT_EQ(script.Evaluate(row.code), row.answer) << row.code;
        EXPECT_EQ(log.TakeLines(), row.log) << row.code;
    }
}

}  // namespace

#include <gtest/gtest.h>

#include "tests/support/nxRecordingLog.h"
#include "tests/support/nxScriptJob.h"
#include "tests/support/nxTestDataStore.h"
#include "tests/support/nxTestOrder.h"

namespace {

TEST(nxAlgoJobObjectAccess, GetProductAsksTheHost)
{
    nxScriptJob script;
    script.AddProduct("FDAX", 3);
    script.AddProduct("7", 4);
    const std::pair<const char*, const char*> rows[] = {
        {"job:getProduct('FDAX').id", "3"},
        {"job:getProduct(7).id", "4"},
        {"job:getProduct('none')", "error: getProduct could not find product none"},
        {"job:getProduct('FDAX', 1)", "error: getProduct requires 1 argument [productID]"},
        {"job.getProduct('FDAX')",
         "error: bad argument #1 to 'getProduct' (nxAlgoJobObject expected, got string)"},
        {"job.calculate", "nil"},
    };
    for (const auto& [code, expected] : rows)
        EXPECT_EQ(script.Evaluate(code), expected) << code;
}

TEST(nxAlgoJobObjectAccess, AsksTheHostForWhatItKeeps)
{
    const std::tuple<const char*, std::string, const char*, const char*> rows[] = {
        {"job:getExistingOrder()", "error: getExistingOrder requires 1 argument [orderID]", "", ""},
        {"job:getExistingOrder(13)", "error: ", "GetOrder(13)", "32 [test] Get Existing Order ID : 13\n"},
        {"job:getExistingOrder(2 ^ 32 + 12, 'x').type", "'LIMIT'", "GetOrder(12)",
         "32 [test] Get Existing Order ID : 12\n"},
        {"job:getOrders(1).count, job:getJobOrders({}).count", "1 0", "", ""},
        {"job:getDataStore('a')", "nil", "GetDataStore(a,false)",
         "32 [test] getDataStore. name: a, create: false\n"},
        {"job:getDataStore('a', true).count", "1", "GetDataStore(a,true)",
         "32 [test] getDataStore. name: a, create: true\n"},
        {"job:getDataStore('a', true, 1)",
         "error: getDataStore requires at leastt 1 argument. name, [create]", "", ""},
        {"job:getDataStore('a', 1)",
         "error: bad argument #2 to 'getDataStore' (boolean expected, got number)", "", ""},
        // The host has no collection here.
        {"job:getVorantJobs('x').count, job:getVorantJobs():getVorantJob(1)", "nil", "", ""},
    };
    nxScriptJob script;
    nxTestOrder order(&script.host, &script.AddProduct("FDAX", 3));
    nxTestOrderCollection all(&script.host, {&order});
    nxTestOrderCollection own(&script.host, {});
    script.host.order12 = &order;
    script.host.orders = &all;
    script.host.jobOrders = &own;
    nxTestDataStore store(&script.host);
    store._LoadRow({"row"});
    script.host.dataStore = &store;
    nxRecordingLog log;
    for (const auto& [code, answer, calls, logged] : rows) {
        SCOPED_TRACE(code);
        EXPECT_EQ(script.Evaluate(code), answer);
        EXPECT_EQ(script.host.TakeCalls(), calls);
        EXPECT_EQ(log.TakeLines(), logged);
    }
}

}  // namespace

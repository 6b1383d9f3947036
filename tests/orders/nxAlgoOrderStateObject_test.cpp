#include "scriptFramework/orders/nxAlgoOrderStateObject.h"

#include <gtest/gtest.h>

#include "tests/support/nxScriptJob.h"
#include "tests/support/nxTestOrder.h"

namespace {

TEST(nxAlgoOrderStateObject, AnswersQuestionsThatOverlap)
{
    const std::pair<nxOrderStatusEnum, const char*> rows[] = {
        {nxEnum_Undefined, "Pending"},      {nxOrderStatus_Pending, "PendingFailed"},
        {nxOrderStatus_Working, "Working"}, {nxOrderStatus_PartiallyFilled, "Working"},
        {nxOrderStatus_Held, "Working"},    {nxOrderStatus_Deleted, "Deleted"},
        {nxOrderStatus_Filled, "Filled"},   {nxOrderStatus_Rejected, "Failed"},
        {nxOrderStatus_Expired, "Failed"},  {nxEnum_NoChange, "Failed"},
    };
    nxScriptJob script;
    nxTestOrder order(&script.host);
    ASSERT_TRUE(script.job.OnOrderNew(order).IsSuccess());
    script.Evaluate(
        "told = function(s) local all = '' for _, name in ipairs{'Working', 'Pending', 'Filled', 'Deleted', "
        "'Failed', 'PendingAmend', 'PendingCancel'} do if s['is' .. name](s, 1) then all = all .. name end "
        "end return all end");
    for (const auto& [status, expected] : rows) {
        order.SetStatus(status);
        EXPECT_EQ(script.Evaluate("told(it.state)"), "'" + std::string(expected) + "'");
    }
    // Two tables over one object: the older one shows the newer read.
    order.SetStatus(nxOrderStatus_Working);
    EXPECT_EQ(script.Evaluate("old = it.state return told(old)"), "'Working'");
    order.SetStatus(nxOrderStatus_Filled);
    order.pendingAmend = order.pendingCancel = true;
    EXPECT_EQ(script.Evaluate("told(old), told(it.state), told(old)"),
              "'Working' 'FilledPendingAmendPendingCancel' 'FilledPendingAmendPendingCancel'");
}

}  // namespace

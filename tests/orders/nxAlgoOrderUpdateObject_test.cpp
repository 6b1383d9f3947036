#include "scriptFramework/orders/nxAlgoOrderUpdateObject.h"

#include <gtest/gtest.h>

#include "tests/support/nxScriptJob.h"
#include "tests/support/nxTestOrder.h"

namespace {

constexpr nxNullInitalizer Null;
constexpr nxNoChangeInitalizer NoChange;

nxOrderTransaction MakeTransaction(const nxVolume& volume, const nxDecimal& price)
{
    nxOrder record;
    record.SetResidualVolume(volume);
    record.SetVolume(volume);
    record.SetExecutedVolume(volume);
    record.SetPrice(price);
    nxOrderTransaction transaction;
    transaction.SetOrder(record);
    transaction.SetFillVolume(volume);
    transaction.SetFillPrice(price);
    return transaction;
}

TEST(nxAlgoOrderUpdateObject, TreatsMarksInAWayOfEachProperty)
{
    nxOrderTransaction flagged = MakeTransaction(5, nxDecimal::FromMantissa(10025, 2));
    nxOrder unbalanced = *flagged.GetOrder();
    unbalanced.SetOrderFlag(nxOrderFlag_SpreadUnbalanced);
    flagged.SetOrder(unbalanced);
    flagged.SetError(nxError_NumberOutOfRange);
    const nxOrderTransaction null = MakeTransaction(Null, Null);
    const nxOrderTransaction noChange = MakeTransaction(NoChange, NoChange);
    const nxOrderTransaction withoutOrder;
    // orderValues: working, volume, executed, price, error, isSpreadUnbalanced
    const std::tuple<const nxOrderTransaction*, const char*, const char*> rows[] = {
        {&flagged, "5 5 5 100.25 'NUMBER_OUT_OF_RANGE' true", "100.25 5"},
        {&null, "4294967295 0 0 nil '' false", "0 0"},
        {&noChange, "4294967294 0 0 nil '' false", "0 0"},
        {&withoutOrder, "0 0 0 nil '' false", "0 0"},
        {nullptr, "0 0 0 nil '' false", ""},
    };
    nxScriptJob script;
    nxTestOrder order(&script.host);
    for (const auto& [transaction, orderValues, fill] : rows) {
        nxAlgoOrderUpdateObject update(&script.host, &order, transaction, nxTimeStamp());
        ASSERT_TRUE(script.Bring(&nxAlgoJobObject::OnOrderFill, update));
        EXPECT_EQ(script.Evaluate("it.working, it.volume, it.executed, it.price, it.error, "
                                  "it:isSpreadUnbalanced('ignored')"),
                  orderValues);
        if (transaction != nullptr) {
            EXPECT_EQ(script.Evaluate("it.fillPrice, it.fillVolume"), fill);
        }
    }
}

TEST(nxAlgoOrderUpdateObject, ShowsItsOrderAndItsTimes)
{
    nxScriptJob script;
    nxTestOrder order(&script.host);
    order.SetSide("SELL");
    nxAlgoOrderUpdateObject original(&script.host, &order, nullptr, nxTimeStamp(1706702415, 500000000u));
    nxAlgoOrderUpdateObject update(original);
    ASSERT_TRUE(script.Bring(&nxAlgoJobObject::OnOrderFill, update));
    EXPECT_EQ(script.Evaluate("it.order.reference = 'mine' "
                              "return it.id, it.side, it.reference, it.order.type, it.exchangeFillTime"),
              "1 'SELL' 'mine' 'LIMIT' nil");
    EXPECT_EQ(order.TakeLocks(), "-o");  // the order's own type takes the lock, the update's id does not
    EXPECT_EQ(script.Evaluate("it.vorantUpdateTime.second, it.vorantUpdateTime.totalSeconds"),
              "15 1706702415.5");
    update.SetExchangeFillTime(nxDateTime(2024, 1, 31, 12, 30, 45, 0));
    EXPECT_EQ(script.Evaluate("it.exchangeFillTime.second"), "45");
    update.SetExchangeFillTime(nxDateTime());
    EXPECT_EQ(script.Evaluate("it.exchangeFillTime"), "nil");

    nxAlgoOrderUpdateObject orphan(&script.host, nullptr, nullptr, nxTimeStamp());
    ASSERT_TRUE(script.Bring(&nxAlgoJobObject::OnOrderFill, orphan));
    EXPECT_EQ(script.Evaluate("it.id, it.order.id"), "0 nil");
}

}  // namespace

#include "scriptFramework/market/nxAlgoPriceObject.h"

#include <gtest/gtest.h>

#include "base/records/nxPrice.h"
#include "tests/support/nxScriptJob.h"

namespace {

nxDecimal Cents(long long cents)
{
    return nxDecimal::FromMantissa(cents, 2);
}

nxPrice NoChange()
{
    nxPrice price;
    price.SetNoChange();
    return price;
}

// A different number in every field, so that no two properties can be mixed up.
TEST(nxAlgoPriceObject, EachPropertyReadsItsOwnField)
{
    nxPrice record;
    record.SetBidPrice(Cents(101));
    record.SetBidVolume(1);
    record.SetAskPrice(Cents(202));
    record.SetAskVolume(2);
    record.SetImpliedBidPrice(Cents(103));
    record.SetImpliedBidVolume(3);
    record.SetImpliedAskPrice(Cents(204));
    record.SetImpliedAskVolume(4);
    record.SetLastPrice(Cents(105));
    record.SetLastVolume(5);
    record.SetLastPriceBuySellIndicator(nxBuySell_Buy);
    record.SetTotalTradedVolume(6);
    record.SetOpenPrice(Cents(107));
    record.SetHighPrice(Cents(108));
    record.SetLowPrice(Cents(109));
    record.SetClosePrice(Cents(110));
    record.SetPreviousClosePrice(Cents(111));
    record.SetSettlementPrice(Cents(112));
    record.SetPreviousSettlementPrice(Cents(113));
    record.SetSettlementPriceType(0x9u);
    record.SetTheoreticalPrice(Cents(114));
    record.SetTheoretical2Price(Cents(115));
    const struct
    {
        const char* property;
        const char* full;
        const char* empty;  // over a fresh record
    } rows[] = {
        {"id", "77", "77"},
        {"bidPrice", "1.03", "nil"},  // the implied bid is the higher
        {"bidVolume", "3", "nil"},
        {"askPrice", "2.02", "nil"},  // the direct ask is the lower
        {"askVolume", "2", "nil"},
        {"impliedBidPrice", "1.03", "nil"},
        {"impliedBidVolume", "3", "nil"},
        {"impliedAskPrice", "2.04", "nil"},
        {"impliedAskVolume", "4", "nil"},
        {"paperBidPrice", "1.01", "nil"},
        {"paperBidVolume", "1", "nil"},
        {"paperAskPrice", "2.02", "nil"},
        {"paperAskVolume", "2", "nil"},
        {"low", "1.09", "nil"},
        {"high", "1.08", "nil"},
        {"lastPrice", "1.05", "nil"},
        {"lastVolume", "5", "nil"},
        {"lastBuySell", "'BUY'", "''"},
        {"totalTradedVolume", "6", "nil"},
        {"theo", "1.14", "nil"},
        {"theo2", "1.15", "nil"},
        {"open", "1.07", "nil"},
        {"close", "1.1", "nil"},
        {"previousClose", "1.11", "nil"},
        {"previousSettlement", "1.13", "nil"},
        {"settlement", "1.12", "nil"},
        {"settlementType", "'0 3'", "''"},
    };
    const nxPrice blank;
    const nxPrice update = NoChange();
    nxScriptJob script;
    nxAlgoPriceObject full(&script.host, &record, &update, 77);
    nxAlgoPriceObject empty(&script.host, &blank, &record, 77);  // nothing is read from the update
    nxAlgoPriceObject without(&script.host, 77);
    const auto expect = [&](nxAlgoPriceObject& object, const char* property, const char* value) {
        ASSERT_TRUE(script.job.OnPrice(object).IsSuccess());
        EXPECT_EQ(script.Evaluate(std::string("it.") + property), value) << property;
    };
    for (const auto& row : rows) {
        expect(full, row.property, row.full);
        expect(empty, row.property, row.empty);
        expect(without, row.property, row.empty);
    }
    // The other way round, price and volume still come together.
    record.SetBidPrice(Cents(104));
    record.SetImpliedAskPrice(Cents(201));
    expect(full, "bidPrice, it.bidVolume, it.askPrice, it.askVolume", "1.04 1 2.01 4");
}

TEST(nxAlgoPriceObject, MarksReadAsNil)
{
    const nxPrice record = NoChange();
    nxScriptJob script;
    nxAlgoPriceObject object(&script.host, &record, nullptr, 1);
    ASSERT_TRUE(script.job.OnPrice(object).IsSuccess());
    EXPECT_EQ(script.Evaluate("it.lastPrice, it.lastVolume, it.bidPrice, it.paperAskVolume, it.lastBuySell"),
              "nil nil nil nil ''");
}

TEST(nxAlgoPriceObject, TellsTheAggressor)
{
    const std::pair<nxEnumValue, const char*> rows[] = {{nxBuySell_Buy, "'BUY'"},
                                                        {nxBuySell_Sell, "'SELL'"},
                                                        {nxEnum_Undefined, "''"},
                                                        {nxEnum_NoChange, "''"}};
    for (const auto& [side, expected] : rows) {
        nxPrice record;
        record.SetLastPriceBuySellIndicator(side);
        nxScriptJob script;
        nxAlgoPriceObject object(&script.host, &record, nullptr, 1);
        ASSERT_TRUE(script.job.OnPrice(object).IsSuccess());
        EXPECT_EQ(script.Evaluate("it.lastBuySell"), expected) << side;
    }
}

TEST(nxAlgoPriceObject, TellsWhichSidesTheEventChanged)
{
    const struct
    {
        const char* name;
        std::function<void(nxPrice&)> change;
        const char* expected;  // isBid, isAsk, isLast
    } rows[] = {
        {"nothing", [](auto&) {}, "false false false"},
        {"bid price", [](auto& p) { p.SetBidPrice(Cents(1)); }, "true false false"},
        {"bid price to null", [](auto& p) { p.SetBidPrice({}); }, "true false false"},
        {"bid volume", [](auto& p) { p.SetBidVolume(0); }, "true false false"},
        {"bid volume to null", [](auto& p) { p.SetBidVolume({}); }, "true false false"},
        {"implied bid price", [](auto& p) { p.SetImpliedBidPrice(Cents(1)); }, "true false false"},
        {"implied bid volume", [](auto& p) { p.SetImpliedBidVolume(1); }, "true false false"},
        {"ask price", [](auto& p) { p.SetAskPrice(Cents(1)); }, "false true false"},
        {"ask volume to null", [](auto& p) { p.SetAskVolume({}); }, "false true false"},
        {"implied ask price to null", [](auto& p) { p.SetImpliedAskPrice({}); }, "false true false"},
        {"implied ask volume", [](auto& p) { p.SetImpliedAskVolume(1); }, "false true false"},
        {"trade", [](auto& p) { p.SetLastPrice(Cents(1)), p.SetLastVolume(1); }, "false false true"},
        {"trade of nothing", [](auto& p) { p.SetLastPrice(Cents(1)), p.SetLastVolume(0); },
         "false false true"},
        {"last price alone", [](auto& p) { p.SetLastPrice(Cents(1)); }, "false false false"},
        {"last volume alone", [](auto& p) { p.SetLastVolume(1); }, "false false false"},
        {"last volume null", [](auto& p) { p.SetLastPrice(Cents(1)), p.SetLastVolume({}); },
         "false false false"},
        {"last price null", [](auto& p) { p.SetLastPrice({}), p.SetLastVolume(1); }, "false false false"},
        {"another field", [](auto& p) { p.SetHighPrice(Cents(1)); }, "false false false"},
    };
    nxScriptJob script;
    const nxPrice snapshot;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        nxPrice update = NoChange();
        row.change(update);
        nxAlgoPriceObject object(&script.host, &snapshot, &update, 1);
        ASSERT_TRUE(script.job.OnPrice(object).IsSuccess());
        EXPECT_EQ(script.Evaluate("it:isBid(), it:isAsk(), it:isLast()"), row.expected);
        nxAlgoPriceObject copy(object);
        ASSERT_TRUE(script.job.OnPrice(copy).IsSuccess());
        EXPECT_EQ(script.Evaluate("it:isBid(), it:isAsk(), it:isLast()"), row.expected);
        copy.SetSnapshot(&update);
        EXPECT_EQ(script.Evaluate("it:isBid(), it:isAsk(), it:isLast()"), "false false false");
    }
    nxAlgoPriceObject unknown(&script.host, &snapshot, nullptr, 1);
    ASSERT_TRUE(script.job.OnPrice(unknown).IsSuccess());
    EXPECT_EQ(script.Evaluate("it:isBid(), it:isAsk(), it:isLast()"), "false false false");
}

}  // namespace

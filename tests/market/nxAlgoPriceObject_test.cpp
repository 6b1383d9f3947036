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
    using P = nxPrice;
    long long price = 100;
    for (const auto set : {&P::SetBidPrice, &P::SetAskPrice, &P::SetImpliedBidPrice, &P::SetImpliedAskPrice,
                           &P::SetLastPrice, &P::SetOpenPrice, &P::SetHighPrice, &P::SetLowPrice,
                           &P::SetClosePrice, &P::SetPreviousClosePrice, &P::SetSettlementPrice,
                           &P::SetPreviousSettlementPrice, &P::SetTheoreticalPrice, &P::SetTheoretical2Price})
        (record.*set)(Cents(++price));
    unsigned int volume = 0;
    for (const auto set : {&P::SetBidVolume, &P::SetAskVolume, &P::SetImpliedBidVolume,
                           &P::SetImpliedAskVolume, &P::SetLastVolume, &P::SetTotalTradedVolume})
        (record.*set)(++volume);
    record.SetLastPriceBuySellIndicator(nxBuySell_Buy);
    record.SetSettlementPriceType(0x9u);
    const std::string read =
        "it.id, it.bidPrice, it.bidVolume, it.askPrice, it.askVolume, "
        "it.impliedBidPrice, it.impliedBidVolume, it.impliedAskPrice, it.impliedAskVolume, "
        "it.paperBidPrice, it.paperBidVolume, it.paperAskPrice, it.paperAskVolume, it.low, it.high, "
        "it.lastPrice, it.lastVolume, it.lastBuySell, it.totalTradedVolume, it.theo, it.theo2, "
        "it.open, it.close, it.previousClose, it.previousSettlement, it.settlement, it.settlementType";
    const std::string nothing =
        "77 nil nil nil nil nil nil nil nil nil nil nil nil nil nil nil nil '' nil nil nil nil nil nil nil "
        "nil ";
    const nxPrice blank;
    const nxPrice update = NoChange();
    nxScriptJob script;
    nxAlgoPriceObject full(&script.host, &record, &update, 77);
    nxAlgoPriceObject empty(&script.host, &blank, &record, 77);  // nothing is read from the update
    nxAlgoPriceObject marks(&script.host, &update, nullptr, 77);
    nxAlgoPriceObject without(&script.host, 77);
    const auto expect = [&](nxAlgoPriceObject& object, const std::string& code, const std::string& values) {
        ASSERT_TRUE(script.Bring(&nxAlgoJobObject::OnPrice, object));
        EXPECT_EQ(script.Evaluate(code), values);
    };
    // The implied bid is the higher, the direct ask the lower.
    expect(full, read,
           "77 1.03 3 1.02 2 1.03 3 1.04 4 1.01 1 1.02 2 1.08 1.07 1.05 5 'BUY' 6 1.13 1.14 "
           "1.06 1.09 1.1 1.12 1.11 '0 3'");
    expect(empty, read, nothing + "''");
    expect(marks, read, nothing + "'NO_CHANGE'");
    expect(without, read, nothing + "''");
    // The other way round, price and volume still come together.
    record.SetBidPrice(Cents(104));
    record.SetImpliedAskPrice(Cents(99));
    expect(full, "it.bidPrice, it.bidVolume, it.askPrice, it.askVolume", "1.04 1 0.99 4");
}

TEST(nxAlgoPriceObject, TellsWhichSidesTheEventChanged)
{
    const std::tuple<const char*, std::function<void(nxPrice&)>, const char*> rows[] = {
        {"nothing", [](auto&) {}, "false false false"},
        {"bid price to null", [](auto& p) { p.SetBidPrice({}); }, "true false false"},
        {"bid volume to null", [](auto& p) { p.SetBidVolume({}); }, "true false false"},
        {"implied bid price", [](auto& p) { p.SetImpliedBidPrice(Cents(1)); }, "true false false"},
        {"implied bid volume", [](auto& p) { p.SetImpliedBidVolume(1); }, "true false false"},
        {"ask volume to null", [](auto& p) { p.SetAskVolume({}); }, "false true false"},
        {"ask price", [](auto& p) { p.SetAskPrice(Cents(1)); }, "false true false"},
        {"implied ask price to null", [](auto& p) { p.SetImpliedAskPrice({}); }, "false true false"},
        {"implied ask volume", [](auto& p) { p.SetImpliedAskVolume(1); }, "false true false"},
        {"trade of nothing", [](auto& p) { p.SetLastPrice(Cents(1)), p.SetLastVolume(0); },
         "false false true"},
        {"last price alone", [](auto& p) { p.SetLastPrice(Cents(1)); }, "false false false"},
        {"last volume null", [](auto& p) { p.SetLastPrice(Cents(1)), p.SetLastVolume({}); },
         "false false false"},
        {"another field", [](auto& p) { p.SetHighPrice(Cents(1)); }, "false false false"},
    };
    nxScriptJob script;
    const nxPrice snapshot;
    for (const auto& [name, change, expected] : rows) {
        SCOPED_TRACE(name);
        nxPrice update = NoChange();
        change(update);
        nxAlgoPriceObject object(&script.host, &snapshot, &update, 1);
        ASSERT_TRUE(script.Bring(&nxAlgoJobObject::OnPrice, object));
        EXPECT_EQ(script.Evaluate("it:isBid(), it:isAsk(), it:isLast()"), expected);
        nxAlgoPriceObject copy(object);
        ASSERT_TRUE(script.Bring(&nxAlgoJobObject::OnPrice, copy));
        EXPECT_EQ(script.Evaluate("it:isBid(), it:isAsk(), it:isLast()"), expected);
        copy.SetSnapshot(&update);
        EXPECT_EQ(script.Evaluate("it:isBid(), it:isAsk(), it:isLast()"), "false false false");
    }
    nxAlgoPriceObject unknown(&script.host, &snapshot, nullptr, 1);
    ASSERT_TRUE(script.Bring(&nxAlgoJobObject::OnPrice, unknown));
    EXPECT_EQ(script.Evaluate("it:isBid(), it:isAsk(), it:isLast()"), "false false false");
}

}  // namespace

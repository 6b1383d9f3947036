#include "base/records/nxPrice.h"

#include <gtest/gtest.h>

namespace {

nxDecimal Number(long long value)
{
    return nxDecimal::FromMantissa(value, 0);
}

// One getter and setter of each field, so that none is forgotten by the operations on all of them.
template <class Value>
struct Field
{
    const Value& (nxPrice::*get)() const;
    void (nxPrice::*set)(const Value&);
};
#define FIELD(name)                              \
    {                                            \
        &nxPrice::Get##name, &nxPrice::Set##name \
    }
const Field<nxDecimal> prices[] = {
    FIELD(BidPrice),           FIELD(AskPrice),         FIELD(ImpliedBidPrice),
    FIELD(ImpliedAskPrice),    FIELD(LastPrice),        FIELD(OpenPrice),
    FIELD(HighPrice),          FIELD(LowPrice),         FIELD(ClosePrice),
    FIELD(PreviousClosePrice), FIELD(SettlementPrice),  FIELD(PreviousSettlementPrice),
    FIELD(TheoreticalPrice),   FIELD(Theoretical2Price)};
const Field<nxVolume> volumes[] = {FIELD(BidVolume),        FIELD(AskVolume),  FIELD(ImpliedBidVolume),
                                   FIELD(ImpliedAskVolume), FIELD(LastVolume), FIELD(TotalTradedVolume)};
#undef FIELD

// Each field in turn is the one that the update brings.
template <class Value, std::size_t count>
void CheckUpdates(const Field<Value> (&fields)[count], const Value& earlier, const Value& later)
{
    for (const Field<Value>& changed : fields) {
        nxPrice price;
        for (const Field<Value>& field : fields)
            (price.*field.set)(earlier);
        for (const Value& value : {later, Value()}) {  // a null overwrites as well
            nxPrice update;
            update.SetNoChange();
            (update.*changed.set)(value);
            price.ApplyUpdate(update);
            for (const Field<Value>& field : fields)
                EXPECT_EQ((price.*field.get)(), &field == &changed ? value : earlier) << &field - fields;
        }
    }
}

TEST(nxPrice, AnUpdateLeavesAloneWhatItDoesNotBring)
{
    CheckUpdates(prices, Number(1), Number(2));
    CheckUpdates(volumes, nxVolume(1), nxVolume(2));

    nxPrice price;
    price.SetLastPriceBuySellIndicator(nxBuySell_Buy);
    price.SetSettlementPriceType(1u);
    nxPrice update;
    update.SetNoChange();
    price.ApplyUpdate(update);
    EXPECT_EQ(price.GetLastPriceBuySellIndicator(), nxBuySell_Buy);
    EXPECT_EQ(price.GetSettlementPriceType(), 1u);
    update.SetLastPriceBuySellIndicator(nxBuySell_Sell);
    update.SetSettlementPriceType(2u);
    price.ApplyUpdate(update);
    EXPECT_EQ(price.GetLastPriceBuySellIndicator(), nxBuySell_Sell);
    EXPECT_EQ(price.GetSettlementPriceType(), 2u);
}

}  // namespace

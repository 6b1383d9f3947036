#include "base/records/nxPrice.h"

#include <gtest/gtest.h>

namespace {

const nxDecimal null;
const nxVolume nullVolume;

nxDecimal Number(long long value)
{
    return nxDecimal::FromMantissa(value, 0);
}

TEST(nxPrice, TheBestOfDirectAndImplied)
{
    const struct
    {
        nxDecimal direct;
        nxVolume directVolume;
        nxDecimal implied;
        nxVolume impliedVolume;
        nxDecimal bid;
        nxVolume bidVolume;
        nxDecimal ask;
        nxVolume askVolume;
    } rows[] = {
        {Number(10), 5, Number(11), 6, Number(11), 6, Number(10), 5},
        {Number(11), 5, Number(10), 6, Number(11), 5, Number(10), 6},
        {Number(10), 5, nxDecimal::FromMantissa(100, 1), 6, Number(10), 11, Number(10), 11},
        {Number(10), 0xFFFFFFF0u, Number(10), 0x20, Number(10), 0xFFFFFFFDu, Number(10), 0xFFFFFFFDu},
        {null, 5, Number(-1), 6, Number(-1), 6, Number(-1), 6},
        {null, 5, null, 6, null, nullVolume, null, nullVolume},
        {nxDecimal(nxNoChangeInitalizer()), 5, nxDecimal(nxNoChangeInitalizer()), 6, null, nullVolume, null,
         nullVolume},
    };
    for (const auto& row : rows) {
        nxPrice price;
        price.SetBidPrice(row.direct);
        price.SetBidVolume(row.directVolume);
        price.SetImpliedBidPrice(row.implied);
        price.SetImpliedBidVolume(row.impliedVolume);
        price.SetAskPrice(row.direct);
        price.SetAskVolume(row.directVolume);
        price.SetImpliedAskPrice(row.implied);
        price.SetImpliedAskVolume(row.impliedVolume);
        nxDecimal best = Number(99);
        nxVolume volume = 99;
        price.GetBestBidPriceAndVolume(best, volume);
        EXPECT_EQ(best, row.bid) << &row - rows;
        EXPECT_EQ(volume, row.bidVolume) << &row - rows;
        price.GetBestAskPriceAndVolume(best, volume);
        EXPECT_EQ(best, row.ask) << &row - rows;
        EXPECT_EQ(volume, row.askVolume) << &row - rows;
    }
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

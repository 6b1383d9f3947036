#include <gmock/gmock.h>

#include "base/time/nxTime.h"
#include "host/feed/nxFeedTime.h"
#include "host/market/nxProductFile.h"
#include "tests/host/nxFeedFixture.h"

namespace {

std::string GetError(const std::string& content)
{
    const nxFeedFile file(content);
    std::vector<nxProductDescription> products;
    nxFeedError error;
    const bool isRead = nxProductFile::Read(file.GetPath(), products, error);
    EXPECT_TRUE(isRead || products.empty());
    return isRead ? "" : file.Hide(error.GetText());
}

TEST(nxFeedProductFileTest, ReadsAllThatAProductMayHave)
{
    const nxFeedFile file(R"([[product]]
name = "ESZ3"
tickSize = 0.25
lotSize = 1
pointValue = "50.00"
currency = "USD"
exchange = "CME"
description = "E-mini"
tradingHours = "17:00-16:00"
makerFee = -0.01
takerFee = 0.25

[[product]]
name = "ESZ3-ESH4"
priceOffset = -0.5
[[product.leg]]
product = "ESZ3"
[[product.leg]]
product = "ESH4"
side = "SELL"
priceRatio = 0.5
tradeRatio = "2.0"

[[product]]
name = "ESH4"

[[product]]
name = "short"
legs = [{ product = "ESZ3-ESH4" }, { product = "ESZ3" }]
)");
    std::vector<nxProductDescription> products;
    nxFeedError error;
    ASSERT_TRUE(nxProductFile::Read(file.GetPath(), products, error)) << error.GetText();
    ASSERT_EQ(products.size(), 4u);
    const nxProductDescription& future = products[0];
    EXPECT_EQ(future.name, "ESZ3");
    EXPECT_EQ(future.tickSize.GetAsString(), "0.25");
    EXPECT_EQ(future.lotSize.GetAsString(), "1");
    EXPECT_EQ(future.pointValue.GetAsString(), "50.00");
    EXPECT_EQ(future.currency.GetAsString(), "USD");
    EXPECT_EQ(future.exchange, "CME");
    EXPECT_EQ(future.description, "E-mini");
    EXPECT_FALSE(future.tradingHours.IsEmpty());
    EXPECT_EQ(future.makerFee.GetAsString(), "-0.01");
    EXPECT_EQ(future.takerFee.GetAsString(), "0.25");
    EXPECT_FALSE(future.IsStrategy());

    const nxProductDescription& spread = products[1];
    EXPECT_TRUE(spread.tickSize.IsNull());
    EXPECT_TRUE(spread.currency.IsUndefined());
    ASSERT_EQ(spread.legs.size(), 2u);
    EXPECT_EQ(spread.legs[0].side, nxSide::Buy);
    EXPECT_EQ(spread.legs[0].priceRatio.GetAsString(), "1");
    EXPECT_EQ(spread.legs[1].product, "ESH4");
    EXPECT_EQ(spread.legs[1].side, nxSide::Sell);
    EXPECT_EQ(spread.legs[1].priceRatio.GetAsString(), "0.5");
    EXPECT_EQ(spread.legs[1].tradeRatio.GetAsString(), "2");
    EXPECT_EQ(spread.priceOffset.GetAsString(), "-0.5");
    EXPECT_EQ(products[3].legs[0].product, "ESZ3-ESH4");
}

TEST(nxFeedProductFileTest, FloatsCountAsTheirShortestText)
{
    for (const char* number : {"0.01", "0.1", "0.005", "0.00000001", "1e-3", "\"0.010\"", "5.0"}) {
        const nxFeedFile file(std::string("[[product]]\nname = \"A\"\ntickSize = ") + number + "\n");
        std::vector<nxProductDescription> products;
        nxFeedError error;
        ASSERT_TRUE(nxProductFile::Read(file.GetPath(), products, error)) << error.GetText();
        const std::string written = number;
        const std::string expected = written == "1e-3"        ? "0.001"
                                     : written == "\"0.010\"" ? "0.010"
                                     : written == "5.0"       ? "5"
                                                              : written;
        EXPECT_EQ(products[0].tickSize.GetAsString(), expected);
    }
}

TEST(nxFeedProductFileTest, WhatIsWrongIsToldByPlaceAndReason)
{
    const std::string known =
        "; known are name, tickSize, lotSize, pointValue, currency, exchange, description, tradingHours, "
        "zone, holidays, shortDays, calendar, makerFee, takerFee, feeIsRate, legs, priceOffset";
    const std::string product = "[[product]]\nname = \"A\"\n";
    const std::string more = "[[product]]\nname = \"B\"\n[[product]]\nname = \"C\"\n";
    const std::string hours = product + "tradingHours = 'Mon-Fri 09:30-16:00'\n";
    const auto shortDay = [&](const std::string& keys) { return hours + "shortDays = [{" + keys + "}]\n"; };
    const auto legs = [&](const std::string& first, const std::string& second) {
        return product + "legs = [{" + first + "},\n{" + second + "}]\n" + more;
    };
    const struct
    {
        std::string content;
        std::string text;
    } rows[] = {
        {"", ""},
        {"product = 1\n", "FILE:1:11: product is no list of tables; write [[product]]"},
        {"[product]\nname = \"A\"\n", "FILE:1:1: product is no list of tables; write [[product]]"},
        {"[[products]]\nname = \"A\"\n", "FILE:1:1: unknown key \"products\"; known are product, calendar"},
        {"[[product]]\ntickSize = 1\n", "FILE:1:1: product without a name"},
        {product + "ticksize = 0.01\n", "FILE:3:12: unknown key \"ticksize\"" + known},
        {product + "lotSize = 1\nwrong = 1\nworse = 2\n", "FILE:4:9: unknown key \"wrong\"" + known},
        {product + "tickSize = true\n", "FILE:3:12: tickSize is not a number"},
        {product + "tickSize = \"fine\"\n", "FILE:3:12: tickSize is not a number: \"fine\""},
        {product + "tickSize = 0\n", "FILE:3:12: tickSize is not above 0: 0"},
        {product + "lotSize = -0.5\n", "FILE:3:11: lotSize is not above 0: -0.5"},
        {product + "pointValue = nan\n", "FILE:3:14: pointValue is not a number: \"nan\""},
        {product + "exchange = 5\n", "FILE:3:12: exchange is not a text in quotes"},
        {product + "currency = \"ZZZ\"\n", "FILE:3:12: unknown currency \"ZZZ\""},
        {product + "tradingHours = \"9-17\"\n",
         "FILE:3:16: tradingHours: a session is HH:MM-HH:MM, from 00:00 to 24:00"},
        {product + "tradingHours = \"09:00-17:00, 16:00-18:00\"\n",
         "FILE:3:16: tradingHours: two sessions overlap; one may begin only when the other has ended"},
        {hours + "zone = 'New York'\n",
         "FILE:4:8: unknown zone \"New York\"; the nearest name is \"America/New_York\""},
        {hours + "zone = 'Moonbase'\n",
         "FILE:4:8: unknown zone \"Moonbase\"; zones are named as in \"America/New_York\" or "
         "\"Asia/Tokyo\""},
        {product + "zone = 'Asia/Tokyo'\n", "FILE:3:8: zone without tradingHours"},
        {hours + "holidays = '2024-12-25'\n", "FILE:4:12: holidays is no list of dates"},
        {hours + "holidays = ['2024-02-30']\n",
         "FILE:4:13: holidays: a date is YYYY-MM-DD, not \"2024-02-30\""},
        {hours + "holidays = [20241225]\n", "FILE:4:13: holidays: a date is YYYY-MM-DD"},
        {hours + "holidays = ['2024-12-25',\n'2024-12-25']\n",
         "FILE:5:1: holidays: the day is a holiday already"},
        {shortDay("date = '2024-11-29'"), "FILE:4:14: short day without a close"},
        {shortDay("date = '2024-11-29', close = '1pm'"),
         "FILE:4:44: close is no time of day, HH:MM: \"1pm\""},
        {shortDay("date = '2024-11-29', close = '09:30'"),
         "FILE:4:44: short day: the session begins at 09:30 only"},
        {shortDay("date = '2024-11-29', close = '16:00'"),
         "FILE:4:44: short day: the day's trading ends at 16:00 anyway"},
        {shortDay("date = '2024-11-30', close = '13:00'"),
         "FILE:4:44: short day: the day has no session that could be shortened"},
        {shortDay("date = '2024-11-29', close = '13:00'}, {date = '2024-11-29', close = '12:00'"),
         "FILE:4:84: short day: the day is a short one already"},
        {product + "calendar = 'NYSE'\n",
         "FILE:3:12: unknown calendar \"NYSE\"; the file has no [calendar.NAME]"},
        {product + "calendar = 'NYSE'\n[calendar.XETRA]\ntradingHours = '09:00-17:30'\n",
         "FILE:3:12: unknown calendar \"NYSE\"; known are XETRA"},
        {hours + "calendar = 'NYSE'\n", "FILE:3:16: calendar has tradingHours already; write one of them"},
        {"[calendar.NYSE]\nzone = 'UTC'\n", "FILE:1:1: calendar without tradingHours"},
        {"calendar = 5\n", "FILE:1:12: calendar is no table of tables; write [calendar.NAME]"},
        {"[calendar.NYSE]\nhours = ''\n",
         "FILE:2:9: unknown key \"hours\"; known are tradingHours, zone, holidays, shortDays"},
        {product + product, "FILE:3:1: product \"A\" described twice"},
        {product + "[[product.leg]]\nside = \"BUY\"\n", "FILE:3:1: leg without a product"},
        {product + "[[product.leg]]\nproduct = \"B\"\nside = \"LONG\"\n",
         "FILE:5:8: side is neither \"BUY\" nor \"SELL\""},
        {product + "[[product.leg]]\nratio = 1\n",
         "FILE:4:9: unknown key \"ratio\"; known are product, side, priceRatio, tradeRatio"},
        {legs("product = 'B'", "product = 'C'"), ""},
        {legs("product = 'B'", "product = 'D'"), "FILE:4:12: leg of a product that is not described: \"D\""},
        {legs("product = 'B'", "product = 'B'"), "FILE:4:1: product \"B\" is a leg twice"},
        {legs("product = 'B'", "product = 'C', priceRatio = 0"), "FILE:4:30: priceRatio is not above 0: 0"},
        {legs("product = 'B'", "product = 'C', tradeRatio = 0"),
         "FILE:4:30: tradeRatio is no whole number from 1 to 1000000: 0"},
        {legs("product = 'B'", "product = 'C', tradeRatio = 1.5"),
         "FILE:4:30: tradeRatio is no whole number from 1 to 1000000: 1.5"},
        {legs("product = 'B'", "product = 'A'"), "FILE:1:1: a strategy is among its own legs: A -> A"},
        {product + "legs = [{product = 'B'}]\n" + more, "FILE:3:8: a strategy has at least two legs"},
        {product + "legs = []\n", "FILE:3:8: a strategy has at least two legs"},
        {product + "priceOffset = 1\n", "FILE:3:15: only a strategy, which has legs, has a priceOffset"},
        {product + "tradingHours = '09:00-17:00'\nlegs = [{product = 'B'}, {product = 'C'}]\n" + more,
         "FILE:3:16: a strategy has no tradingHours: it is open while its legs are"},
        {product + "leg = [{product = 'B'}, {product = 'C'}]\nlegs = [{product = 'B'}]\n" + more,
         "FILE:4:8: leg and legs are the same; write one of them"},
        {more + product +
             "legs = [{product = 'C'}, {product = 'X'}]\n[[product]]\nname = 'X'\nlegs = "
             "[{product = 'B'}, {product = 'Y'}]\n[[product]]\nname = 'Y'\nlegs = "
             "[{product = 'X'}, {product = 'C'}]\n",
         "FILE:8:1: a strategy is among its own legs: X -> Y -> X"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.content);
        EXPECT_EQ(GetError(row.content), row.text);
    }
    EXPECT_THAT(GetError(product + "tickSize = \n"), testing::StartsWith("FILE:3:"));
    EXPECT_THAT(GetError(product + "name = \"B\"\n"), testing::StartsWith("FILE:3:"));
}

TEST(nxFeedProductFileTest, TheExampleIsAFutureAShareAPairAndASpread)
{
    std::vector<nxProductDescription> products;
    nxFeedError error;
    ASSERT_TRUE(nxProductFile::Read(NX_SOURCE_DIR "/examples/products.toml", products, error))
        << error.GetText();
    std::string names;
    for (const nxProductDescription& product : products)
        names += product.name + (product.IsStrategy() ? " of legs," : ",");
    EXPECT_EQ(names, "NEAR,FAR,SHARE,EURUSD,FAR-NEAR of legs,");
    long long noon = 0;
    ASSERT_EQ(nxFeedTime::SetFromText("2024-12-30T12:00", noon), nullptr);
    EXPECT_EQ(products[2].tradingHours.GetNextChange(noon), noon + 3600 * nxTime::NanosecondsPerSecond);
}

}  // namespace

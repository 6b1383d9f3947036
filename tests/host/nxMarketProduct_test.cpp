#include "host/market/nxMarketProduct.h"

#include <gtest/gtest.h>

namespace {

constexpr long long Day = 86'400'000'000'000;

nxDecimal Price(const std::string& text)
{
    nxDecimal price;
    if (text == "=") {
        price.SetNoChange();
    } else if (!text.empty()) {
        EXPECT_TRUE(price.SetFromString(text, '.').IsSuccess()) << text;
    }
    return price;
}

nxVolume NoVolume()
{
    nxVolume volume;
    volume.SetNoChange();
    return volume;
}

nxFeedQuote Unchanged()
{
    nxFeedQuote quote;
    for (nxDecimal* price : {&quote.bid, &quote.ask, &quote.last})
        price->SetNoChange();
    for (nxVolume* volume : {&quote.bidVolume, &quote.askVolume, &quote.lastVolume})
        volume->SetNoChange();
    quote.side = nxEnum_NoChange;
    return quote;
}

nxFeedQuote Trade(const std::string& last, const nxVolume& volume, const nxBuySellEnum& side = nxBuySell_Buy)
{
    nxFeedQuote quote = Unchanged();
    quote.last = Price(last);
    quote.lastVolume = volume;
    quote.side = side;
    return quote;
}

nxFeedBar Bar(const char* open, const char* high, const char* low, const char* close, unsigned int volume)
{
    return {Price(open), Price(high), Price(low), Price(close), volume};
}

std::string Show(const nxDecimal& price)
{
    return price.IsNoChange() ? "=" : price.IsNull() ? "-" : price.GetAsString();
}

std::string Show(const nxVolume& volume)
{
    return volume.IsNoChange() ? "=" : volume.IsNull() ? "-" : std::to_string(volume.GetValue());
}

// "bid x volume / ask x volume"
std::string ShowBest(const nxPrice& price)
{
    return Show(price.GetBidPrice()) + " x " + Show(price.GetBidVolume()) + " / " +
           Show(price.GetAskPrice()) + " x " + Show(price.GetAskVolume());
}

// "open high low close previousClose total"
std::string ShowDay(const nxPrice& price)
{
    std::string text;
    for (const nxDecimal& value : {price.GetOpenPrice(), price.GetHighPrice(), price.GetLowPrice(),
                                   price.GetClosePrice(), price.GetPreviousClosePrice()})
        text += Show(value) + " ";
    return text + Show(price.GetTotalTradedVolume());
}

class nxMarketProductTest : public ::testing::Test
{
protected:
    nxMarketProduct product{"A"};
};

// Each trade's update brings a copy to where the market's own record is.
TEST_F(nxMarketProductTest, KeepsTheVolumeTradedAtEachPriceOfTheDay)
{
    nxPriceTradeVolumes copy;
    const auto show = [](const nxPriceTradeVolumes& volumes) {
        std::string text;
        for (const auto& [price, volume] : volumes.GetPriceMap())
            text += price.GetAsString() + ":" + Show(volume) + " ";
        return text;
    };
    const struct
    {
        nxFeedQuote quote;
        long long time;
        const char* volumes;
        unsigned int type;  // of the update; 0: there is none
    } rows[] = {
        {Trade("100.25", 3u), 0, "100.25:3 ", nxPriceTradeVolumesUpdateType_Delta},
        {Unchanged(), 1, "100.25:3 ", 0},
        {Trade("=", 2u), 2, "100.25:5 ", nxPriceTradeVolumesUpdateType_Delta},
        {Trade("100.00", 1u), 3, "100.00:1 100.25:5 ", nxPriceTradeVolumesUpdateType_Delta},
        {Trade("100.00", NoVolume()), 4, "100.00:1 100.25:5 ", 0},
        {Trade("99.75", 7u), Day, "99.75:7 ", nxPriceTradeVolumesUpdateType_Reset},
        {Trade("99.75", NoVolume()), 2 * Day, "", nxPriceTradeVolumesUpdateType_Reset},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.time);
        product.ApplyQuote(row.quote, row.time);
        nxPriceTradeVolumes update;
        EXPECT_EQ(product.GetTradeVolumesUpdate(update), row.type != 0);
        if (row.type != 0) {
            EXPECT_EQ(update.GetUpdateType().GetValue(), row.type);
            copy.ApplyUpdate(update);
        }
        EXPECT_EQ(show(product.GetTradeVolumes()), row.volumes);
        EXPECT_EQ(show(copy), row.volumes);
    }
    product.ApplyQuote(Trade("99.75", 7u), 2 * Day);
    product.ApplyDepth({});
    nxPriceTradeVolumes update;
    EXPECT_FALSE(product.GetTradeVolumesUpdate(update));
}

}  // namespace

TEST_F(nxMarketProductTest, AQuoteChangesWhatItGivesAndTheUpdateHoldsNothingElse)
{
    nxFeedQuote quote = Unchanged();
    quote.bid = Price("99.5");
    quote.bidVolume = 3u;
    quote.ask = Price("100");
    quote.askVolume = 4u;
    product.ApplyQuote(quote, 0);
    EXPECT_EQ(ShowBest(product.GetPriceUpdate()), "99.5 x 3 / 100 x 4");

    quote = Unchanged();
    quote.askVolume = 9u;
    product.ApplyQuote(quote, 1);
    EXPECT_EQ(ShowBest(product.GetPrice()), "99.5 x 3 / 100 x 9");
    EXPECT_EQ(ShowBest(product.GetPriceUpdate()), "= x = / = x 9");
    EXPECT_EQ(ShowDay(product.GetPrice()), "- - - - - -");
    EXPECT_EQ(ShowDay(product.GetPriceUpdate()), "= = = = = =");
}

TEST_F(nxMarketProductTest, ATradeTellsItsPriceEvenWhereTheRowLeavesItOut)
{
    product.ApplyQuote(Trade("100", 3u, nxBuySell_Sell), 0);
    product.ApplyQuote(Trade("=", 5u, nxBuySell_Buy), 1);
    EXPECT_EQ(Show(product.GetPriceUpdate().GetLastPrice()), "100");
    EXPECT_EQ(Show(product.GetPriceUpdate().GetLastVolume()), "5");
    EXPECT_EQ(product.GetPrice().GetLastPriceBuySellIndicator(), nxBuySell_Buy);
    EXPECT_EQ(Show(product.GetPrice().GetTotalTradedVolume()), "8");
}

TEST_F(nxMarketProductTest, DailyFiguresOfTrades)
{
    const struct
    {
        long long time;
        const char* price;
        unsigned int volume;
        const char* snapshot;  // open high low close previousClose total
        const char* update;
    } rows[] = {
        {10, "100", 2, "100 100 100 100 - 2", "100 100 100 100 - 2"},
        {20, "101", 1, "100 101 100 101 - 3", "= 101 = 101 = 3"},
        {30, "98.5", 1, "100 101 98.5 98.5 - 4", "= = 98.5 98.5 = 4"},
        {Day - 1, "99", 1, "100 101 98.5 99 - 5", "= = = 99 = 5"},
        {Day, "97", 4, "97 97 97 97 99 4", "97 97 97 97 99 4"},
        {Day + 1, "96", 1, "97 97 96 96 99 5", "= = 96 96 = 5"},
        {9 * Day, "90", 1, "90 90 90 90 96 1", "90 90 90 90 96 1"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.snapshot);
        product.ApplyQuote(Trade(row.price, row.volume), row.time);
        EXPECT_EQ(ShowDay(product.GetPrice()), row.snapshot);
        EXPECT_EQ(ShowDay(product.GetPriceUpdate()), row.update);
    }
}

TEST_F(nxMarketProductTest, DaysBefore1970AreDaysToo)
{
    product.ApplyQuote(Trade("100", 2u), -1);
    EXPECT_EQ(ShowDay(product.GetPrice()), "100 100 100 100 - 2");
    product.ApplyQuote(Trade("101", 3u), -Day);
    EXPECT_EQ(ShowDay(product.GetPrice()), "100 101 100 101 - 5") << "the first moment of that day";
    product.ApplyQuote(Trade("102", 1u), 0);
    EXPECT_EQ(ShowDay(product.GetPrice()), "102 102 102 102 101 1");
}

TEST_F(nxMarketProductTest, TheVolumeOfADayStopsAtTheLargestAndNeverBecomesAMark)
{
    constexpr unsigned int largest = 0xFFFFFFFD;
    product.ApplyQuote(Trade("100", largest - 1), 0);
    product.ApplyQuote(Trade("100", 7u), 1);
    EXPECT_EQ(product.GetPrice().GetTotalTradedVolume().GetValue(), largest);
}

TEST_F(nxMarketProductTest, ATradeWithoutAVolumeCountsForThePricesOnly)
{
    product.ApplyQuote(Trade("100", 2u), 0);
    product.ApplyQuote(Trade("101", NoVolume()), 1);
    EXPECT_EQ(ShowDay(product.GetPrice()), "100 101 100 101 - 2");
}

TEST_F(nxMarketProductTest, ABarSetsItsFiguresAndAddsUpTheVolumeOfTheDay)
{
    product.ApplyBar(Bar("100", "103", "99", "101", 40), 0);
    EXPECT_EQ(ShowDay(product.GetPrice()), "100 103 99 101 - 40");
    product.ApplyBar(Bar("101", "102", "100", "102", 2), 60);
    EXPECT_EQ(ShowDay(product.GetPrice()), "101 102 100 102 - 42");
    EXPECT_EQ(Show(product.GetPriceUpdate().GetLastPrice()), "102");
    EXPECT_EQ(Show(product.GetPriceUpdate().GetLastVolume()), "2");
    EXPECT_EQ(ShowBest(product.GetPriceUpdate()), "= x = / = x =");
    product.ApplyBar(Bar("105", "105", "105", "105", 0), Day);
    EXPECT_EQ(ShowDay(product.GetPrice()), "105 105 105 105 102 0");
}

TEST_F(nxMarketProductTest, QuotesFromDepthTellTheBestLevelsAsTheyChange)
{
    const struct
    {
        const char* name;
        std::vector<nxFeedLevel> levels;
        bool changed;
        const char* snapshot;
        const char* update;
    } rows[] = {
        {"one side", {{Price("99"), 5u, nxSide::Buy}}, true, "99 x 5 / - x -", "99 x 5 / = x ="},
        {"a worse level", {{Price("98"), 1u, nxSide::Buy}}, false, "99 x 5 / - x -", "= x = / = x ="},
        {"other side", {{Price("101"), 7u, nxSide::Sell}}, true, "99 x 5 / 101 x 7", "= x = / 101 x 7"},
        {"volume only", {{Price("99"), 6u, nxSide::Buy}}, true, "99 x 6 / 101 x 7", "= x 6 / = x ="},
        {"better, same volume",
         {{Price("100"), 6u, nxSide::Buy}},
         true,
         "100 x 6 / 101 x 7",
         "100 x = / = x ="},
        {"best goes",
         {{Price("100"), 0u, nxSide::Buy}, {Price("99"), 0u, nxSide::Buy}},
         true,
         "98 x 1 / 101 x 7",
         "98 x 1 / = x ="},
        {"there and back within one change",
         {{Price("101"), 0u, nxSide::Sell}, {Price("101"), 7u, nxSide::Sell}},
         false,
         "98 x 1 / 101 x 7",
         "= x = / = x ="},
        {"side runs empty", {{Price("98"), 0u, nxSide::Buy}}, true, "- x - / 101 x 7", "- x - / = x ="},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        product.ApplyDepth(row.levels);
        EXPECT_EQ(product.QuoteFromDepth(), row.changed);
        EXPECT_EQ(ShowBest(product.GetPrice()), row.snapshot);
        EXPECT_EQ(ShowBest(product.GetPriceUpdate()), row.update);
    }
}

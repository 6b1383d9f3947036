#include "host/market/nxImpliedQuote.h"

#include <gtest/gtest.h>

namespace {

nxDecimal Decimal(const std::string& text)
{
    nxDecimal number;
    if (!text.empty() && !number.SetFromString(text).IsSuccess()) ADD_FAILURE() << text;
    return number;
}

struct Leg
{
    const char* side;
    const char* priceRatio;
    unsigned int tradeRatio;
    const char* bid;
    nxVolume bidVolume;
    const char* ask;
    nxVolume askVolume;
};

const char* const Huge = "9000000000000000000";

// "bid volume / ask volume" of a strategy.
std::string GetQuote(const std::vector<Leg>& legs, const char* offset, const char* tick)
{
    std::vector<std::unique_ptr<nxMarketProduct>> markets;
    nxStrategyTerms terms;
    terms.priceOffset = Decimal(offset);
    terms.tickSize = Decimal(tick);
    for (const Leg& leg : legs) {
        markets.push_back(std::make_unique<nxMarketProduct>("leg"));
        nxFeedQuote quote;
        quote.bid = Decimal(leg.bid);
        quote.ask = Decimal(leg.ask);
        quote.bidVolume = leg.bidVolume;
        quote.askVolume = leg.askVolume;
        markets.back()->ApplyQuote(quote, 0);
        terms.legs.push_back({markets.back().get(),
                              leg.side == std::string("BUY") ? nxSide::Buy : nxSide::Sell,
                              Decimal(leg.priceRatio), leg.tradeRatio});
    }
    const nxImpliedQuote quote(terms);
    const auto text = [](const nxDecimal& price, const nxVolume& volume) {
        return price.GetAsLogString() + " " +
               (volume.IsValid() ? std::to_string(volume.GetValue()) : std::string("NULL"));
    };
    return text(quote.bid, quote.bidVolume) + " / " + text(quote.ask, quote.askVolume);
}

}  // namespace

TEST(nxImpliedQuoteTest, FollowsFromTheLegs)
{
    const nxVolume none;
    const Leg near{"BUY", "1", 1, "100.10", 5u, "100.12", 7u};
    const Leg far{"SELL", "1", 1, "99.95", 4u, "99.99", 6u};
    const Leg noBid{"SELL", "1", 1, "", none, "99.99", 6u};
    const Leg noVolumes{"SELL", "1", 1, "99.95", none, "99.99", none};
    const Leg half{"BUY", "0.5", 3, "10", 10u, "11", 8u};
    const Leg twice{"BUY", "2", 2, "7", 9u, "8", 7u};
    const Leg small{"BUY", "1", 3, "10", 2u, "11", 3u};
    const Leg huge{"BUY", Huge, 1, Huge, 1u, "0", 1u};
    const Leg tiny{"BUY", "0.000000000000000001", 1, "0.000000000000000001", 1u, "0", 1u};
    const struct
    {
        const char* what;
        std::vector<Leg> legs;
        const char* offset;
        const char* tick;
        const char* quote;
    } rows[] = {
        {"sells at the bid, buys at the ask", {near, far}, "", "0.01", "0.11 5 / 0.17 4"},
        {"an offset of either sign", {near, far}, "-1", "0.01", "-0.89 5 / -0.83 4"},
        {"rounded to the safe side", {near, far}, "", "0.05", "0.10 5 / 0.20 4"},
        {"below 0, too", {near, far}, "-1", "0.25", "-1.00 5 / -0.75 4"},
        {"as it comes without a tick", {near, far}, "0.0005", "", "0.1105 5 / 0.1705 4"},
        {"ratios of price and of lots", {half, twice}, "", "0.5", "19.0 3 / 21.5 2"},
        {"less than one lot is no side", {small, twice}, "", "1", "NULL NULL / 27 1"},
        {"a leg without a bid", {near, noBid}, "", "0.01", "0.11 5 / NULL NULL"},
        {"a leg without volumes", {near, noVolumes}, "", "0.01", "0.11 NULL / 0.17 NULL"},
        {"too large for a decimal", {huge, huge}, "", "1", "NULL NULL / 0 1"},
        {"too fine for 128 bits", {huge, tiny}, "", "", "NULL NULL / 0 1"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(GetQuote(row.legs, row.offset, row.tick), row.quote);
    }
}

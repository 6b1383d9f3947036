#include "host/market/nxImpliedQuote.h"

#include <gtest/gtest.h>

#include <sstream>

#include "tests/support/nxRowFile.h"

namespace {

nxDecimal Decimal(const std::string& text)
{
    nxDecimal number;
    if (text != "-" && !number.SetFromString(text).IsSuccess()) ADD_FAILURE() << text;
    return number;
}

// The market of a leg, "SIDE PRICERATIO TRADERATIO BID VOLUME ASK VOLUME".
void AddLeg(nxStrategyTerms& terms, std::vector<std::unique_ptr<nxMarketProduct>>& markets,
            const std::string& text)
{
    const auto words = nxGetWords(text);
    const auto volume = [](const std::string& word) {
        return word == "-" ? nxVolume() : nxVolume(static_cast<unsigned int>(std::stoul(word)));
    };
    nxFeedQuote quote;
    quote.bid = Decimal(words.at(3));
    quote.bidVolume = volume(words.at(4));
    quote.ask = Decimal(words.at(5));
    quote.askVolume = volume(words.at(6));
    markets.push_back(std::make_unique<nxMarketProduct>("leg"));
    markets.back()->ApplyQuote(quote, 0);
    terms.legs.push_back({markets.back().get(), words[0] == "BUY" ? nxSide::Buy : nxSide::Sell,
                          Decimal(words[1]), static_cast<unsigned int>(std::stoul(words[2]))});
}

}  // namespace

TEST(nxImpliedQuoteTest, FollowsFromTheLegs)
{
    nxExpectRows("host/quotes.txt", [](const std::string& text) {
        std::vector<std::unique_ptr<nxMarketProduct>> markets;
        nxStrategyTerms terms;
        std::istringstream lines(text);
        for (std::string line; std::getline(lines, line);) {
            const auto words = nxGetWords(line);
            if (words[0] != "offset") {
                AddLeg(terms, markets, line);
                continue;
            }
            terms.priceOffset = Decimal(words.at(1));
            terms.tickSize = Decimal(words.at(3));
        }
        const nxImpliedQuote quote(terms);
        const auto volume = [](const nxVolume& lots) {
            return lots.IsValid() ? std::to_string(lots.GetValue()) : std::string("NULL");
        };
        return quote.bid.GetAsLogString() + " " + volume(quote.bidVolume) + " / " +
               quote.ask.GetAsLogString() + " " + volume(quote.askVolume);
    });
}

#pragma once

#include <initializer_list>
#include <string>
#include <vector>

#include "host/exchange/nxSimulatedExchange.h"

// Short forms, and one product whose recorded market a test moves.
inline nxDecimal Dec(const std::string& text)
{
    nxDecimal value;
    (void)value.SetFromString(text);
    return value;
}

inline nxFeedQuote MakeNoQuote()
{
    nxFeedQuote quote;
    for (nxDecimal* price : {&quote.bid, &quote.ask, &quote.last})
        price->SetNoChange();
    for (nxVolume* volume : {&quote.bidVolume, &quote.askVolume, &quote.lastVolume})
        volume->SetNoChange();
    return quote;
}

class nxExchangeFixture
{
public:
    explicit nxExchangeFixture(const nxExchangeOptions& options, const nxDecimal& tick = Dec("1"),
                               const nxTradingHours& hours = {}, bool isOfBars = false)
        : exchange(options)
    {
        exchange.AddProduct({&market, tick, hours, isOfBars});
    }

    void Quote(const nxFeedQuote& quote, long long time)
    {
        market.ApplyQuote(quote, time);
        exchange.OnQuote(0, quote, time);
    }
    void Depth(const std::vector<nxFeedLevel>& levels, long long time)
    {
        market.ApplyDepth(levels);
        exchange.OnDepth(0, levels, time);
    }
    void Bar(const nxFeedBar& bar, long long time)
    {
        market.ApplyBar(bar, time);
        exchange.OnBar(0, bar, time);
    }

    nxMarketProduct market{"SIM"};
    nxSimulatedExchange exchange;
};

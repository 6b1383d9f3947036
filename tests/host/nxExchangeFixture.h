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

// Without what a run assumes by itself: own orders meet, orders wait for what is shown, and each trade is
// recorded before what it causes.
inline nxExchangeOptions MakePlainOptions()
{
    nxExchangeOptions options;
    options.selfTrade = nxSelfTrade::Meet;
    options.walksBeyond = false;
    options.lateTrades = 0;
    return options;
}

class nxExchangeFixture
{
public:
    explicit nxExchangeFixture(const nxExchangeOptions& options, const nxDecimal& tick = Dec("1"),
                               const nxTradingHours& hours = {}, long long barPeriod = 0,
                               bool isOfBars = false)
        : exchange(options)
    {
        exchange.AddProduct({&market, tick, hours, isOfBars || barPeriod != 0, barPeriod, {}, {}});
    }

    void Quote(const nxFeedQuote& quote, long long time)
    {
        market.ApplyQuote(quote, time);
        _event.kind = nxFeedKind::Quote;
        _event.quote = quote;
        _Tell(time);
    }
    void Depth(const std::vector<nxFeedLevel>& levels, long long time)
    {
        market.ApplyDepth(levels);
        _event.kind = nxFeedKind::Depth;
        _event.levels = levels;
        _Tell(time);
    }
    void Bar(const nxFeedBar& bar, long long time)
    {
        market.ApplyBar(bar, time);
        _event.kind = nxFeedKind::Bar;
        _event.bar = bar;
        _Tell(time);
    }

    nxMarketProduct market{"SIM"};
    nxSimulatedExchange exchange;

private:
    void _Tell(long long time)
    {
        _event.time = time;
        exchange.OnEvent(0, _event);
    }

    nxFeedEvent _event;
};

#pragma once

struct nxFeedEvent;
struct nxMarket;

// Hears what happens to the markets of a run beside the rows of the data. Called on the run's thread.
class nxMarketObserver
{
public:
    // The first that is known of it; nobody can have subscribed to it.
    virtual void OnMarketMade(nxMarket& market) = 0;
    virtual void OnTickSize(nxMarket& market) = 0;
    // It opened or closed.
    virtual void OnMarketState(nxMarket& market) = 0;
    // The quote that a strategy's legs imply is another one; `event` tells the change as a row would. Where
    // the venue is ahead of the scripts, each is told of by itself.
    virtual void OnImpliedQuote(nxMarket& strategy, const nxFeedEvent& event) = 0;
    virtual void OnImpliedQuoteAhead(nxMarket& strategy, const nxFeedEvent& event) = 0;
    // The run is ending, and nobody is to hear of further changes.
    virtual bool IsEnding() const = 0;

protected:
    ~nxMarketObserver() = default;
};

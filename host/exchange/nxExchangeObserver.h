#pragma once

#include <vector>

#include "base/enums/nxBuySellEnum.h"
#include "host/exchange/nxBookListener.h"

class nxMarketProduct;
struct nxExchangeEvent;

enum class nxOrderRequest { New, Amend, Cancel };

// What was traded by one row of the data: at one price, or within a bar.
struct nxTraded
{
    nxDecimal low, high;
    nxVolume volume;
    nxBuySellEnum aggressor;
};

// Looks on while the exchange works; one overrides what it wants to hear of. Called on the run's thread,
// inside the exchange's own loops: must not call it back. Times are those at the exchange.
class nxExchangeObserver
{
public:
    // The terms are those that the request names.
    virtual void OnRequest(const nxExchangeOrder&, nxOrderRequest, const nxOrderTerms&,
                           const nxMarketProduct&, long long /*sent*/, long long /*due*/)
    {
    }
    virtual void OnEvent(const nxExchangeOrder&, const nxExchangeEvent&, const nxMarketProduct&) {}
    virtual void OnQueueMove(const nxExchangeOrder&, const nxVolume& /*before*/, nxQueueMove,
                             long long /*time*/)
    {
    }
    // After the orders met it. traded: null for a change of quotes or depth.
    virtual void OnMarket(unsigned int /*product*/, const nxMarketProduct&, const nxTraded* /*traded*/,
                          long long /*time*/)
    {
    }

protected:
    ~nxExchangeObserver() = default;
};

// In the order in which they are told; all outlive the exchange.
using nxExchangeObservers = std::vector<nxExchangeObserver*>;

#pragma once

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

// Looks on while the exchange works. Called on the replay's thread, inside the exchange's own loops: must not
// call it back. Times are those at the exchange.
class nxExchangeObserver
{
public:
    // The terms are those that the request names.
    virtual void OnRequest(const nxExchangeOrder& order, nxOrderRequest request, const nxOrderTerms& terms,
                           const nxMarketProduct& market, long long sent, long long due) = 0;
    virtual void OnEvent(const nxExchangeOrder& order, const nxExchangeEvent& event,
                         const nxMarketProduct& market) = 0;
    virtual void OnQueueMove(const nxExchangeOrder& order, const nxVolume& before, nxQueueMove move,
                             long long time) = 0;
    // After the orders met it. traded: null for a change of quotes or depth.
    virtual void OnMarket(unsigned int product, const nxMarketProduct& market, const nxTraded* traded,
                          long long time) = 0;

protected:
    ~nxExchangeObserver() = default;
};

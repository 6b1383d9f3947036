#pragma once

#include "host/exchange/nxExchangeEvent.h"
#include "host/exchange/nxLateTrades.h"
#include "host/feed/nxBarPeriod.h"
#include "host/feed/nxFeedEvent.h"
#include "host/market/nxTradingHours.h"

class nxMarketProduct;
class nxOrderGate;

// Where the orders of a run go: requests out, answers back as events with a time, in the order of their
// times. A venue that simulates is told what the market does; one that is real knows. Used on the run's
// thread; times are nanoseconds since 1970.
class nxVenue
{
public:
    struct Product
    {
        const nxMarketProduct* market = nullptr;  // outlives the venue
        nxDecimal tickSize;                       // null: any price will do
        nxTradingHours hours;                     // empty: a day ends at midnight UTC
        bool isOfBars = false;
        long long barPeriod = 0;  // nanoseconds; 0: not known
        // Of a day, for the impact of what is taken; null: as its data say. The volatility is a part of the
        // price.
        nxDecimal dailyVolatility, dailyVolume;

        // Bars of a day and longer tell nothing of the hours in which they came to be: such a product is open
        // from its first bar on.
        bool IgnoresHours() const { return !hours.IsEmpty() && isOfBars && nxIsDailyBar(barPeriod); }
        nxTradingHours GetHours() const { return IgnoresHours() ? nxTradingHours() : hours; }
    };

    virtual ~nxVenue() = default;

    // The number by which orders name it, from 0.
    virtual unsigned int AddProduct(const Product& product) = 0;
    virtual void SetTickSize(unsigned int product, const nxDecimal& tickSize) = 0;

    // Looks at orders before they get into the market; outlives the venue.
    virtual void SetGate(nxOrderGate& gate) = 0;

    // The number of a new order, from 1, which is sent later.
    virtual unsigned int Reserve() = 0;
    virtual void Submit(unsigned int reserved, const nxOrderKind& kind, const nxOrderTerms& terms,
                        long long now) = 0;
    virtual void Amend(unsigned int order, const nxOrderTerms& changes, long long now) = 0;
    virtual void Cancel(unsigned int order, long long now) = 0;
    // At the end of a run: an IOC order that takes what is shown now, without a way to travel.
    virtual void TakeAtOnce(unsigned int reserved, const nxOrderKind& kind, const nxOrderTerms& terms,
                            long long now) = 0;
    // Its owner knows that the order is over, and will neither ask for it nor send anything for it again.
    virtual void Release(unsigned int order) = 0;
    // Null for a released one.
    virtual const nxExchangeOrder* FindOrder(unsigned int order) const = 0;
    // With those that were released.
    virtual unsigned int GetOrderCount() const = 0;
    // The best price of the owner's resting orders of a side; null for none.
    virtual nxDecimal GetOwnBest(unsigned int product, nxSide side, unsigned int owner) const = 0;

    // What is to be said of the recorded trades.
    virtual nxLateTrades GetLateTrades() const = 0;

    // When something is due next; nxTime::Never where nothing is on its way.
    virtual long long GetNextTime() const = 0;
    // Carries out what is due up to that time.
    virtual void Advance(long long time) = 0;
    // The same, but orders that end at that very time wait, since bars of that time may follow.
    virtual void AdvanceAmongBars(long long time) = 0;
    virtual bool IsEventDue(long long time) const = 0;
    // The next answer that has come in by that time.
    virtual bool PopEvent(nxExchangeEvent& event, long long time) = 0;

    // A row of the market's data, after the market shows it and Advance was called for its time.
    virtual void OnEvent(unsigned int product, const nxFeedEvent& event) = 0;
    virtual void OnOpen(unsigned int product, long long time) = 0;
    virtual void OnClose(unsigned int product, long long time) = 0;
    // All orders of a product that goes on at other prices; new ones wait for its next event.
    virtual void EndOrders(unsigned int product, const char* reason, long long time) = 0;
    // What the market shows already, of one that was open before the venue was there.
    virtual void Join(unsigned int product, long long time) = 0;
};

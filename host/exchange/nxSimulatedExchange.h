#pragma once

#include <memory>
#include <span>
#include <vector>

#include "host/exchange/nxBracket.h"
#include "host/exchange/nxExchangeBook.h"
#include "host/exchange/nxExchangeObserver.h"
#include "host/exchange/nxLatency.h"
#include "host/exchange/nxMessageLine.h"
#include "host/exchange/nxOrderChecks.h"
#include "host/exchange/nxOrderExpiries.h"
#include "host/exchange/nxVenue.h"

struct nxExchangeOptions
{
    const nxFillModel* fills = &nxFillModel::GetDefault();
    nxLatency request;  // from the script to the exchange
    nxLatency answer;   // and back
    unsigned long long seed = 1;
    unsigned int participation = 0;  // hundredths of a bar's volume; 0: all that is wanted
    bool reportQueue = false;        // tell each move in a queue
};

// A simulated exchange over recorded markets: takes requests, holds the orders, fills them by its model and
// answers with events, each way after its latency. Requests and answers keep their order. Nothing of it
// touches the recorded market. Used on the replay's thread; the same requests, data and seed give the same
// events.
//
// The life of an order: pending until it arrives; rejected, or working; held while it is a stop that waits or
// waits for the opening; partially filled; and in the end filled or deleted. docs/exchange.md tells it in
// full.
class nxSimulatedExchange : public nxVenue, private nxBookListener
{
public:
    explicit nxSimulatedExchange(const nxExchangeOptions& options);
    ~nxSimulatedExchange();

    // Null for none; outlives the exchange.
    void SetObserver(nxExchangeObserver* observer) { _observer = observer; }
    // The number by which orders name it, from 0.
    unsigned int AddProduct(const Product& product) override;
    void SetTickSize(unsigned int product, const nxDecimal& tickSize) override;

    // What the market shows already, of one that was open before the exchange was there.
    void Join(unsigned int product, long long time) override;

    // Requests at the recorded time now. A new order has its number at once, from 1 on; a reserved one before
    // it is sent.
    unsigned int Reserve() override { return _orders.Add().id; }
    void Submit(unsigned int reserved, const nxOrderKind& kind, const nxOrderTerms& terms,
                long long now) override;
    unsigned int Submit(const nxOrderKind& kind, const nxOrderTerms& terms, long long now);
    void Amend(unsigned int order, const nxOrderTerms& changes, long long now) override;
    void Cancel(unsigned int order, long long now) override;

    // At the end of a run, where nothing travels any more and a market closes because its data end: the
    // order, an IOC one, takes what the book shows now.
    void TakeAtOnce(unsigned int reserved, const nxOrderKind& kind, const nxOrderTerms& terms,
                    long long now) override;

    // When something is due next, a request, an answer or an order's date; the last of all times for never.
    long long GetNextTime() const override;
    // Carries out what is due up to that time.
    void Advance(long long time) override;
    bool IsEventDue(long long time) const override { return _events.IsDue(time); }
    // The next answer that has come in by that time.
    bool PopEvent(nxExchangeEvent& event, long long time) override;

    // What the market did, after the market shows it and Advance was called for its time. While a market is
    // closed nothing is filled in it; once it opens it begins with the next event of its data, until when
    // orders are held, since what is shown is from before.
    void OnEvent(unsigned int product, const nxFeedEvent& event) override;
    void OnQuote(unsigned int product, const nxFeedQuote& quote, long long time);
    void OnDepth(unsigned int product, std::span<const nxFeedLevel> levels, long long time);
    void OnBar(unsigned int product, const nxFeedBar& bar, long long time);
    void OnOpen(unsigned int product, long long time) override;
    void OnClose(unsigned int product, long long time) override;

    // Its owner knows that the order is over, and will neither ask for it nor send anything for it again.
    void Release(unsigned int order) override { _orders.Release(order); }
    // One that was not released.
    const nxExchangeOrder& GetOrder(unsigned int order) const { return _orders.Get(order); }
    const nxExchangeOrder* FindOrder(unsigned int order) const override { return _orders.Find(order); }
    unsigned int GetOrderCount() const override { return _orders.GetCount(); }
    const nxExchangeBook& GetBook(unsigned int product) const;
    nxDecimal GetOwnBest(unsigned int product, nxSide side, unsigned int owner) const override;

private:
    struct Market
    {
        Market(const Product& which, const nxFillRule& rule, nxExactRandom& random, nxBookListener& listener)
            : product(which), book(*which.market, rule, random, listener)
        {
        }

        Product product;
        nxExchangeBook book;
        bool isOpen = false;
        bool opens = false;                        // with the next event of its data
        std::vector<nxExchangeOrder*> opening;     // orders that wait for that
        std::vector<nxExchangeOrder*> immediates;  // of bars, until the next one
    };
    using Refusal = nxOrderChecks::Refusal;
    struct Request
    {
        nxOrderRequest kind;
        unsigned int order;
        long long due;
        nxOrderTerms terms;  // of an amendment
    };
    // What is left to do about a fill once the book is done: children of a bracket, or the change of a
    // sibling.
    struct Consequence
    {
        unsigned int order;
        nxBracket::Fill fill;
    };

    long long _Draw(const nxLatency& latency);
    void _Show(nxOrderRequest kind, unsigned int order, const nxOrderTerms& terms, long long now,
               long long due) const;
    void _Send(nxOrderRequest kind, unsigned int order, long long now, const nxOrderTerms& terms);
    // complete(event) adds what the order does not tell.
    template <class Complete>
    void _Tell(const nxExchangeOrder& order, nxExchangeEvent::Kind kind, Complete complete);
    void _Tell(const nxExchangeOrder& order, nxExchangeEvent::Kind kind, const char* reason = "");
    nxExchangeEvent& _AddEvent(const nxExchangeOrder& order, nxExchangeEvent::Kind kind);
    void _TellRefusal(const nxExchangeOrder& order, nxExchangeEvent::Kind kind, Refusal refusal);
    void _Carry(const Request& request);
    void _Arrive(nxExchangeOrder& order);
    void _ArriveAmend(nxExchangeOrder& order, const nxOrderTerms& changes);
    void _ArriveCancel(nxExchangeOrder& order);
    Refusal _FindRefusal(const nxExchangeOrder& order, const nxOrderTerms& given) const;
    Refusal _FindOwnTrade(const nxExchangeOrder& order) const;
    Refusal _SetTrail(nxExchangeOrder& order) const;
    void _SetExpiry(nxExchangeOrder& order);
    void _Expire();
    void _Enter(nxExchangeOrder& order);
    void _Start(nxExchangeOrder& order);
    void _End(nxExchangeOrder& order, const char* reason, bool isRequested = false);
    static const char* _GetEndOfImmediate(const nxExchangeOrder& order);
    void _EnterOpening(Market& market);
    void _EndImmediates(Market& market, long long time);
    void _Settle();
    void _AddChild(const nxExchangeOrder& parent, const nxBracket::Fill& fill, bool isStop);

    void OnFill(nxExchangeOrder& order, const nxDecimal& price, unsigned int volume, bool isMaker,
                nxFillCause cause) override;
    void OnTriggered(nxExchangeOrder& order) override;
    void OnQueueMoved(nxExchangeOrder& order, const nxVolume& before, nxQueueMove move) override;

    const nxExchangeOptions _options;
    nxExactRandom _latencyRandom;
    nxExactRandom _peakRandom;
    std::vector<std::unique_ptr<Market>> _markets;
    nxOrderPool _orders;
    nxMessageLine<Request> _requests;
    nxMessageLine<nxExchangeEvent> _events;
    nxOrderExpiries _expiries{_orders};
    std::vector<Consequence> _consequences;
    long long _time = 0;  // at the exchange
    nxExchangeObserver* _observer = nullptr;
};

template <class Complete>
void nxSimulatedExchange::_Tell(const nxExchangeOrder& order, nxExchangeEvent::Kind kind, Complete complete)
{
    nxExchangeEvent& event = _AddEvent(order, kind);
    complete(event);
    if (_observer != nullptr) _observer->OnEvent(order, event, *_markets[order.kind.product]->product.market);
}

#pragma once

#include "host/exchange/nxMatchingEngine.h"

struct nxExchangeOptions : nxBookRules
{
    nxLatency request;  // from the script to the exchange
    nxLatency answer;   // and back
    unsigned long long seed = 1;
    double impact = 0;               // the coefficient of the square-root law; 0: taking moves no price
    unsigned int participation = 0;  // hundredths of a bar's volume; 0: all that is wanted
    bool reportQueue = false;        // tell each move in a queue
};

// A simulated exchange over recorded markets: takes requests, has the orders matched by its fill model and
// answers with events, each way after its latency. Requests and answers keep their order. Nothing of it
// touches the recorded market. Used on the run's thread; the same requests, data and seed give the same
// events.
class nxSimulatedExchange : public nxVenue
{
public:
    explicit nxSimulatedExchange(const nxExchangeOptions& options, nxExchangeObservers observers = {});

    unsigned int AddProduct(const Product& product) override { return _engine.AddProduct(product); }
    void SetTickSize(unsigned int product, const nxDecimal& tickSize) override
    {
        _engine.SetTickSize(product, tickSize);
    }

    void SetGate(nxOrderGate& gate) override { _engine.SetGate(gate); }

    // Requests at the recorded time now. A new order has its number at once, from 1 on; a reserved one before
    // it is sent.
    unsigned int Reserve() override { return _engine.GetOrders().Add().id; }
    void Submit(unsigned int reserved, const nxOrderKind& kind, const nxOrderTerms& terms,
                long long now) override;
    unsigned int Submit(const nxOrderKind& kind, const nxOrderTerms& terms, long long now);
    void Amend(unsigned int order, const nxOrderTerms& changes, long long now) override;
    void Cancel(unsigned int order, long long now) override;
    nxLateTrades GetLateTrades() const override { return _engine.GetLateTrades(); }
    // At the end of a run, where nothing travels any more and a market closes because its data end: the
    // order, an IOC one, takes what the book shows now.
    void TakeAtOnce(unsigned int reserved, const nxOrderKind& kind, const nxOrderTerms& terms,
                    long long now) override;

    // When something is due next, a request, an answer or an order's date; nxTime::Never for never.
    long long GetNextTime() const override;
    void Advance(long long time) override { _Advance(time, time); }
    void AdvanceAmongBars(long long time) override { _Advance(time, nxTime::GetEarlier(time, 1)); }
    bool IsEventDue(long long time) const override { return _answers.IsDue(time); }
    bool PopEvent(nxExchangeEvent& event, long long time) override;

    void OnEvent(unsigned int product, const nxFeedEvent& event) override { _engine.OnEvent(product, event); }
    void OnOpen(unsigned int product, long long time) override { _engine.OnOpen(product, time); }
    void OnClose(unsigned int product, long long time) override { _engine.OnClose(product, time); }
    void EndOrders(unsigned int product, const char* reason, long long time) override
    {
        _engine.EndOrders(product, reason, time);
    }
    void Join(unsigned int product, long long time) override { _engine.Join(product, time); }

    void Release(unsigned int order) override { _engine.GetOrders().Release(order); }
    // One that was not released.
    const nxExchangeOrder& GetOrder(unsigned int order) const { return _engine.GetOrders().Get(order); }
    const nxExchangeOrder* FindOrder(unsigned int order) const override
    {
        return _engine.GetOrders().Find(order);
    }
    unsigned int GetOrderCount() const override { return _engine.GetOrders().GetCount(); }
    const nxExchangeBook& GetBook(unsigned int product) const { return _engine.GetBook(product); }
    nxDecimal GetOwnBest(unsigned int product, nxSide side, unsigned int owner) const override
    {
        return GetBook(product).GetOwnBest(side, owner);
    }

private:
    struct Request
    {
        nxOrderRequest kind;
        unsigned int order;
        long long due;
        nxOrderTerms terms;  // of an amendment
    };

    void _Advance(long long time, long long lastExpiry);
    void _Show(nxOrderRequest kind, unsigned int order, const nxOrderTerms& terms, long long now,
               long long due) const;
    void _Send(nxOrderRequest kind, unsigned int order, long long now, const nxOrderTerms& terms);
    void _Carry(const Request& request);

    const nxExchangeObservers _observers;
    const nxLatency _latency;  // of requests
    nxExactRandom _random;     // of latencies
    nxAnswerLine _answers;
    nxMessageLine<Request> _requests;
    nxMatchingEngine _engine;
};

#pragma once

#include <deque>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "base/enums/nxErrorEnum.h"
#include "host/exchange/nxExchangeBook.h"
#include "host/exchange/nxLatency.h"
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
class nxSimulatedExchange : public nxVenue, private nxExchangeBook::Listener
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
    unsigned int Reserve() override;
    void Submit(unsigned int reserved, const nxOrderKind& kind, const nxOrderTerms& terms,
                long long now) override;
    unsigned int Submit(const nxOrderKind& kind, const nxOrderTerms& terms, long long now);
    void Amend(unsigned int order, const nxOrderTerms& changes, long long now) override;
    void Cancel(unsigned int order, long long now) override;

    // At the end of a run, where nothing travels any more and a market closes because its data end: the
    // order, an IOC one, takes what the book shows now.
    void TakeAtOnce(unsigned int reserved, const nxOrderKind& kind, const nxOrderTerms& terms,
                    long long now) override;

    // Why an order with these terms makes no sense; null when it does. What depends on the market's state
    // is only known on arrival.
    static const char* FindFault(const nxOrderKind& kind, const nxOrderTerms& terms);

    // When something is due next, a request, an answer or an order's date; the last of all times for never.
    long long GetNextTime() const override;
    // Carries out what is due up to that time.
    void Advance(long long time) override;
    bool IsEventDue(long long time) const override { return !_events.empty() && _events.front().due <= time; }
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
    void Release(unsigned int order) override;
    // One that was not released.
    const nxExchangeOrder& GetOrder(unsigned int order) const { return *_orders[order - _released - 1]; }
    // Null for a released one.
    const nxExchangeOrder* FindOrder(unsigned int order) const override
    {
        return order <= _released ? nullptr : _orders[order - _released - 1];
    }
    // With those that were released.
    unsigned int GetOrderCount() const override
    {
        return _released + static_cast<unsigned int>(_orders.size());
    }
    const nxExchangeBook& GetBook(unsigned int product) const;
    nxDecimal GetOwnBest(unsigned int product, nxSide side, unsigned int owner) const override;

private:
    struct Market
    {
        Market(const Product& which, const nxFillRule& rule, nxExactRandom& random,
               nxExchangeBook::Listener& listener)
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
    struct Refusal
    {
        nxErrorEnum error;
        std::string text;  // empty: none
    };
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
        nxDecimal price;
        unsigned int volume;
    };

    // When orders end by themselves; also of some that are dead or have another date by now, which are swept
    // out before the list grows to twice what it was.
    struct Expiry
    {
        std::vector<unsigned int> orders;
        std::size_t sweepAt = 64;
    };

    nxExchangeOrder& _GetOrder(unsigned int id) { return *_orders[id - _released - 1]; }
    nxExchangeOrder& _AddOrder();
    bool _ExpiresAt(unsigned int id, long long time) const;
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
    void _Expire(long long time);
    void _Enter(nxExchangeOrder& order);
    void _Start(nxExchangeOrder& order);
    void _End(nxExchangeOrder& order, const char* reason, bool isRequested = false);
    static Refusal _FindEnd(const nxExchangeOrder& order);
    static const char* _GetEndOfImmediate(const nxExchangeOrder& order);
    void _EnterOpening(Market& market);
    void _EndImmediates(Market& market, long long time);
    void _Settle();
    void _AddChild(const nxExchangeOrder& parent, const Consequence& fill, bool isStop);

    void OnFill(nxExchangeOrder& order, const nxDecimal& price, unsigned int volume, bool isMaker,
                nxFillCause cause) override;
    void OnTriggered(nxExchangeOrder& order) override;
    void OnQueueMoved(nxExchangeOrder& order, const nxVolume& before, nxQueueMove move) override;

    const nxExchangeOptions _options;
    nxExactRandom _latencyRandom;
    nxExactRandom _peakRandom;
    std::vector<std::unique_ptr<Market>> _markets;
    std::deque<nxExchangeOrder> _pool;    // they stay where they are
    std::vector<nxExchangeOrder*> _free;  // of the pool
    // By number; null for a released one. Those in front of the first that is not are gone.
    std::deque<nxExchangeOrder*> _orders;
    unsigned int _released = 0;           // that are gone from the front
    std::deque<Request> _requests;        // in the order of their times
    std::deque<nxExchangeEvent> _events;  // likewise
    std::map<long long, Expiry> _expiries;
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

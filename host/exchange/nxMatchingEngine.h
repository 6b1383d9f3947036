#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "host/exchange/nxAnswerLine.h"
#include "host/exchange/nxBracket.h"
#include "host/exchange/nxExchangeBook.h"
#include "host/exchange/nxExchangeObserver.h"
#include "host/exchange/nxOrderChecks.h"
#include "host/exchange/nxOrderExpiries.h"
#include "host/exchange/nxOrderGate.h"
#include "host/exchange/nxVenue.h"

// The lives of the orders at a simulated exchange, from their arrival on: pending until then; rejected, or
// working; held while it is a stop that waits or waits for the opening; partially filled; and in the end
// filled or deleted. docs/exchange.md tells it in full. Used on the run's thread.
class nxMatchingEngine : private nxBookListener
{
public:
    struct Options
    {
        nxBookRules rules;
        unsigned long long seed;     // of an iceberg's peaks
        unsigned int participation;  // hundredths of a bar's volume; 0: all that is wanted
        bool reportsQueue;           // tell each move in a queue
        double impact;               // see nxExchangeOptions
    };

    // Answers and observers outlive it.
    nxMatchingEngine(const Options& options, nxAnswerLine& answers, const nxExchangeObservers& observers);

    // The number by which orders name it, from 0.
    unsigned int AddProduct(const nxVenue::Product& product);
    void SetTickSize(unsigned int product, const nxDecimal& tickSize)
    {
        _markets[product]->product.tickSize = tickSize;
        _markets[product]->book.SetTickSize(tickSize);
    }
    void SetGate(nxOrderGate& gate) { _gate = &gate; }
    const nxMarketProduct& GetMarket(unsigned int product) const
    {
        return *_markets[product]->product.market;
    }
    nxLateTrades GetLateTrades() const;
    const nxExchangeBook& GetBook(unsigned int product) const { return _markets[product]->book; }

    nxOrderPool& GetOrders() { return _orders; }
    const nxOrderPool& GetOrders() const { return _orders; }
    // What a new order is, before it arrives.
    void Describe(unsigned int id, const nxOrderKind& kind, const nxOrderTerms& terms);

    // The time at the exchange, which never goes back.
    long long GetTime() const { return _time; }
    void AdvanceTo(long long time) { _time = std::max(_time, time); }
    // Requests as they arrive, at that time.
    void Place(unsigned int id);
    void Amend(unsigned int id, const nxOrderTerms& changes);
    void Cancel(unsigned int id);
    // Of an IOC order at the end of a run.
    void TakeAtOnce(unsigned int id, long long time);
    // When orders end next by their dates; nxTime::Never for none.
    long long GetNextExpiry() const { return _expiries.GetNextTime(); }
    void Expire();

    // What the market did, after it shows it. While a market is closed nothing is filled in it; once it opens
    // it begins with the next event of its data, until when orders are held, since what is shown is from
    // before.
    void OnEvent(unsigned int product, const nxFeedEvent& event);
    void OnOpen(unsigned int product, long long time);
    void OnClose(unsigned int product, long long time);
    // For a product that goes on at other prices: it opens anew with its next event.
    void EndOrders(unsigned int product, const char* reason, long long time);
    // Takes what the market shows already, of one that was open before the engine was there.
    void Join(unsigned int product, long long time);

private:
    struct Market
    {
        Market(const nxVenue::Product& which, unsigned int index, const Options& options,
               nxExactRandom& random, nxBookListener& listener)
            : product(which),
              number(index),
              book(*which.market, which.tickSize, options.rules, random, listener)
        {
        }

        nxVenue::Product product;
        unsigned int number;
        nxExchangeBook book;
        bool isOpen = false;
        bool opens = false;                        // with the next event of its data
        std::vector<nxExchangeOrder*> opening;     // orders that wait for that
        std::vector<nxExchangeOrder*> immediates;  // of bars, until the next one
        std::vector<unsigned int> dayless;         // of bars: for the day in which their next one will lie

        // Whether orders are held until the market has opened and its data have shown it.
        bool Holds() const { return opens || !isOpen; }
    };
    using Refusal = nxOrderChecks::Refusal;
    // What is left to do about a fill once the book is done: children of a bracket, or the change of a
    // sibling.
    struct Consequence
    {
        unsigned int order;
        nxBracket::Fill fill;
    };

    // complete(event) adds what the order does not tell.
    template <class Complete>
    void _Tell(const nxExchangeOrder& order, nxExchangeEvent::Kind kind, Complete complete);
    void _Tell(const nxExchangeOrder& order, nxExchangeEvent::Kind kind, const char* reason = "");
    void _TellRefusal(const nxExchangeOrder& order, nxExchangeEvent::Kind kind, Refusal refusal);
    void _Arrive(nxExchangeOrder& order);
    void _Amend(nxExchangeOrder& order, const nxOrderTerms& changes);
    Refusal _FindObstacle(const nxExchangeOrder& order) const;
    Refusal _FindOwnTrade(const nxExchangeOrder& order) const;
    Refusal _SetTrail(nxExchangeOrder& order) const;
    void _SetExpiry(nxExchangeOrder& order);
    void _SetDays(Market& market, long long barEnd);
    void _Enter(nxExchangeOrder& order);
    void _Start(nxExchangeOrder& order);
    void _End(nxExchangeOrder& order, std::string_view reason, bool isRequested = false,
              nxErrorEnum error = {});
    void _OnQuote(Market& market, const nxFeedQuote& quote, long long time);
    void _OnDepth(Market& market, std::span<const nxFeedLevel> levels, long long time);
    void _OnBar(Market& market, const nxFeedBar& bar, long long time);
    void _ShowMarket(const Market& market, const nxTraded* traded, long long time);
    void _EnterOpening(Market& market);
    void _EndImmediates(Market& market, long long time);
    void _Settle();
    void _AddChild(const nxExchangeOrder& parent, const nxBracket::Fill& fill, bool isStop);

    nxDecimal _GetImpact(const nxExchangeOrder& order, const nxDecimal& price, unsigned int volume) const;
    void OnFill(nxExchangeOrder& order, const nxDecimal& price, unsigned int volume, bool isMaker,
                nxFillCause cause) override;
    void OnTriggered(nxExchangeOrder& order) override;
    void OnQueueMoved(nxExchangeOrder& order, const nxVolume& before, nxQueueMove move) override;
    void OnSelfTrade(nxExchangeOrder& order, const nxExchangeOrder& other) override;

    const Options _options;
    nxAnswerLine& _answers;
    const nxExchangeObservers& _observers;
    nxOrderGate* _gate = nullptr;  // none: all may pass
    nxExactRandom _peakRandom;
    std::vector<std::unique_ptr<Market>> _markets;
    nxOrderPool _orders;
    nxOrderExpiries _expiries{_orders};
    std::vector<Consequence> _consequences;
    long long _time = 0;
};

template <class Complete>
void nxMatchingEngine::_Tell(const nxExchangeOrder& order, nxExchangeEvent::Kind kind, Complete complete)
{
    nxExchangeEvent& event = _answers.Send(order, kind, _time);
    complete(event);
    for (nxExchangeObserver* observer : _observers)
        observer->OnEvent(order, event, GetMarket(order.kind.product));
}

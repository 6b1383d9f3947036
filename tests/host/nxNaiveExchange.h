#pragma once

#include <deque>
#include <map>
#include <string>
#include <vector>

#include "host/exchange/nxSimulatedExchange.h"

// The rules of docs/exchange.md once more, written from that page alone, as plainly and slowly as can be: to
// run beside the real exchange. One product, whole prices, constant latencies, one line of orders that is
// searched from its begin for everything, and a queue as a row of single lots. It shares the plain structs of
// host/exchange and none of the code that decides; so it leaves requests alone that make no sense.
class nxNaiveExchange
{
public:
    struct Order : nxExchangeOrder
    {
        bool waitsForOpening = false;

        bool IsFok() const { return kind.execution == nxOrderExecution::FillOrKill; }
        bool IsForNow() const { return kind.IsImmediate() || kind.duration == nxOrderDuration::Open; }
        bool EndsWithDay() const
        {
            return kind.duration == nxOrderDuration::Day || kind.duration == nxOrderDuration::PreOpen;
        }
        bool Reaches(const nxDecimal& price) const
        {
            return kind.isMarket || !nxIsBetter(kind.side, price, terms.price);
        }
    };

    // Of a product with hours; it opens when it is told to.
    static constexpr long long Closing = 17 * nxTime::NanosecondsPerDay / 24;

    nxNaiveExchange(const nxExchangeOptions& options, const nxVenue::Product& product)
        : _options(options), _product(product)
    {
    }

    void Submit(const nxOrderKind& kind, const nxOrderTerms& terms, long long now);
    void Send(nxOrderRequest kind, unsigned int id, const nxOrderTerms& changes, long long now);
    // Carries out what is due by then; what ends by its date only up to the second time.
    void Advance(long long time, long long lastEnd);
    void OnQuote(const nxFeedQuote& row, long long time);
    void OnDepth(const std::vector<nxFeedLevel>& levels, long long time);
    void OnBar(const nxFeedBar& bar, long long time);
    void OnOpen(long long time);
    void OnClose(long long time);
    // The orders come to a market that has been open for a while.
    void Join(long long time);

    const Order& Get(unsigned int id) const { return _orders[id - 1]; }
    unsigned int GetCount() const { return static_cast<unsigned int>(_orders.size()); }
    const std::vector<unsigned int>& GetLine() const { return _line; }

    std::vector<nxExchangeEvent> told;

private:
    using Kind = nxExchangeEvent::Kind;
    using Volumes = std::map<nxDecimal, nxVolume>;
    struct Request
    {
        nxOrderRequest kind;
        unsigned int order;
        nxOrderTerms terms;
        long long due;
    };
    // Of the recorded market. What trades and orders took of it goes down to what is shown.
    struct Shown
    {
        nxVolume volume;  // null: any
        unsigned int taken = 0;
        unsigned int gone = 0;  // traded

        unsigned int GetWithout(unsigned int lots) const
        {
            return volume.GetValue() - std::min(volume.GetValue(), lots);
        }
    };
    struct Late  // lots that left a price, for a trade that is recorded late
    {
        unsigned int gone = 0;
        long long time = 0;
    };
    struct Fill
    {
        unsigned int order;
        nxDecimal price;
        unsigned int volume;
    };

    Order& _Of(unsigned int id) { return _orders[id - 1]; }
    Order& _Add(const Order& order);
    std::vector<unsigned int> _Copy(bool (*is)(const Order&)) const;
    void _ToTheEnd(unsigned int id);
    nxExchangeEvent& _Tell(Kind kind, const Order& order, const std::string& reason = {});
    void _End(Order& order, const std::string& reason, bool isRequested = false);
    void _EndForNow(Order& order);
    void _Fill(Order& order, const nxDecimal& price, unsigned int volume, bool isMaker, nxFillCause cause);
    void _Settle();
    void _MakeChildren(const Order& parent, const nxDecimal& price, unsigned int volume);

    void _DoNew(Order& order);
    void _DoAmend(Order& order, const nxOrderTerms& changes);
    std::string _FindRefusal(const Order& order, const nxOrderTerms& given, bool isNew, bool enters) const;
    void _SetEnd(Order& order);
    long long _GetDayEnd(long long time) const;

    bool _IsHeldNow() const { return !_isOpen || _isFresh; }
    void _Arrive(Order& order);
    void _Enter(Order& order);
    void _Take(Order& order);
    void _TakeAll(Order& order);
    bool _Meets(const Order& order, const Order& own) const;
    unsigned int _FindOwn(const Order& order, bool evenIfProtected) const;
    unsigned int _FindMet(const Order& order) const;
    unsigned long long _CountFree(const Order& order, unsigned int upTo) const;
    unsigned long long _CountForFok(const Order& order) const;
    void _MeetOwn(Order& own, Order& order);
    bool _IsProtected(const Order& order) const;

    bool _IsTouch() const { return _options.fills->rule.fillsWhole; }
    nxDecimal _Move(nxSide side, const nxDecimal& price, long long ticks) const;
    nxVolume _GetLeft(nxSide side, const nxDecimal& price) const;
    unsigned int _GetFree(nxSide side, const nxDecimal& price) const;
    unsigned int _GetAssumed(nxSide side, const nxDecimal& price) const;
    bool _Assumes(nxSide side) const;
    nxDecimal _GetBest(nxSide side) const;
    nxDecimal _FindBestFree(const Order& order, bool& isAssumed) const;
    nxDecimal _GetMarketPrice(nxSide side) const;
    std::vector<nxDecimal> _GetPrices(nxSide side) const;
    std::vector<unsigned int> _GetIdsAt(nxSide side, const nxDecimal& price) const;
    Volumes _See(nxSide side) const;
    void _Show(nxSide side, const nxDecimal& price, const nxVolume& volume);
    void _MoveQueues(nxSide side, const Volumes& before);
    void _MoveQueue(nxSide side, const nxDecimal& price, const nxVolume& was, unsigned int is);
    unsigned int _GetAdvance(unsigned int ahead, unsigned int shown, unsigned int cancelled) const;
    void _StandAtTheEnd(Order& order);
    void _ForgetLate();

    bool _ShowRow(nxSide side, const nxDecimal& price, const nxVolume& volume, bool isTrade);
    void _Trade(const nxFeedQuote& trade);
    unsigned int _PutBack(nxSide side, const nxDecimal& price, unsigned int volume);
    void _TakeFromQueue(nxSide side, const nxDecimal& price, unsigned int traded, unsigned int putBack,
                        unsigned int budget);
    void _Act(const nxBySide<bool>& isAnew, bool isTrade);
    void _Sweep(nxSide side, const nxDecimal& price, unsigned int& budget, nxFillCause cause);
    bool _Serve(Order& order, const nxDecimal& price, unsigned int& budget, nxFillCause cause);
    bool _Renew(Order& order);
    void _Meet(nxSide side);
    void _TryStop(Order& order);
    void _Trigger(Order& order);
    void _OpenWaiting();

    void _MeetInTurn(const nxFeedBar& bar, long long after, long long until);
    void _BarFill(Order& order, const nxDecimal& price, bool isMaker);
    void _MeetBar(Order& order, const nxFeedBar& bar);
    void _MeetBarAsStop(Order& order, const nxFeedBar& bar);

    const nxExchangeOptions _options;
    const nxVenue::Product _product;
    std::deque<Order> _orders;
    std::vector<unsigned int> _line;  // of those that live, in the order of their places
    std::deque<Request> _requests;
    std::deque<Fill> _fills;  // to be settled
    long long _now = 0;

    bool _isOpen = false, _isFresh = true, _hasDepth = false;
    nxBySide<std::map<nxDecimal, Shown>> _shown, _assumed;
    nxBySide<unsigned long long> _sizes, _rows;
    nxBySide<nxDecimal> _quoted;  // what the rows gave last, of data with depth too
    nxBySide<nxVolume> _quotedSize;
    nxBySide<std::map<nxDecimal, Late>> _late;
    nxBySide<nxDecimal> _tradedTo;  // beyond the best price, since it was shown
    nxDecimal _last;
    nxBySide<Volumes> _closed;  // what own orders saw last before the close

    unsigned int _barBudget = 0;
    long long _lastBar = 0;
};

#pragma once

#include <deque>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "host/exchange/nxExchangeEvent.h"

// The rules of docs/exchange.md once more, written from that page alone, as plainly and slowly as can be: to
// run beside the real exchange. One product, whole prices, constant latencies, one line of orders that is
// searched from its begin for everything, and a queue as a row of single lots. It shares no code with
// host/exchange but the words: kinds of events, executions, durations.
class nxNaiveExchange
{
public:
    using Price = std::optional<int>;
    using Volume = std::optional<unsigned int>;
    enum class Fills { Touch, Cross, Queue };
    enum class Queue { Even, Back, Power };
    enum class SelfTrade { CancelNewest, CancelOldest, Refuse, Meet };
    enum class Beyond { Walk, Wait };
    // As nxFillCause, and what was taken of the assumed book.
    enum class Cause { Took, Touched, TradedThrough, Queue, Crossed, Bar, OwnOrder, Assumed };
    enum class Status { Pending, Working, Partial, Held, Deleted, Filled, Rejected };

    struct Options
    {
        Fills fills = Fills::Queue;
        Queue queue = Queue::Even;
        unsigned int power = 3;
        long long requestLatency = 0, answerLatency = 0;
        unsigned int participation = 0;
        int tick = 1;
        bool hasBars = false;
        long long barPeriod = 0;  // 0: not known
        long long open = 0,
                  day = 0;  // of the hours of each day: its opening, and how long it is; 0: no hours
        SelfTrade selfTrade = SelfTrade::Meet;
        Beyond beyond = Beyond::Wait;
        long long lateTrades = 0;
    };
    struct Terms
    {
        Volume volume;
        Price price, stop;
        Volume minPeak, maxPeak, threshold, profit, stopLoss, stopLimit;
        std::optional<bool> stopIsLimit, stopTrails;
        std::optional<long long> lastDay;  // since 1970
    };
    struct Order
    {
        unsigned int id = 0, owner = 0;
        bool isBuy = true, isMarket = false, isProtected = false;
        nxOrderExecution execution = nxOrderExecution::None;
        nxOrderDuration duration = nxOrderDuration::Day;
        Terms terms;

        Status status = Status::Pending;
        unsigned int executed = 0, sibling = 0, displayed = 0, part = 0;
        int trail = 0;
        long long arrived = 0, ends = nxTime::Never;
        bool isStopWaiting = false, waitsForOpening = false, isChild = false, rests = false;
        Volume ahead;

        unsigned int GetRest() const { return *terms.volume - executed; }
        bool IsAlive() const
        {
            return status == Status::Working || status == Status::Partial || status == Status::Held;
        }
        bool IsStop() const
        {
            return execution == nxOrderExecution::Stop || execution == nxOrderExecution::TrailingStop;
        }
        bool IsFok() const { return execution == nxOrderExecution::FillOrKill; }
        bool IsForNow() const
        {
            return IsFok() || execution == nxOrderExecution::ImmediateOrCancel ||
                   duration == nxOrderDuration::Open;
        }
        bool Reaches(int price) const
        {
            return isMarket || (isBuy ? price <= *terms.price : price >= *terms.price);
        }
    };
    struct Event
    {
        nxExchangeEvent::Kind kind{};
        unsigned int order = 0, owner = 0;
        long long time = 0, due = 0;
        Status status{};
        Price price, stop;
        unsigned int volume = 0, executed = 0;
        Price fillPrice;
        unsigned int fillVolume = 0;
        bool isMaker = false;
        Cause cause{};
        bool isRequested = false;
        std::string reason;

        bool operator==(const Event&) const = default;
    };
    // What a row leaves out is not given.
    struct Row
    {
        Price price[2];  // asks, bids
        Volume volume[2];
        bool isTrade = false;
        Price last;
        Volume traded;
        int side = 0;  // of the trade: 1 a buyer's, -1 a seller's, 0 not known
    };
    struct Level
    {
        bool isBid = true;
        int price = 0;
        unsigned int volume = 0;
    };
    struct Bar
    {
        int open = 0, high = 0, low = 0, close = 0;
        Volume volume;
    };

    explicit nxNaiveExchange(const Options& options) : _options(options) {}

    unsigned int Submit(Order order, long long now);
    void Amend(unsigned int id, const Terms& changes, long long now);
    void Cancel(unsigned int id, long long now);
    // Carries out what is due by then; what ends by its date only up to the second time.
    void Advance(long long time, long long lastEnd);
    void OnQuote(const Row& row, long long time);
    void OnDepth(const std::vector<Level>& levels, long long time);
    void OnBar(const Bar& bar, long long time);
    void OnOpen(long long time);
    void OnClose(long long time);
    // The orders come to a market that has been open for a while.
    void Join();

    const Order& Get(unsigned int id) const { return _orders[id - 1]; }
    unsigned int GetCount() const { return static_cast<unsigned int>(_orders.size()); }
    const std::vector<unsigned int>& GetLine() const { return _line; }

    std::vector<Event> told;

private:
    using Kind = nxExchangeEvent::Kind;
    struct Request
    {
        char kind;  // New, Amend, Cancel
        unsigned int order;
        Terms terms;
        long long due;
    };
    // Of the recorded market. What trades and orders took of it goes down to what is shown.
    struct Shown
    {
        Volume volume;  // not given: any
        unsigned int taken = 0;
        unsigned int gone = 0;  // traded
        bool isGone = false;    // all of it
    };
    struct Late  // lots that left a price, for a trade that is recorded late
    {
        unsigned int gone = 0;
        long long time = 0;
    };
    struct Fill
    {
        unsigned int order;
        int price;
        unsigned int volume;
    };

    Order& _Of(unsigned int id) { return _orders[id - 1]; }
    std::vector<unsigned int> _Copy(bool (*is)(const Order&)) const;
    void _ToTheEnd(unsigned int id);
    void _Tell(Kind kind, const Order& order, const std::string& reason = {}, bool isRequested = false);
    void _End(Order& order, const std::string& reason, bool isRequested = false);
    void _Fill(Order& order, int price, unsigned int volume, bool isMaker, Cause cause);
    void _Settle();
    void _MakeChildren(const Order& parent, int price, unsigned int volume);

    void _DoNew(Order& order);
    void _DoAmend(Order& order, const Terms& changes);
    std::string _FindFault(const Order& order, const Terms& given) const;
    std::string _FindRefusal(const Order& order, const Terms& given, bool isNew, bool enters) const;
    void _SetEnd(Order& order);
    long long _GetDayEnd(long long time) const;

    bool _IsHeldNow() const { return !_isOpen || _isFresh; }
    void _Arrive(unsigned int id);
    void _Enter(unsigned int id);
    void _Take(unsigned int id);
    void _TakeAll(unsigned int id);
    unsigned int _CountForFok(const Order& order) const;
    unsigned int _FindOwn(const Order& order, bool evenIfProtected) const;
    unsigned int _FindMet(const Order& order) const;
    Price _FindBestFree(const Order& order, bool& isAssumed) const;
    void _MeetOwn(Order& own, Order& order);
    bool _IsProtected(const Order& order) const
    {
        return order.isProtected || _options.selfTrade == SelfTrade::Refuse;
    }

    Volume _GetLeft(bool bids, int price) const;
    unsigned int _GetFree(bool bids, int price) const;
    unsigned int _GetAssumed(bool bids, int price) const;
    Price _GetBest(bool bids) const;
    Price _GetMarketPrice(bool isBuy) const;
    std::vector<int> _GetPrices(bool buys) const;
    std::vector<unsigned int> _GetIdsAt(bool buys, int price) const;
    void _Show(bool bids, int price, const Volume& volume);
    void _ShowBest(bool bids, int price, const Volume& volume);
    void _MoveQueues(bool bids, const std::map<int, Volume>& before);
    unsigned int _GetAdvance(unsigned int ahead, unsigned int shown, unsigned int cancelled) const;
    void _LookAnew();
    unsigned int _GetLate(const Order& order) const;
    void _ForgetLate();

    void _Trade(int price, const Volume& volume, int side);
    unsigned int _PutBack(bool buys, int price, unsigned int volume);
    void _TakeFromQueue(bool buys, int price, unsigned int traded, unsigned int putBack,
                        unsigned int& budget);
    void _Act(bool asksAnew, bool bidsAnew, bool isTrade);
    void _Sweep(bool buys, int price, unsigned int& budget, bool isWhole, Cause cause);
    bool _Serve(unsigned int id, int price, unsigned int& budget, bool isWhole, Cause cause);
    bool _Renew(Order& order);
    void _Meet(bool buys);
    void _TryStops();
    void _TryStop(unsigned int id);
    void _Trigger(Order& order);
    void _OpenWaiting();

    void _MeetInTurn(const Bar& bar, long long after, long long until);
    void _BarFill(Order& order, int price, bool isMaker);
    void _MeetBar(Order& order, const Bar& bar);
    void _MeetBarAsStop(Order& order, const Bar& bar);

    const Options _options;
    std::vector<Order> _orders;
    std::vector<unsigned int> _line;  // of those that live, in the order of their places
    std::deque<Request> _requests;
    std::deque<Fill> _fills;  // to be settled
    long long _now = 0;

    bool _isOpen = false, _isFresh = true, _hasDepth = false;
    std::map<int, Shown> _shown[2];  // asks, bids
    std::map<int, Shown> _assumed[2];
    unsigned long long _sizes[2] = {}, _rows[2] = {};
    Price _quoted[2];  // what the rows gave last, of data with depth too
    Volume _quotedSize[2];
    std::map<int, Late> _late[2];
    Price _tradedTo[2];  // beyond the best price, since it was shown
    Price _last;
    std::map<int, Volume> _closed[2];  // what own orders saw last before the close

    unsigned int _barBudget = 0;
    long long _lastBar = 0;
};

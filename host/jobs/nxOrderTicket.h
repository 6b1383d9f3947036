#pragma once

#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "base/records/nxOrder.h"
#include "base/values/nxExactAmount.h"
#include "base/values/nxSharedText.h"
#include "host/exchange/nxExchangeEvent.h"
#include "host/exchange/nxExchangeOrder.h"

// One order: what was asked of the exchange, and what its answers have told so far, which with latency is not
// yet all that happened there. Knows of no script and no job; used on the run's thread.
//
// An order has its number from the beginning, and is nothing the exchange knows of until it is sent. A script
// may keep one to the end of the run, and a run may make millions, so a ticket that is over keeps what can
// still be asked, in few bytes; what only a living one needs is freed with its end.
class nxOrderTicket
{
public:
    static constexpr long long NoTime = std::numeric_limits<long long>::min();

    struct Iceberg
    {
        nxVolume minPeak, maxPeak, threshold;
    };
    struct Bracket
    {
        nxVolume profit, stopLoss, stopLimit;
        bool stopIsLimit = false;
        bool stopTrails = false;
    };
    // The words of an order in a strategy; kept for those who read them.
    struct Spread
    {
        nxSharedText legs, instance;
    };

    nxOrderTicket(const nxOrderKind& kind, unsigned int id);
    // A bracket's child, of which the exchange told: it is sent already.
    nxOrderTicket(const nxExchangeOrder& child, const nxOrderTicket& parent);

    // Before it is sent.
    void SetSpread(const std::string& legs, const std::string& instance);

    // Null when something can be asked of the order, or why nothing can be any more.
    const char* FindEnd() const;
    // What it is for its whole life, while it lives.
    const nxOrderKind& GetKind() const { return _live->kind; }
    // What it will be when all that is on its way is carried out, and `changes` after that.
    nxOrderTerms GetWanted(const nxOrderTerms& changes) const;
    // What was asked: a new order, a change of its terms, its end.
    void Send(const nxOrderTerms& terms);
    void Amend(const nxOrderTerms& changes) { _live->amends.push_back(changes); }
    void Pull() { _live->isCancelPending = _live->isPullUnanswered = true; }
    // Takes over what the exchange tells. True: the order is over, and nothing more is told of it.
    [[nodiscard]] bool Apply(const nxExchangeEvent& event);

    unsigned int GetID() const { return _id; }
    unsigned int GetParent() const { return _parent; }  // number of a bracket's order; 0: none
    nxSide GetSide() const { return _side; }
    bool IsMarket() const { return _isMarket; }
    nxOrderExecution GetExecution() const { return _execution; }
    nxOrderDuration GetDuration() const { return _duration; }
    const Spread& GetSpread() const;
    const nxDecimal& GetPrice() const { return _price; }
    unsigned int GetVolume() const { return _volume; }
    // Null where the order is of a kind that has none.
    nxDecimal GetStopPrice() const;
    Iceberg GetIceberg() const;
    Bracket GetBracket() const;

    bool IsSent() const { return _isSent; }
    // Sent, and not known to be over.
    bool IsOpen() const;
    nxOrderStatusEnum GetStatus() const { return nxOrderStatusEnum(_status); }
    bool IsAmendPending() const { return _live != nullptr && !_live->amends.empty(); }
    bool IsCancelPending() const { return _live != nullptr && _live->isCancelPending; }
    unsigned int GetExecuted() const { return _executed; }
    unsigned int GetWorking() const { return GetStatus().IsWorkingOrder() ? _volume - _executed : 0; }
    // Null until there was a fill.
    const nxDecimal& GetAveragePrice() const { return _averagePrice; }
    // In nanoseconds since 1970, or NoTime: when the exchange filled it last, when the latest event was told.
    long long GetLastFillTime() const { return _lastFillTime; }
    long long GetLastUpdateTime() const { return _lastUpdateTime; }
    // Of the latest event.
    bool IsLastFill() const { return _lastIsFill; }
    nxErrorEnum GetLastError() const { return nxErrorEnum(_lastError); }
    // Without names and texts.
    std::shared_ptr<const nxOrder> MakeRecord() const;

private:
    // What an order needs as long as something can become of it.
    struct Live
    {
        nxOrderKind kind;
        nxOrderTerms terms;                // as known to hold, or, before the answer, as first sent
        std::vector<nxOrderTerms> amends;  // on their way
        bool isCancelPending = false;
        bool isPullUnanswered = false;  // also once something else has ended the order
        nxExactAmount filled;           // prices times volumes
    };
    // What an order of one execution has and no other. The execution tells which it is.
    union Special {
        Special(const nxDecimal& of = {}) : stopPrice(of) {}
        Special(const Iceberg& of) : iceberg(of) {}
        Special(const Bracket& of) : bracket(of) {}

        nxDecimal stopPrice;
        Iceberg iceberg;
        Bracket bracket;
    };

    void _SetTerms(const nxOrderTerms& terms);
    void _AddFill(const nxExchangeEvent& event);

    std::unique_ptr<Live> _live;      // null once it is over
    std::unique_ptr<Spread> _spread;  // null where there is none
    long long _lastFillTime = NoTime;
    long long _lastUpdateTime = NoTime;
    Special _special;
    // What comes after a decimal fills the bytes that it leaves: see the size that the source asserts.
    [[no_unique_address]] nxDecimal _price;
    unsigned short _status = nxOrderStatus_Pending;
    unsigned int _volume = 0;
    [[no_unique_address]] nxDecimal _averagePrice;
    nxSide _side;
    nxOrderExecution _execution;
    unsigned int _executed = 0;
    unsigned int _id;
    unsigned int _parent = 0;
    unsigned int _lastError = 0;
    nxOrderDuration _duration;
    bool _isMarket;
    bool _isSent = false;
    bool _lastIsFill = false;
};

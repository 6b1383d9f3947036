#pragma once

#include <limits>
#include <optional>
#include <string>

#include "base/enums/nxOrderStatusEnum.h"
#include "base/time/nxDateTime.h"
#include "base/time/nxTime.h"
#include "base/values/nxDecimal.h"
#include "base/values/nxValueWrapper.h"
#include "host/feed/nxSide.h"

enum class nxOrderExecution : unsigned char {
    None,
    ImmediateOrCancel,
    FillOrKill,
    Stop,
    Iceberg,
    TrailingStop,
    Bracket
};
enum class nxOrderDuration : unsigned char {
    Day,
    Date,
    Cancelled,
    Open,
    PreOpen
};  // GFD, GTD, GTC, OPEN, PREOPEN

// In createOrder's vocabulary; "" for none.
const char* nxGetText(nxOrderExecution execution);
const char* nxGetText(nxOrderDuration duration);
// False: there is no such text.
[[nodiscard]] bool nxSetFromText(const std::string& text, nxOrderExecution& execution);
[[nodiscard]] bool nxSetFromText(const std::string& text, nxOrderDuration& duration);

// What an order is for its whole life.
struct nxOrderKind
{
    unsigned int product = 0;  // the exchange's number of it
    unsigned int owner = 0;    // who is told of its events; any number of the host
    nxSide side = nxSide::Buy;
    bool isMarket = false;
    nxOrderExecution execution = nxOrderExecution::None;
    nxOrderDuration duration = nxOrderDuration::Day;
    // Not to be filled against another order of the same owner.
    bool crossProtected = false;

    bool IsStop() const
    {
        return execution == nxOrderExecution::Stop || execution == nxOrderExecution::TrailingStop;
    }
    // Takes what it can have on arrival, and ends.
    bool IsImmediate() const
    {
        return execution == nxOrderExecution::ImmediateOrCancel || execution == nxOrderExecution::FillOrKill;
    }
    // May be sent while the market is closed, and waits.
    bool IsForOpening() const
    {
        return duration == nxOrderDuration::Open || duration == nxOrderDuration::PreOpen;
    }
};

constexpr const char* nxGetTypeText(bool isMarket)
{
    return isMarket ? "MARKET" : "LIMIT";
}

// What a request may set. No-change in a field leaves it as it is; a new order starts from null.
struct nxOrderTerms
{
    nxVolume volume;
    nxDecimal price;
    nxDecimal stopPrice;
    nxVolume icebergMinPeak, icebergMaxPeak, icebergThreshold;
    nxVolume bracketProfit, bracketStopLoss;  // ticks from the price of the fill
    std::optional<bool> bracketStopIsLimit;   // not given: no change, and not so in a new order
    nxVolume bracketStopLimit;                // ticks behind the stop price, for a limit
    std::optional<bool> bracketStopTrails;
    nxDateTime expiry;  // the last day of an order with a date

    // Every field at no-change.
    static nxOrderTerms MakeNoChange();
    // Takes over what `changes` gives.
    void Merge(const nxOrderTerms& changes);
    static unsigned int GetOr(const nxVolume& field, unsigned int fallback)
    {
        return field.IsValid() ? field.GetValue() : fallback;
    }
};

// An order as the exchange knows it. Owned by nxSimulatedExchange, whose orders stay where they are.
struct nxExchangeOrder
{
    unsigned int id = 0;
    unsigned int parent = 0;   // of a bracket's child; 0: none
    unsigned int sibling = 0;  // the other child: what one executes the other gives up
    nxOrderKind kind;
    nxOrderTerms terms;
    nxOrderStatusEnum status{nxOrderStatus_Pending};
    unsigned int executed = 0;
    long long arrived = 0;  // it, or the latest change that cost it its place
    long long expires = nxTime::Never;

    // The recorded volume in front of it at its price. Null: not known, since the level is not shown.
    nxVolume ahead;
    unsigned int movedUp = 0;    // of that, for cancellations that a late trade may explain
    unsigned int displayed = 0;  // of an iceberg's current peak
    nxDecimal trailDistance;
    bool triggered = true;  // false: a stop that waits
    bool isResting = false;

    unsigned int GetRemaining() const { return nxOrderTerms::GetOr(terms.volume, executed) - executed; }
    bool IsAlive() const { return status.IsWorkingOrder(); }
    // A limit that the market has to reach; none for a market order.
    bool IsWithin(const nxDecimal& price) const
    {
        return kind.isMarket || !nxIsBetter(kind.side, price, terms.price);
    }
};

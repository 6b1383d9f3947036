#pragma once

#include <string>

#include "base/enums/nxErrorEnum.h"
#include "host/exchange/nxExchangeOrder.h"

// Whether an order makes sense. docs/exchange.md lists the texts, which scripts see.
namespace nxOrderChecks {

struct Refusal
{
    nxErrorEnum error;
    std::string text;  // empty: none
};

// Why an order with these terms makes no sense; null when it does. What depends on the market's state is only
// known on arrival.
const char* FindFault(const nxOrderKind& kind, const nxOrderTerms& terms);

// Why the order cannot be as its terms say now, `given` being those that the request names; empty when it
// can. A null tick: any price will do.
Refusal FindRefusal(const nxExchangeOrder& order, const nxOrderTerms& given, const nxDecimal& tick,
                    long long now);

// Why nothing can be done to an order any more; empty while it is alive.
Refusal FindEnd(const nxExchangeOrder& order);

// Why an order cannot be in the market with that other one of its owner.
Refusal GetSelfTrade(unsigned int other);

// Why an IOC, FOK or OPEN order ends that is not filled.
const char* GetEndOfImmediate(const nxExchangeOrder& order);

}  // namespace nxOrderChecks

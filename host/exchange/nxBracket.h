#pragma once

#include "host/exchange/nxExchangeOrder.h"

// The children of a bracket's order.
namespace nxBracket {

struct Fill
{
    nxDecimal price;
    unsigned int volume = 0;
};

bool HasStop(const nxExchangeOrder& parent);
bool HasProfit(const nxExchangeOrder& parent);
// Fills in what a child is, all but its number and its times. A null tick counts as 1.
void MakeStop(nxExchangeOrder& child, const nxExchangeOrder& parent, const Fill& fill, const nxDecimal& tick);
void MakeProfit(nxExchangeOrder& child, const nxExchangeOrder& parent, const Fill& fill,
                const nxDecimal& tick);

}  // namespace nxBracket

#pragma once

#include "base/enums/nxBuySellEnum.h"
#include "base/values/nxDecimal.h"

// The side of an order, and of the book in which it rests: buys are bids, sells are asks.
enum class nxSide : unsigned char { Buy, Sell };

inline constexpr nxSide nxSides[] = {nxSide::Buy, nxSide::Sell};

// A value for each side.
template <class Value>
struct nxBySide
{
    Value buy{};
    Value sell{};

    Value& operator[](nxSide side) { return side == nxSide::Buy ? buy : sell; }
    const Value& operator[](nxSide side) const { return side == nxSide::Buy ? buy : sell; }
};

constexpr nxSide nxGetOpposite(nxSide side)
{
    return side == nxSide::Buy ? nxSide::Sell : nxSide::Buy;
}

// As scripts name it.
constexpr const char* nxGetText(nxSide side)
{
    return side == nxSide::Buy ? "BUY" : "SELL";
}

// As the library names it.
constexpr unsigned int nxGetBuySell(nxSide side)
{
    return side == nxSide::Buy ? nxBuySell_Buy : nxBuySell_Sell;
}

// A higher bid, a lower ask: who offers it goes first in the book.
inline bool nxIsBetter(nxSide side, const nxDecimal& price, const nxDecimal& other)
{
    return side == nxSide::Buy ? price > other : price < other;
}

// As it is for a buy, its negative for a sell.
constexpr long long nxGetSigned(nxSide side, long long number)
{
    return side == nxSide::Buy ? number : -number;
}

#pragma once

#include "base/values/nxExactAmount.h"
#include "host/feed/nxSide.h"

// Lots of one product that one order opened and one order closed. A value; times are nanoseconds since 1970.
struct nxRoundTrip
{
    unsigned int product = 0;   // the exchange's number of it
    nxSide side = nxSide::Buy;  // of the entry: a buy is long
    unsigned long long volume = 0;
    long long entryTime = 0;  // of its first lot
    long long exitTime = 0;   // of its last
    double entryPrice = 0.0;  // weighted by volume
    double exitPrice = 0.0;
    nxExactAmount profit;  // less the fees
    nxExactAmount fees;    // its share of those of both orders
    // In money, without fees, 0 or more: the farthest that the market went against each of its lots, and for
    // it, from entry to exit.
    nxExactAmount mae;
    nxExactAmount mfe;
    bool hasExcursions = true;  // false: the marks in between are not known, nor are these two
    unsigned int entryOrder = 0;
    unsigned int exitOrder = 0;
};

// Which lots a fill closes: the oldest, or a share of all at their average price.
enum class nxMatching : unsigned char { Fifo, Average };

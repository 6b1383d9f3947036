#pragma once

#include <vector>

#include "host/results/nxRoundTrips.h"

// What some round trips come to. Sums of money are exact.
struct nxTripStatistics
{
    unsigned long long count = 0, wins = 0, losses = 0;  // wins: above 0; losses: below
    nxExactAmount profit, grossProfit, grossLoss;        // the last 0 or less
    nxExactAmount longProfit, shortProfit;
    nxExactAmount fees, mae, mfe;
    unsigned long long withExcursions = 0;  // whose adverse and favourable excursions are known
    nxExactAmount largestWin, largestLoss;
    double holding = 0.0, winHolding = 0.0, lossHolding = 0.0;  // sums of seconds
    double longestHolding = 0.0;
    unsigned long long winStreak = 0, lossStreak = 0;  // the longest, in the order of the trips

    nxTripStatistics() = default;
    explicit nxTripStatistics(const nxRoundTrips& trips);

    void Add(const nxRoundTrip& trip);

private:
    unsigned long long _winsInRow = 0, _lossesInRow = 0;
};

#include "host/results/nxTripStatistics.h"

#include <algorithm>

#include "base/time/nxTime.h"

nxTripStatistics::nxTripStatistics(const nxRoundTrips& trips)
{
    for (const nxRoundTrip& trip : trips)
        Add(trip);
}

void nxTripStatistics::Add(const nxRoundTrip& trip)
{
    const double seconds = static_cast<double>(trip.exitTime - trip.entryTime) / nxTime::NanosecondsPerSecond;
    ++count;
    profit += trip.profit;
    (trip.side == nxSide::Buy ? longProfit : shortProfit) += trip.profit;
    fees += trip.fees;
    withExcursions += trip.hasExcursions ? 1 : 0;
    mae += trip.mae;
    mfe += trip.mfe;
    holding += seconds;
    longestHolding = std::max(longestHolding, seconds);
    const bool isLoss = trip.profit.IsNegative();
    const bool isWin = !isLoss && !trip.profit.IsZero();
    _winsInRow = isWin ? _winsInRow + 1 : 0;
    _lossesInRow = isLoss ? _lossesInRow + 1 : 0;
    winStreak = std::max(winStreak, _winsInRow);
    lossStreak = std::max(lossStreak, _lossesInRow);
    if (isWin) {
        ++wins;
        grossProfit += trip.profit;
        winHolding += seconds;
        if ((largestWin - trip.profit).IsNegative()) largestWin = trip.profit;
    } else if (isLoss) {
        ++losses;
        grossLoss += trip.profit;
        lossHolding += seconds;
        if ((trip.profit - largestLoss).IsNegative()) largestLoss = trip.profit;
    }
}

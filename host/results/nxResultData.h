#pragma once

#include <array>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "base/enums/nxCurrencyEnum.h"
#include "base/time/nxTime.h"
#include "host/results/nxBuckets.h"
#include "host/results/nxDrawdowns.h"
#include "host/results/nxRoundTrips.h"

// A UTC day with data; a bar that ends at midnight is of the day before.
struct nxResultDay
{
    long long day = 0;                                            // since 1970
    nxExactAmount profit;                                         // at its end, since the run began
    double benchmark = std::numeric_limits<double>::quiet_NaN();  // price at its end; not a number: unknown
};

// What fills were worth some time later, against what they were filled at.
struct nxMarkout
{
    static constexpr std::size_t Count = 4;
    static constexpr std::array<long long, Count> Horizons = {
        nxTime::NanosecondsPerSecond, 10 * nxTime::NanosecondsPerSecond, 60 * nxTime::NanosecondsPerSecond,
        600 * nxTime::NanosecondsPerSecond};

    nxExactAmount sum;              // above 0: the market went with the fills
    unsigned long long volume = 0;  // of fills of which that is known
    unsigned long long fills = 0;
};

// What measures of one job and currency are made of. Plain data, whoever fills it.
struct nxResultData
{
    std::optional<unsigned int> job;  // none: all jobs together
    nxCurrencyEnum currency;

    unsigned long long orders = 0;    // sent, with the children of brackets
    unsigned long long messages = 0;  // requests: new orders, amendments, pulls
    unsigned long long fills = 0;
    unsigned long long orderedVolume = 0;
    unsigned long long executedVolume = 0;
    // The same without what own orders traded with each other.
    unsigned long long volume = 0;
    unsigned long long makerVolume = 0;
    nxExactAmount profit;                   // of what is realised and what is open, less fees
    nxExactAmount fees;                     // negative: rebates won
    nxExactAmount turnover;                 // prices times volumes times point values
    nxExactAmount slippage;                 // above 0: a cost
    unsigned long long slippageVolume = 0;  // of fills of which it is known
    std::array<nxMarkout, nxMarkout::Count> markouts;
    long long openTime = 0;            // nanoseconds with a position
    nxRoundTrips trips;                // by their exits, those of one time as they were complete
    std::vector<nxResultDay> days;     // all of the run's
    nxBuckets<nxEquityBucket> equity;  // profits, in the order of their times
    nxDrawdowns drawdowns;
    std::optional<unsigned int> benchmark;  // the product of the days' prices: that of most turnover

    // Counts, sums and round trips of another job; what depends on time is not added up by them.
    void Add(const nxResultData& other);
};

#pragma once

#include <array>
#include <string>
#include <utility>
#include <vector>

#include "host/results/nxMeasures.h"
#include "host/results/nxResultRun.h"

// What a summary on a terminal tells of a result: its ten measures that matter most, in lines of two, and a
// picture of its equity where standard output is a terminal that shows it.
class nxResultLines
{
public:
    // Of those measures, in the order of the lines.
    static constexpr std::array Names = {"roundTrips",     "meanDay",  "winRate",    "sharpe",
                                         "profitFactor",   "feeShare", "expectancy", "slippagePerLot",
                                         "averageHolding", "exposure"};

    // A value of a measure, shortly; "-" where it is not known.
    static std::string GetText(const nxMeasure& measure, double value);
    // Label and text of each line; none for a result without fills.
    static std::vector<std::pair<const char*, std::string>> Get(const nxResultData& data,
                                                                const nxResultRun& run);
};

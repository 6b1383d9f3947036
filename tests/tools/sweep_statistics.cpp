#include <fmt/format.h>

#include <iostream>

#include "host/sweep/nxLuckReport.h"
#include "host/sweep/nxSharpeLuck.h"
#include "host/sweep/nxSobolSequence.h"

// For check_sweep_statistics.py. Reads days, runs, the seed, the number of tries, the run that was chosen,
// and the returns day after day; writes a figure a line. "sobol DIMENSIONS POINTS" writes points instead.
int main(int argc, char** argv)
{
    if (argc == 4) {
        nxSobolSequence sequence(std::stoul(argv[2]));
        for (unsigned long long i = 0; i < std::stoull(argv[3]); ++i)
            fmt::print("{:.17g}\n", fmt::join(sequence.GetPoint(i), " "));
        return 0;
    }
    std::size_t days = 0, runs = 0, best = 0;
    unsigned long long seed = 0, tried = 0;
    std::cin >> days >> runs >> seed >> tried >> best;
    nxReturnMatrix returns(days, runs);
    for (std::size_t day = 0; day < days; ++day)
        for (std::size_t run = 0; run < runs; ++run)
            std::cin >> returns.At(day, run);
    const nxLuckReport report = nxLuckReport::Make(returns, best, tried, seed);
    const auto overfitting = nxOverfitting::Find(returns, 8);
    const std::vector<double> first = returns.GetRun(0), second = returns.GetRun(1);
    for (const double figure :
         {report.sharpe, report.probabilistic, report.bestOfLuck, report.deflated, overfitting->probability,
          overfitting->loss, overfitting->meanLogit, report.realityCheck->whiteStatistic,
          report.realityCheck->spaStatistic, report.realityCheck->white, report.realityCheck->spa,
          report.realityCheck->spaLower, report.realityCheck->spaUpper, nxGetRankCorrelation(first, second)})
        fmt::print("{:.17g}\n", figure);
    return std::cin ? 0 : 1;
}

#pragma once

#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "host/results/nxResultRun.h"

// Statistics of a row of numbers, in doubles and in the order of the numbers, so that an independent program
// gets the same. Not a number where there are too few.
namespace nxStatistics {
double GetMean(std::span<const double> numbers);
// Of a sample: by the count less one.
double GetDeviation(std::span<const double> numbers);
// The mean of (x - mean)^power, by the count.
double GetMoment(std::span<const double> numbers, int power);
}  // namespace nxStatistics

// The days of a result: the profit of each and, with capital that lasts, its return.
class nxDayStatistics
{
public:
    using Interval = std::optional<std::pair<double, double>>;

    nxDayStatistics(const nxResultData& data, const nxResultRun& run);

    const std::vector<double>& GetProfits() const { return _profits; }
    // By the equity of the day before. Empty without capital, and where the equity of a day is not above 0.
    const std::vector<double>& GetReturns() const { return _returns; }
    // What ratios of risk are made of: the returns with capital, else the profits.
    const std::vector<double>& GetRatioBase() const { return _hasCapital ? _returns : _profits; }
    // Days on which the benchmark has a return, too: the result's and the benchmark's. By the same rule.
    const std::pair<std::vector<double>, std::vector<double>>& GetPaired() const { return _paired; }
    // Capital with the profit at the end of each day; the profit alone without capital.
    const std::vector<double>& GetEquity() const { return _equity; }

    // Of 95 %, by resampling the days in blocks; none below ten days.
    Interval GetSharpeInterval(double daysPerYear, unsigned long long seed) const;
    Interval GetMeanInterval(unsigned long long seed) const;
    static double GetSharpe(std::span<const double> numbers, double daysPerYear);

private:
    bool _hasCapital;
    std::vector<double> _profits, _returns, _equity;
    std::pair<std::vector<double>, std::vector<double>> _paired;
};

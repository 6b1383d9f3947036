#include "host/results/nxDayStatistics.h"

#include <algorithm>
#include <cmath>

#include "host/results/nxBootstrap.h"

namespace {

constexpr double None = std::numeric_limits<double>::quiet_NaN();

}  // namespace

double nxStatistics::GetMean(std::span<const double> numbers)
{
    double sum = 0.0;
    for (const double number : numbers)
        sum += number;
    return numbers.empty() ? None : sum / static_cast<double>(numbers.size());
}

double nxStatistics::GetMoment(std::span<const double> numbers, int power)
{
    const double mean = GetMean(numbers);
    double sum = 0.0;
    for (const double number : numbers) {
        double product = 1.0;
        for (int i = 0; i < power; ++i)
            product *= number - mean;
        sum += product;
    }
    return numbers.empty() ? None : sum / static_cast<double>(numbers.size());
}

double nxStatistics::GetDeviation(std::span<const double> numbers)
{
    if (numbers.size() < 2) return None;
    const double mean = GetMean(numbers);
    double sum = 0.0;
    for (const double number : numbers)
        sum += (number - mean) * (number - mean);
    return std::sqrt(sum / static_cast<double>(numbers.size() - 1));
}

nxDayStatistics::nxDayStatistics(const nxResultData& data, const nxResultRun& run)
    : _hasCapital(run.capital.has_value())
{
    const double capital = run.capital.value_or(0.0);
    nxExactAmount before;
    double equityBefore = capital, benchmarkBefore = None;
    bool isSound = _hasCapital;
    for (const nxResultDay& day : data.days) {
        const double equity = capital + day.profit.GetAsDouble();
        _profits.push_back((day.profit - before).GetAsDouble());
        _equity.push_back(equity);
        isSound = isSound && equity > 0.0;
        _returns.push_back(equity / equityBefore - 1.0);
        const double benchmark = day.benchmark / benchmarkBefore - 1.0;
        if (std::isfinite(benchmark)) {
            _paired.first.push_back(_returns.back());
            _paired.second.push_back(benchmark);
        }
        before = day.profit;
        equityBefore = equity;
        benchmarkBefore = day.benchmark;
    }
    if (isSound) return;
    _returns.clear();
    _paired = {};
}

double nxDayStatistics::GetSharpe(std::span<const double> numbers, double daysPerYear)
{
    const double deviation = nxStatistics::GetDeviation(numbers);
    return deviation > 0.0 ? nxStatistics::GetMean(numbers) / deviation * std::sqrt(daysPerYear) : None;
}

nxDayStatistics::Interval nxDayStatistics::GetSharpeInterval(double daysPerYear,
                                                             unsigned long long seed) const
{
    return nxBootstrap::GetInterval(GetRatioBase(), seed, [daysPerYear](std::span<const double> days) {
        return GetSharpe(days, daysPerYear);
    });
}

nxDayStatistics::Interval nxDayStatistics::GetMeanInterval(unsigned long long seed) const
{
    return nxBootstrap::GetInterval(_profits, seed, nxStatistics::GetMean);
}

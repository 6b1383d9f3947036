#include "host/sweep/nxSharpeLuck.h"

#include <cmath>
#include <limits>
#include <numbers>

#include "host/results/nxDayStatistics.h"
#include "host/sweep/nxNormal.h"

double nxSharpeLuck::GetRatio(std::span<const double> returns)
{
    return nxDayStatistics::GetSharpe(returns, 1.0);
}

double nxSharpeLuck::GetProbabilistic(std::span<const double> returns, double threshold)
{
    const double ratio = GetRatio(returns), variance = nxStatistics::GetMoment(returns, 2);
    const double skewness = nxStatistics::GetMoment(returns, 3) / (variance * std::sqrt(variance));
    const double kurtosis = nxStatistics::GetMoment(returns, 4) / (variance * variance);
    const double error = 1.0 - skewness * ratio + (kurtosis - 1.0) / 4.0 * ratio * ratio;
    const double distance =
        (ratio - threshold) * std::sqrt(static_cast<double>(returns.size()) - 1.0) / std::sqrt(error);
    return std::isfinite(distance) ? nxNormal::GetProbability(distance)
                                   : std::numeric_limits<double>::quiet_NaN();
}

double nxSharpeLuck::GetBestOfLuck(std::span<const double> ratios, unsigned long long tries)
{
    if (tries < 2) return 0.0;
    const auto count = static_cast<double>(tries);
    const double weight = std::numbers::egamma;
    return nxStatistics::GetDeviation(ratios) *
           ((1.0 - weight) * nxNormal::GetQuantile(1.0 - 1.0 / count) +
            weight * nxNormal::GetQuantile(1.0 - 1.0 / (count * std::numbers::e)));
}

double nxSharpeLuck::GetDeflated(std::span<const double> returns, std::span<const double> ratios,
                                 unsigned long long tries)
{
    return GetProbabilistic(returns, GetBestOfLuck(ratios, tries));
}

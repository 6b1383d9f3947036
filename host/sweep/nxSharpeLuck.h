#pragma once

#include <span>

// How sure it is that a Sharpe ratio is above 0, or above what the best of many tries has by luck. Ratios are
// those of a day, not of a year: mean / deviation of a sample.
// D. H. Bailey and M. Lopez de Prado, "The Sharpe Ratio Efficient Frontier", 2012, and "The Deflated Sharpe
// Ratio", 2014. All are not a number where there are too few figures.
namespace nxSharpeLuck {
// Of a day. Not a number where all returns are the same, or there are fewer than two.
double GetRatio(std::span<const double> returns);

// The probability that the true ratio is above `threshold`: the normal probability of
// (ratio - threshold) * sqrt(n - 1) / sqrt(1 - skewness * ratio + (kurtosis - 1) / 4 * ratio^2), with moments
// that divide by the count, and 3 for the kurtosis of a normal distribution.
double GetProbabilistic(std::span<const double> returns, double threshold);

// The ratio that the best of so many tries is expected to have when none is any good, by how far the tries'
// ratios differ: deviation * ((1 - g) * z(1 - 1 / n) + g * z(1 - 1 / (n * e))), where g is the constant of
// Euler and Mascheroni and z the normal quantile. `ratios` are those that are known of the tries, which may
// be fewer; 0 for one try.
double GetBestOfLuck(std::span<const double> ratios, unsigned long long tries);

// The probabilistic ratio against the best of luck.
double GetDeflated(std::span<const double> returns, std::span<const double> ratios, unsigned long long tries);
}  // namespace nxSharpeLuck

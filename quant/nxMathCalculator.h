#pragma once

#include <vector>

// Statistics of pairs (x, y), and the normal distribution. Stateless: one instance serves every thread. An
// operation that answers false has left its results alone.
//
// Values are taken relative to the first before they are summed, so that a small spread far from 0, such as
// times in seconds since 1970, loses no digits. Values that are not finite make the statistics
// not-a-number.
class nxMathCalculator
{
public:
    static const nxMathCalculator& GetInstance();

    // The probability of at most `value`. Refuses a sigma that is not above 0 or not finite, an average that
    // is not finite, and a value that is not a number.
    [[nodiscard]] bool CalculateCumulativeNormalDistribution(double average, double sigma, double value,
                                                             double& result) const;
    // Of the whole population: the squares are divided by the count. Refuses empty lists and lists of
    // different length.
    [[nodiscard]] bool CalculateStandardDeviation(const std::vector<double>& x, const std::vector<double>& y,
                                                  double& resultX, double& resultY) const;
    // The same population, the same refusals.
    [[nodiscard]] bool CalculateCovariance(const std::vector<double>& x, const std::vector<double>& y,
                                           double& result) const;
    // Least squares of y over x. coefficients: the intercept at x = 0 and the slope. residuals: y less the
    // fitted value, of each point. Refuses lists of different length, fewer than two points, x that are all
    // equal, and points whose coefficients would not be finite.
    [[nodiscard]] bool CalculateLinerRegression(const std::vector<double>& x,  // sic
                                                const std::vector<double>& y,
                                                std::vector<double>& coefficients,
                                                std::vector<double>& residuals,
                                                std::vector<double>& fitted) const;

private:
    nxMathCalculator() = default;
};

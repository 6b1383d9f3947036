#include "quant/nxMathCalculator.h"

#include <Eigen/Core>
#include <boost/math/constants/constants.hpp>
#include <boost/math/special_functions/erf.hpp>
#include <cmath>

namespace {

// Plain doubles inside: wider ones differ from machine to machine. Nothing throws.
using Policy = boost::math::policies::policy<
    boost::math::policies::promote_double<false>,
    boost::math::policies::overflow_error<boost::math::policies::ignore_error>,
    boost::math::policies::underflow_error<boost::math::policies::ignore_error>>;

// The distances of the values from their mean, and the mean as the first value and what it is away from it.
struct Centred
{
    explicit Centred(const std::vector<double>& values)
        : distances(
              Eigen::Map<const Eigen::ArrayXd>(values.data(), static_cast<Eigen::Index>(values.size()))),
          first(values[0])
    {
        distances -= first;
        offset = distances.mean();
        distances -= offset;
    }
    double GetStandardDeviation() const { return std::sqrt(distances.square().mean()); }

    Eigen::ArrayXd distances;
    double first;
    double offset;
};

}  // namespace

const nxMathCalculator& nxMathCalculator::GetInstance()
{
    static const nxMathCalculator instance;
    return instance;
}

bool nxMathCalculator::CalculateCumulativeNormalDistribution(double average, double sigma, double value,
                                                             double& result) const
{
    if (!(sigma > 0.0) || !std::isfinite(sigma) || !std::isfinite(average) || std::isnan(value)) return false;
    const double distance = (average - value) / sigma / boost::math::constants::root_two<double>();
    result = boost::math::erfc(distance, Policy()) / 2.0;
    return true;
}

bool nxMathCalculator::CalculateStandardDeviation(const std::vector<double>& x, const std::vector<double>& y,
                                                  double& resultX, double& resultY) const
{
    if (x.empty() || x.size() != y.size()) return false;
    resultX = Centred(x).GetStandardDeviation();
    resultY = Centred(y).GetStandardDeviation();
    return true;
}

bool nxMathCalculator::CalculateCovariance(const std::vector<double>& x, const std::vector<double>& y,
                                           double& result) const
{
    if (x.empty() || x.size() != y.size()) return false;
    result = (Centred(x).distances * Centred(y).distances).mean();
    return true;
}

bool nxMathCalculator::CalculateLinerRegression(const std::vector<double>& x, const std::vector<double>& y,
                                                std::vector<double>& coefficients,
                                                std::vector<double>& residuals,
                                                std::vector<double>& fitted) const
{
    if (x.size() < 2 || x.size() != y.size()) return false;
    const Centred across(x);
    const Centred up(y);
    const double squares = across.distances.square().sum();
    if (squares == 0.0) return false;
    const double slope = (across.distances * up.distances).sum() / squares;
    const double intercept = (up.first + up.offset) - slope * (across.first + across.offset);
    if (!std::isfinite(slope) || !std::isfinite(intercept)) return false;
    coefficients = {intercept, slope};
    residuals.resize(y.size());
    fitted.resize(y.size());
    for (std::size_t i = 0; i < y.size(); ++i) {
        const auto index = static_cast<Eigen::Index>(i);
        // From the middle of the points: the intercept may be far away and have few digits.
        residuals[i] = up.distances[index] - slope * across.distances[index];
        fitted[i] = up.first + (up.offset + slope * across.distances[index]);
    }
    return true;
}

#include "host/sweep/nxNormal.h"

#include <boost/math/special_functions/erf.hpp>
#include <cmath>
#include <numbers>

namespace {

// In plain doubles, since wider ones differ between machines.
using Policy = boost::math::policies::policy<boost::math::policies::promote_double<false>>;

}  // namespace

double nxNormal::GetProbability(double x)
{
    return 0.5 * boost::math::erfc(-x / std::numbers::sqrt2, Policy());
}

double nxNormal::GetQuantile(double probability)
{
    return -std::numbers::sqrt2 * boost::math::erfc_inv(2.0 * probability, Policy());
}

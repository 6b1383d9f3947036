#include "quant/nxMathCalculator.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

const nxMathCalculator& calculator = nxMathCalculator::GetInstance();
constexpr double Infinity = std::numeric_limits<double>::infinity();

// Expected: the distribution's power series in Python's decimals of 400 digits.
TEST(nxMathCalculator, CumulativeNormalDistribution)
{
    const std::tuple<double, double, double, double> rows[] = {
        {0, 1, 0, 0.5},
        {0, 1, 1, 0.84134474606854294859},
        {0, 1, -8, 6.2209605742717841235e-16},
        {0, 1, -20, 2.7536241186062336951e-89},
        {1.5, 0.3, 3.0, 0.99999971334842812081},
        {0, 1, Infinity, 1.0},
        {0, 1, -Infinity, 0.0},
        {-1e308, 1e-300, 1e308, 1.0},
    };
    for (const auto& [average, sigma, value, expected] : rows) {
        double result = -1.0;
        ASSERT_TRUE(calculator.CalculateCumulativeNormalDistribution(average, sigma, value, result)) << value;
        EXPECT_NEAR(result, expected, expected * 1e-13) << value;
    }
    double result = -1.0;
    for (const double sigma : {0.0, -1.0, double{NAN}, Infinity})
        EXPECT_FALSE(calculator.CalculateCumulativeNormalDistribution(0.0, sigma, 0.0, result)) << sigma;
    EXPECT_FALSE(calculator.CalculateCumulativeNormalDistribution(NAN, 1.0, 0.0, result));
    EXPECT_FALSE(calculator.CalculateCumulativeNormalDistribution(0.0, 1.0, NAN, result));
    EXPECT_EQ(result, -1.0);
}

// Times of a day in seconds since 1970, over which sums of squares would keep no digit. Expected: Python's
// exact fractions over the same doubles.
const std::vector<double> Times{1700000000.25, 1700000001.5, 1700000002.75, 1700000010.0, 1700000061.5};
const std::vector<double> Prices{100.01, 100.02, 99.98, 100.25, 101.5};

TEST(nxMathCalculator, SpreadsFarFromZeroKeepTheirDigits)
{
    double x = 0.0;
    double y = 0.0;
    ASSERT_TRUE(calculator.CalculateStandardDeviation(Times, Prices, x, y));
    EXPECT_NEAR(x, 23.396260384941863610, 1e-13);
    EXPECT_NEAR(y, 0.58204467182510934526, 1e-14);
    ASSERT_TRUE(calculator.CalculateCovariance(Times, Prices, x));
    EXPECT_NEAR(x, 13.595099999999985698, 1e-13);
    std::vector<double> coefficients, residuals, fitted;
    ASSERT_TRUE(calculator.CalculateLinerRegression(Times, Prices, coefficients, residuals, fitted));
    ASSERT_EQ(coefficients.size(), 2u);
    EXPECT_NEAR(coefficients[0] / -42221864.456399016573, 1.0, 1e-14);
    EXPECT_NEAR(coefficients[1], 0.024836449665226459801, 1e-16);
    const double left[] = {0.0293049224951396668, 0.00825936041359749705, -0.0627862016679276196,
                           0.0271495382591765678, -0.00192761949998611197};
    ASSERT_TRUE(residuals.size() == 5 && fitted.size() == 5);
    for (unsigned int i = 0; i < 5; ++i) {
        EXPECT_NEAR(residuals[i], left[i], 2e-14) << i;
        EXPECT_NEAR(fitted[i], Prices[i] - left[i], 3e-14) << i;
    }
}

TEST(nxMathCalculator, RefusesWhatHasNoStatistics)
{
    const double now = 1700000000.1;  // three of which do not sum to three times it
    const std::tuple<std::vector<double>, std::vector<double>, bool, bool> rows[] = {
        {{}, {}, false, false},          {{1, 2}, {1}, false, false},
        {{1}, {1}, true, false},         {{now, now, now}, {1, 2, 3}, true, false},
        {{1, 2}, {1, NAN}, true, false}, {{0, 1e-300, 2e-300}, {0, 1e100, 2e100}, true, false},
        {{1, 2}, {3, 3}, true, true},
    };
    for (const auto& [x, y, hasSpread, hasLine] : rows) {
        double a = 0.0, b = 0.0;
        std::vector<double> line, residuals, fitted;
        EXPECT_EQ(calculator.CalculateStandardDeviation(x, y, a, b), hasSpread) << x.size();
        EXPECT_EQ(calculator.CalculateCovariance(x, y, a), hasSpread) << x.size();
        EXPECT_EQ(calculator.CalculateLinerRegression(x, y, line, residuals, fitted), hasLine) << x.size();
    }
}

}  // namespace

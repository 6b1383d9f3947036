#include "quant/nxMatrixCalculator.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

namespace {

using Matrix = nxMatrixCalculator::Matrix;

const nxMatrixCalculator& calculator = nxMatrixCalculator::GetInstance();

Matrix MakeHilbert(unsigned int size)
{
    Matrix hilbert(size, std::vector<double>(size));
    for (unsigned int row = 0; row < size; ++row)
        for (unsigned int column = 0; column < size; ++column)
            hilbert[row][column] = 1.0 / (row + column + 1);
    return hilbert;
}

TEST(nxMatrixCalculator, Calculates)
{
    const Matrix a{{1, 2, 3}, {4, 5, 6}};
    const Matrix b{{1, 0}, {2, -1}, {0, 3}};
    Matrix result;
    std::string error;
    EXPECT_TRUE(calculator.Add(a, {{10, 20, 30}, {40, 50, 60}}, result, error));
    EXPECT_EQ(result, (Matrix{{11, 22, 33}, {44, 55, 66}}));
    EXPECT_TRUE(calculator.Subtract(a, {{1, 1, 1}, {2, 2, 2}}, result, error));
    EXPECT_EQ(result, (Matrix{{0, 1, 2}, {2, 3, 4}}));
    EXPECT_TRUE(calculator.Multiply(a, b, result, error));
    EXPECT_EQ(result, (Matrix{{5, 7}, {14, 13}}));
    EXPECT_TRUE(calculator.Transpose(a, result, error));
    EXPECT_EQ(result, (Matrix{{1, 4}, {2, 5}, {3, 6}}));
}

// The expected values were computed in Python's exact fractions, by elimination, from the same doubles.
TEST(nxMatrixCalculator, DeterminantAndInverseAgreeWithExactArithmetic)
{
    const Matrix needsPivot{{0, 2, 1}, {3, -1, 4}, {1, 5, -2}};
    const Matrix exact{
        {-1.0 / 2, 1.0 / 4, 1.0 / 4}, {5.0 / 18, -1.0 / 36, 1.0 / 12}, {4.0 / 9, 1.0 / 18, -1.0 / 6}};
    Matrix result;
    double determinant = 0.0;
    std::string error;
    ASSERT_TRUE(calculator.Determinant(needsPivot, determinant, error));
    EXPECT_NEAR(determinant, 36.0, 1e-13);
    ASSERT_TRUE(calculator.Inverse(needsPivot, result, error));
    for (unsigned int row = 0; row < 3; ++row)
        for (unsigned int column = 0; column < 3; ++column)
            EXPECT_NEAR(result[row][column], exact[row][column], 1e-15) << row << "," << column;
    ASSERT_TRUE(calculator.Determinant(MakeHilbert(8), determinant, error));
    EXPECT_NEAR(determinant / 2.7370501217557288e-33, 1.0, 1e-6);
    ASSERT_TRUE(calculator.Inverse(MakeHilbert(8), result, error));
    EXPECT_NEAR(result[6][6] / 2175421238.3186934, 1.0, 1e-5);
}

TEST(nxMatrixCalculator, RefusesWithAReason)
{
    const Matrix two{{1, 2}, {3, 4}};
    const Matrix wide{{1, 2, 3}, {4, 5, 6}};
    const auto bind = [](auto operation, const Matrix& a, const Matrix& b) {
        return
            [=](Matrix& result, std::string& error) { return (calculator.*operation)(a, b, result, error); };
    };
    const auto invert = [](const Matrix& a) {
        return [=](Matrix& result, std::string& error) { return calculator.Inverse(a, result, error); };
    };
    const auto determine = [](const Matrix& a) {
        return [=](Matrix&, std::string& error) {
            double result = 0.0;
            return calculator.Determinant(a, result, error);
        };
    };
    const std::string singular = "the matrix is singular or too near to it";
    const std::pair<std::function<bool(Matrix&, std::string&)>, std::string> rows[] = {
        {bind(&nxMatrixCalculator::Add, wide, two), "the dimensions differ: 2x3 and 2x2"},
        {bind(&nxMatrixCalculator::Subtract, two, {{1, 2}}), "the dimensions differ: 2x2 and 1x2"},
        {bind(&nxMatrixCalculator::Multiply, wide, two), "the dimensions do not fit: 2x3 and 2x2"},
        {bind(&nxMatrixCalculator::Add, {}, two), "the first matrix is empty"},
        {bind(&nxMatrixCalculator::Multiply, two, {{}, {}}), "the second matrix is empty"},
        {bind(&nxMatrixCalculator::Multiply, two, {{1, 2}, {3}}),
         "the second matrix is ragged: row 1 has 2 columns, row 2 has 1"},
        {determine(wide), "the matrix is not square: 2x3"},
        {determine({}), "the matrix is empty"},
        {invert(wide), "the matrix is not square: 2x3"},
        {invert({{0}}), singular},
        {invert({{1, 2}, {2, 4}}), singular},
        {invert({{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}), singular},  // its pivots are not quite 0
        {invert(MakeHilbert(14)), singular},
        {invert({{1, NAN}, {0, 1}}), "the matrix holds a value that is not finite"},
        {invert({{1e-310}}), "the inverse is beyond the range of numbers"},
    };
    for (const auto& [operation, reason] : rows) {
        Matrix result{{7}};
        std::string error;
        EXPECT_FALSE(operation(result, error)) << reason;
        EXPECT_EQ(error, reason);
        EXPECT_EQ(result, Matrix{{7}}) << reason;
    }
}

}  // namespace

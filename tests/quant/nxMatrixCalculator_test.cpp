#include "quant/nxMatrixCalculator.h"

#include <gtest/gtest.h>

#include <cmath>

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

// The expected values were computed in Python's exact fractions, by elimination, from the same doubles.
TEST(nxMatrixCalculator, DeterminantAndInverseAgreeWithExactArithmetic)
{
    const Matrix needsPivot{{0, 2, 1}, {3, -1, 4}, {1, 5, -2}};
    const double exact[] = {-1.0 / 2, 1.0 / 4, 1.0 / 4,  5.0 / 18, -1.0 / 36,
                            1.0 / 12, 4.0 / 9, 1.0 / 18, -1.0 / 6};
    Matrix result;
    double determinant = 0.0;
    std::string error;
    ASSERT_TRUE(calculator.Determinant(needsPivot, determinant, error));
    EXPECT_NEAR(determinant, 36.0, 1e-13);
    ASSERT_TRUE(calculator.Inverse(needsPivot, result, error));
    for (unsigned int i = 0; i < 9; ++i)
        EXPECT_NEAR(result[i / 3][i % 3], exact[i], 1e-15) << i;
    ASSERT_TRUE(calculator.Determinant(MakeHilbert(8), determinant, error));
    EXPECT_NEAR(determinant / 2.7370501217557288e-33, 1.0, 1e-6);
    ASSERT_TRUE(calculator.Inverse(MakeHilbert(8), result, error));
    EXPECT_NEAR(result[6][6] / 2175421238.3186934, 1.0, 1e-5);
}

// Dimensions that do not fit are tested through the script's matrix.
TEST(nxMatrixCalculator, InverseRefusesWithAReason)
{
    const std::string singular = "the matrix is singular or too near to it";
    const std::pair<Matrix, std::string> rows[] = {
        {{{0}}, singular},
        {{{1, 2}, {2, 4}}, singular},
        {{{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}, singular},  // its pivots are not quite 0
        {MakeHilbert(14), singular},
        {{{1, NAN}, {0, 1}}, "the matrix holds a value that is not finite"},
        {{{1e-310}}, "the inverse is beyond the range of numbers"},
        {{{1, 2}, {3}}, "the matrix is ragged: row 1 has 2 columns, row 2 has 1"},
        {{{}, {}}, "the matrix is empty"},
    };
    for (const auto& [matrix, reason] : rows) {
        Matrix result{{7}};
        std::string error;
        EXPECT_FALSE(calculator.Inverse(matrix, result, error)) << reason;
        EXPECT_EQ(error, reason);
        EXPECT_EQ(result, Matrix{{7}}) << reason;
    }
}

}  // namespace

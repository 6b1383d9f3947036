#pragma once

#include <string>
#include <vector>

// Arithmetic on matrices that come as rows of doubles. Stateless: one instance serves every thread.
//
// Each operation answers false, with a reason in `error` and `result` left alone, for an operand without rows
// or columns, for rows of different length, and for dimensions that do not fit, which the reason names
// ("2x3 and 2x2": rows by columns). Values that are not finite pass through as the arithmetic has it, except
// in Inverse.
class nxMatrixCalculator
{
public:
    using Matrix = std::vector<std::vector<double>>;

    static const nxMatrixCalculator& GetInstance();

    [[nodiscard]] bool Add(const Matrix& a, const Matrix& b, Matrix& result, std::string& error) const;
    [[nodiscard]] bool Subtract(const Matrix& a, const Matrix& b, Matrix& result, std::string& error) const;
    [[nodiscard]] bool Multiply(const Matrix& a, const Matrix& b, Matrix& result, std::string& error) const;
    [[nodiscard]] bool Transpose(const Matrix& a, Matrix& result, std::string& error) const;
    // By elimination with row pivots: a matrix that is singular only up to rounding gives a small number
    // instead of 0.
    [[nodiscard]] bool Determinant(const Matrix& a, double& result, std::string& error) const;
    // Refuses a matrix whose estimated reciprocal condition number, in the 1-norm, is below 2^-52: of its
    // inverse no digit would be right. Refuses values that are not finite.
    [[nodiscard]] bool Inverse(const Matrix& a, Matrix& result, std::string& error) const;

private:
    nxMatrixCalculator() = default;
};

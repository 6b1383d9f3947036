#include "quant/nxMatrixCalculator.h"

#include <Eigen/LU>
#include <limits>

namespace {

using Matrix = nxMatrixCalculator::Matrix;
using Dense = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;

std::string Dimensions(const Dense& matrix)
{
    return std::to_string(matrix.rows()) + "x" + std::to_string(matrix.cols());
}

std::string Dimensions(const Dense& a, const Dense& b)
{
    return Dimensions(a) + " and " + Dimensions(b);
}

// name: how the reason calls the matrix.
bool Read(const Matrix& rows, const char* name, Dense& dense, std::string& error)
{
    if (rows.empty() || rows[0].empty()) {
        error = std::string("the ") + name + " is empty";
        return false;
    }
    const std::size_t columns = rows[0].size();
    dense.resize(static_cast<Eigen::Index>(rows.size()), static_cast<Eigen::Index>(columns));
    for (std::size_t row = 0; row < rows.size(); ++row) {
        if (rows[row].size() != columns) {
            error = std::string("the ") + name + " is ragged: row 1 has " + std::to_string(columns) +
                    " columns, row " + std::to_string(row + 1) + " has " + std::to_string(rows[row].size());
            return false;
        }
        dense.row(static_cast<Eigen::Index>(row)) =
            Eigen::Map<const Eigen::RowVectorXd>(rows[row].data(), static_cast<Eigen::Index>(columns));
    }
    return true;
}

bool ReadTwo(const Matrix& a, const Matrix& b, Dense& first, Dense& second, std::string& error)
{
    return Read(a, "first matrix", first, error) && Read(b, "second matrix", second, error);
}

bool ReadSquare(const Matrix& a, Dense& dense, std::string& error)
{
    if (!Read(a, "matrix", dense, error)) return false;
    if (dense.rows() == dense.cols()) return true;
    error = "the matrix is not square: " + Dimensions(dense);
    return false;
}

bool Write(const Dense& dense, Matrix& rows)
{
    rows.resize(static_cast<std::size_t>(dense.rows()));
    for (Eigen::Index row = 0; row < dense.rows(); ++row) {
        const double* const begin = dense.data() + row * dense.cols();
        rows[static_cast<std::size_t>(row)].assign(begin, begin + dense.cols());
    }
    return true;
}

bool ReadAlike(const Matrix& a, const Matrix& b, Dense& first, Dense& second, std::string& error)
{
    if (!ReadTwo(a, b, first, second, error)) return false;
    if (first.rows() == second.rows() && first.cols() == second.cols()) return true;
    error = "the dimensions differ: " + Dimensions(first, second);
    return false;
}

}  // namespace

const nxMatrixCalculator& nxMatrixCalculator::GetInstance()
{
    static const nxMatrixCalculator instance;
    return instance;
}

bool nxMatrixCalculator::Add(const Matrix& a, const Matrix& b, Matrix& result, std::string& error) const
{
    Dense first, second;
    return ReadAlike(a, b, first, second, error) && Write(first + second, result);
}

bool nxMatrixCalculator::Subtract(const Matrix& a, const Matrix& b, Matrix& result, std::string& error) const
{
    Dense first, second;
    return ReadAlike(a, b, first, second, error) && Write(first - second, result);
}

bool nxMatrixCalculator::Multiply(const Matrix& a, const Matrix& b, Matrix& result, std::string& error) const
{
    Dense first, second;
    if (!ReadTwo(a, b, first, second, error)) return false;
    if (first.cols() != second.rows()) {
        error = "the dimensions do not fit: " + Dimensions(first, second);
        return false;
    }
    return Write(first * second, result);
}

bool nxMatrixCalculator::Transpose(const Matrix& a, Matrix& result, std::string& error) const
{
    Dense dense;
    return Read(a, "matrix", dense, error) && Write(dense.transpose(), result);
}

bool nxMatrixCalculator::Determinant(const Matrix& a, double& result, std::string& error) const
{
    Dense dense;
    if (!ReadSquare(a, dense, error)) return false;
    result = dense.partialPivLu().determinant();
    return true;
}

bool nxMatrixCalculator::Inverse(const Matrix& a, Matrix& result, std::string& error) const
{
    Dense dense;
    if (!ReadSquare(a, dense, error)) return false;
    if (!dense.allFinite()) {
        error = "the matrix holds a value that is not finite";
        return false;
    }
    const Eigen::PartialPivLU<Dense> decomposed(dense);
    const double condition = decomposed.rcond();
    // Written so that not-a-number, which a pivot of 0 can lead to, is refused too.
    if (!(condition >= std::numeric_limits<double>::epsilon())) {
        error = "the matrix is singular or too near to it";
        return false;
    }
    const Dense inverse = decomposed.inverse();
    if (!inverse.allFinite()) {
        error = "the inverse is beyond the range of numbers";
        return false;
    }
    return Write(inverse, result);
}

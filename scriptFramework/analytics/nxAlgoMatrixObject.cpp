#include "scriptFramework/analytics/nxAlgoMatrixObject.h"

#include <algorithm>

#include "quant/nxMatrixCalculator.h"
#include "scriptFramework/lua/nxScriptCharge.h"

using Self = nxAlgoMatrixObject;

constexpr nxLuaWrapper<Self>::FunctionType Self::Functions[] = {
    {"add", &Self::add},
    {"subtract", &Self::subtract},
    {"multiply", &Self::multiply},
    {"transpose", &Self::transpose},
    {"determinant", &Self::determinant},
    {"inverse", &Self::inverse},
    {nullptr, nullptr},
};
static_assert(nxIsBoundTable(Self::Functions));

constexpr nxLuaWrapper<Self>::PropertyType Self::Properties[] = {
    {nullptr, nullptr, nullptr},
};

namespace {

using Matrix = std::vector<std::vector<double>>;

std::size_t GetBytes(const Matrix& matrix)
{
    std::size_t bytes = 0;
    for (const std::vector<double>& row : matrix)
        bytes += sizeof row + row.size() * sizeof(double);
    return bytes;
}

// Of the largest result that two matrices can have: their product, or the larger one.
std::size_t GetProductBytes(const Matrix& first, const Matrix& second)
{
    const std::size_t columns = second.empty() ? 0 : second.front().size();
    const std::size_t product = first.size() * (sizeof(std::vector<double>) + columns * sizeof(double));
    return std::max({product, GetBytes(first), GetBytes(second)});
}

// The calculator works on copies of its own.
std::size_t GetWorkBytes(std::size_t operands, std::size_t result)
{
    return 2 * (operands + result);
}

}  // namespace

bool nxAlgoMatrixObject::_GetOneMatrix(nxLuaParameters& parameters, nxLuaResults& results, Matrix& matrix,
                                       nxScriptCharge& charge)
{
    if (parameters.Count() != 1) return results.Fail("Requires one matrix");
    std::string error;
    if (!parameters.Parameter(1).GetAsMatrix(matrix, error)) return results.Fail("Matrix invalid : " + error);
    return results.Sets(charge, GetWorkBytes(GetBytes(matrix), GetBytes(matrix)));
}

bool nxAlgoMatrixObject::_GetTwoMatrices(nxLuaParameters& parameters, nxLuaResults& results, Matrix& first,
                                         Matrix& second, nxScriptCharge& charge)
{
    if (parameters.Count() != 2) return results.Fail("Requires two matrices");
    std::string error;
    if (!parameters.Parameter(1).GetAsMatrix(first, error))
        return results.Fail("First matrix invalid : " + error);
    if (!results.Sets(charge, GetBytes(first))) return false;
    if (!parameters.Parameter(2).GetAsMatrix(second, error))
        return results.Fail("Second matrix invalid : " + error);
    return results.Sets(charge,
                        GetWorkBytes(GetBytes(first) + GetBytes(second), GetProductBytes(first, second)));
}

bool nxAlgoMatrixObject::add(nxLuaParameters& parameters, nxLuaResults& results)
{
    nxScriptCharge charge;
    Matrix first, second, sum;
    if (!_GetTwoMatrices(parameters, results, first, second, charge)) return false;
    std::string error;
    if (!nxMatrixCalculator::GetInstance().Add(first, second, sum, error))
        return results.Fail("matrix:add failed : " + error);
    results.Add(sum);
    return true;
}

bool nxAlgoMatrixObject::subtract(nxLuaParameters& parameters, nxLuaResults& results)
{
    nxScriptCharge charge;
    Matrix first, second, difference;
    if (!_GetTwoMatrices(parameters, results, first, second, charge)) return false;
    std::string error;
    if (!nxMatrixCalculator::GetInstance().Subtract(first, second, difference, error))
        return results.Fail("matrix:subtract failed : " + error);
    results.Add(difference);
    return true;
}

bool nxAlgoMatrixObject::multiply(nxLuaParameters& parameters, nxLuaResults& results)
{
    nxScriptCharge charge;
    Matrix first, second, product;
    if (!_GetTwoMatrices(parameters, results, first, second, charge)) return false;
    std::string error;
    if (!nxMatrixCalculator::GetInstance().Multiply(first, second, product, error))
        return results.Fail("matrix:multiply failed : " + error);
    results.Add(product);
    return true;
}

bool nxAlgoMatrixObject::transpose(nxLuaParameters& parameters, nxLuaResults& results)
{
    nxScriptCharge charge;
    Matrix matrix, transposed;
    if (!_GetOneMatrix(parameters, results, matrix, charge)) return false;
    std::string error;
    if (!nxMatrixCalculator::GetInstance().Transpose(matrix, transposed, error))
        return results.Fail("matrix:transpose failed : " + error);
    results.Add(transposed);
    return true;
}

bool nxAlgoMatrixObject::determinant(nxLuaParameters& parameters, nxLuaResults& results)
{
    nxScriptCharge charge;
    Matrix matrix;
    if (!_GetOneMatrix(parameters, results, matrix, charge)) return false;
    std::string error;
    double value = 0.0;
    if (!nxMatrixCalculator::GetInstance().Determinant(matrix, value, error))
        return results.Fail("matrix:determinant failed : " + error);
    results.Add(value);
    return true;
}

bool nxAlgoMatrixObject::inverse(nxLuaParameters& parameters, nxLuaResults& results)
{
    nxScriptCharge charge;
    Matrix matrix, inverted;
    if (!_GetOneMatrix(parameters, results, matrix, charge)) return false;
    std::string error;
    if (!nxMatrixCalculator::GetInstance().Inverse(matrix, inverted, error))
        return results.Fail("matrix:inverse failed : " + error);
    results.Add(inverted);
    return true;
}

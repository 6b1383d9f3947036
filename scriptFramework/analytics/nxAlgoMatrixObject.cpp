#include "scriptFramework/analytics/nxAlgoMatrixObject.h"

#include "quant/nxMatrixCalculator.h"

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

bool nxAlgoMatrixObject::_GetOneMatrix(nxLuaParameters& parameters, nxLuaResults& results, Matrix& matrix)
{
    if (parameters.Count() != 1) return results.Fail("Requires one matrix");
    std::string error;
    return parameters.Parameter(1).GetAsMatrix(matrix, error) || results.Fail("Matrix invalid : " + error);
}

bool nxAlgoMatrixObject::_GetTwoMatrices(nxLuaParameters& parameters, nxLuaResults& results, Matrix& first,
                                         Matrix& second)
{
    if (parameters.Count() != 2) return results.Fail("Requires two matrices");
    std::string error;
    if (!parameters.Parameter(1).GetAsMatrix(first, error))
        return results.Fail("First matrix invalid : " + error);
    return parameters.Parameter(2).GetAsMatrix(second, error) ||
           results.Fail("Second matrix invalid : " + error);
}

bool nxAlgoMatrixObject::add(nxLuaParameters& parameters, nxLuaResults& results)
{
    Matrix first, second, sum;
    if (!_GetTwoMatrices(parameters, results, first, second)) return false;
    std::string error;
    if (!nxMatrixCalculator::GetInstance().Add(first, second, sum, error))
        return results.Fail("matrix:add failed : " + error);
    results.Add(sum);
    return true;
}

bool nxAlgoMatrixObject::subtract(nxLuaParameters& parameters, nxLuaResults& results)
{
    Matrix first, second, difference;
    if (!_GetTwoMatrices(parameters, results, first, second)) return false;
    std::string error;
    if (!nxMatrixCalculator::GetInstance().Subtract(first, second, difference, error))
        return results.Fail("matrix:subtract failed : " + error);
    results.Add(difference);
    return true;
}

bool nxAlgoMatrixObject::multiply(nxLuaParameters& parameters, nxLuaResults& results)
{
    Matrix first, second, product;
    if (!_GetTwoMatrices(parameters, results, first, second)) return false;
    std::string error;
    if (!nxMatrixCalculator::GetInstance().Multiply(first, second, product, error))
        return results.Fail("matrix:multiply failed : " + error);
    results.Add(product);
    return true;
}

bool nxAlgoMatrixObject::transpose(nxLuaParameters& parameters, nxLuaResults& results)
{
    Matrix matrix, transposed;
    if (!_GetOneMatrix(parameters, results, matrix)) return false;
    std::string error;
    if (!nxMatrixCalculator::GetInstance().Transpose(matrix, transposed, error))
        return results.Fail("matrix:transpose failed : " + error);
    results.Add(transposed);
    return true;
}

bool nxAlgoMatrixObject::determinant(nxLuaParameters& parameters, nxLuaResults& results)
{
    Matrix matrix;
    if (!_GetOneMatrix(parameters, results, matrix)) return false;
    std::string error;
    double value = 0.0;
    if (!nxMatrixCalculator::GetInstance().Determinant(matrix, value, error))
        return results.Fail("matrix:determinant failed : " + error);
    results.Add(value);
    return true;
}

bool nxAlgoMatrixObject::inverse(nxLuaParameters& parameters, nxLuaResults& results)
{
    Matrix matrix, inverted;
    if (!_GetOneMatrix(parameters, results, matrix)) return false;
    std::string error;
    if (!nxMatrixCalculator::GetInstance().Inverse(matrix, inverted, error))
        return results.Fail("matrix:inverse failed : " + error);
    results.Add(inverted);
    return true;
}

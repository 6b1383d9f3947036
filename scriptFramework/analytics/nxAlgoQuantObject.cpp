#include "scriptFramework/analytics/nxAlgoQuantObject.h"

#include "quant/nxMathCalculator.h"

using Self = nxAlgoQuantObject;

constexpr nxLuaWrapper<Self>::FunctionType Self::Functions[] = {
    {"normcdf", &Self::normcdf},
    {nullptr, nullptr},
};
static_assert(nxIsBoundTable(Self::Functions));

constexpr nxLuaWrapper<Self>::PropertyType Self::Properties[] = {
    {nullptr, nullptr, nullptr},
};

bool nxAlgoQuantObject::normcdf(nxLuaParameters& parameters, nxLuaResults& results)
{
    if (parameters.Count() != 3) return results.Fail("Requires three parameters: average,sigma and value");
    const double average = parameters.Parameter(1).GetNumber();
    const double sigma = parameters.Parameter(2).GetNumber();
    const double value = parameters.Parameter(3).GetNumber();
    double probability = 0.0;
    if (!nxMathCalculator::GetInstance().CalculateCumulativeNormalDistribution(average, sigma, value,
                                                                               probability))
        return false;
    results.Add(probability);
    return true;
}

#include "scriptFramework/analytics/nxAlgoIndicatorObject.h"

#include <cstring>

using Self = nxAlgoIndicatorObject;

constexpr nxLuaWrapper<Self>::FunctionType Self::Functions[] = {
    {"getValue", &Self::getValue},
    {"getRealTimeValue", &Self::getRealTimeValue},
    {nullptr, nullptr},
};
static_assert(nxIsBoundTable(Self::Functions));

constexpr nxLuaWrapper<Self>::PropertyType Self::Properties[] = {
    {"name", &Self::Get_name, nullptr},
    {"type", &Self::Get_type, nullptr},
    {nullptr, nullptr, nullptr},
};
static_assert(nxIsBoundTable(Self::Properties));

namespace {

void AddResult(nxLuaResults& results, bool isKnown, double value)
{
    if (isKnown) {
        results.Add(value);
    } else {
        results.AddNull();
    }
}

}  // namespace

const std::string& nxAlgoIndicatorObject::_Keep(const char* name)
{
    if (std::strcmp(_asked.c_str(), name) != 0) _asked = name;
    return _asked;
}

bool nxAlgoIndicatorObject::getValue(nxLuaParameters& parameters, nxLuaResults& results)
{
    const unsigned int count = parameters.Count();
    if (count != 1 && count != 2)
        return results.Fail("indicator:getValue requires one or two arguments [name,index]");
    const char* const text = parameters.Parameter(1).GetString();
    const unsigned int index = count == 2 ? parameters.Parameter(2).GetUnsigned() : 0;
    double value = 0.0;
    const bool isKnown = _indicator->GetNamedResult(index, _Keep(text), value);
    AddResult(results, isKnown, value);
    return true;
}

bool nxAlgoIndicatorObject::getRealTimeValue(nxLuaParameters& parameters, nxLuaResults& results)
{
    if (parameters.Count() != 1) return results.Fail("indicator:getRealTimeValue requires one [name]");
    const std::string& name = _Keep(parameters.Parameter(1).GetString());
    double value = 0.0;
    const bool isKnown = _indicator->GetRealTimeResult(name, value);
    AddResult(results, isKnown, value);
    return true;
}

bool nxAlgoIndicatorObject::Get_name(nxLuaResults& results)
{
    results.Add(_name);
    return true;
}

bool nxAlgoIndicatorObject::Get_type(nxLuaResults& results)
{
    results.Add(_indicator->GetTypeName());
    return true;
}

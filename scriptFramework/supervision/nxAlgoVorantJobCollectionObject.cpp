#include "scriptFramework/supervision/nxAlgoVorantJobCollectionObject.h"

#include <cmath>

#include "base/log/nxLogMessage.h"
#include "scriptFramework/supervision/nxAlgoVorantJobObject.h"

using Self = nxAlgoVorantJobCollectionObject;

constexpr nxLuaWrapper<Self>::FunctionType Self::Functions[] = {
    {"getVorantJob", &Self::getVorantJob},
    {nullptr, nullptr},
};
static_assert(nxIsBoundTable(Self::Functions));

constexpr nxLuaWrapper<Self>::PropertyType Self::Properties[] = {
    {"count", &Self::Get_count, nullptr},
    {nullptr, nullptr, nullptr},
};
static_assert(nxIsBoundTable(Self::Properties));

// A wrong count is told without a text, which is kept: scripts see an empty error.
bool nxAlgoVorantJobCollectionObject::getVorantJob(nxLuaParameters& parameters, nxLuaResults& results)
{
    if (parameters.Count() != 1) return false;
    const double index = parameters.Parameter(1).GetNumber();
    // The whole number, where the host gets its low 32 bits.
    nxLogMessage(nxLogLevel::Info, GetLogPrefix(), "Get Vorant job at index ", std::trunc(index) + 0.0);
    results.AddObject(_GetVorantJob(nxLuaTruncate(index)));
    return true;
}

bool nxAlgoVorantJobCollectionObject::Get_count(nxLuaResults& results)
{
    results.Add(_GetCount());
    return true;
}

#include "scriptFramework/supervision/nxAlgoVorantJobCollectionObject.h"

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
    // The log line has the whole number, of which the host gets the low 32 bits.
    const long long index = nxLuaTruncateToLong(parameters.Parameter(1).GetNumber());
    nxLogMessage(nxLogLevel::Info, GetLogPrefix(), "Get Vorant job at index ", index);
    results.AddObject(_GetVorantJob(static_cast<unsigned int>(index)));
    return true;
}

bool nxAlgoVorantJobCollectionObject::Get_count(nxLuaResults& results)
{
    results.Add(_GetCount());
    return true;
}

#include "scriptFramework/orders/nxAlgoOrderCollectionObject.h"

#include "base/log/nxLogMessage.h"
#include "scriptFramework/orders/nxAlgoOrderObject.h"

using Self = nxAlgoOrderCollectionObject;

constexpr nxLuaWrapper<Self>::FunctionType Self::Functions[] = {
    {"getOrder", &Self::getOrder},
    {"setFilter", &Self::setFilter},
    {nullptr, nullptr},
};
static_assert(nxIsBoundTable(Self::Functions));

constexpr nxLuaWrapper<Self>::PropertyType Self::Properties[] = {
    {"count", &Self::Get_count, nullptr},
    {nullptr, nullptr, nullptr},
};
static_assert(nxIsBoundTable(Self::Properties));

// A wrong count is told without a text, which is kept: scripts see an empty error.
bool nxAlgoOrderCollectionObject::getOrder(nxLuaParameters& parameters, nxLuaResults& results)
{
    if (parameters.Count() != 1) return false;
    const unsigned int index = parameters.Parameter(1).GetUnsigned();
    nxLogMessage(nxLogLevel::Info, GetLogPrefix(), "Get Order at index ", index);
    if (GetOrder(index) != nullptr) {
        results.AddObject(GetOrder(index));
        return true;
    }
    results.AddNull();
    nxLogMessage(nxLogLevel::Error, GetLogPrefix(), "Get Order at index ", index, " is invalid. Size",
                 GetCount());
    return results.Fail("invalid index for getOrder");
}

bool nxAlgoOrderCollectionObject::setFilter(nxLuaParameters&, nxLuaResults&)
{
    return true;
}

bool nxAlgoOrderCollectionObject::Get_count(nxLuaResults& results)
{
    results.Add(GetCount());
    return true;
}

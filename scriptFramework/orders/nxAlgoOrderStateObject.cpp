#include "scriptFramework/orders/nxAlgoOrderStateObject.h"

using Self = nxAlgoOrderStateObject;

constexpr nxLuaWrapper<Self>::FunctionType Self::Functions[] = {
    {"isWorking", &Self::isWorking},
    {"isPending", &Self::isPending},
    {"isFilled", &Self::isFilled},
    {"isDeleted", &Self::isDeleted},
    {"isFailed", &Self::isFailed},
    {"isPendingAmend", &Self::isPendingAmend},
    {"isPendingCancel", &Self::isPendingCancel},
    {nullptr, nullptr},
};
static_assert(nxIsBoundTable(Self::Functions));

constexpr nxLuaWrapper<Self>::PropertyType Self::Properties[] = {
    {nullptr, nullptr, nullptr},
};
static_assert(nxIsBoundTable(Self::Properties));

bool nxAlgoOrderStateObject::isWorking(nxLuaParameters&, nxLuaResults& results)
{
    results.Add(_GetStatus().IsWorkingOrder());
    return true;
}

bool nxAlgoOrderStateObject::isPending(nxLuaParameters&, nxLuaResults& results)
{
    results.Add(_GetStatus().IsUndefined() || _GetStatus() == nxOrderStatus_Pending);
    return true;
}

bool nxAlgoOrderStateObject::isFilled(nxLuaParameters&, nxLuaResults& results)
{
    results.Add(_GetStatus() == nxOrderStatus_Filled);
    return true;
}

bool nxAlgoOrderStateObject::isDeleted(nxLuaParameters&, nxLuaResults& results)
{
    results.Add(_GetStatus() == nxOrderStatus_Deleted);
    return true;
}

bool nxAlgoOrderStateObject::isFailed(nxLuaParameters&, nxLuaResults& results)
{
    results.Add(!_GetStatus().IsUndefined() && !_GetStatus().IsWorkingOrder() &&
                _GetStatus() != nxOrderStatus_Deleted && _GetStatus() != nxOrderStatus_Filled);
    return true;
}

bool nxAlgoOrderStateObject::isPendingAmend(nxLuaParameters&, nxLuaResults& results)
{
    results.Add(_pendingAmend);
    return true;
}

bool nxAlgoOrderStateObject::isPendingCancel(nxLuaParameters&, nxLuaResults& results)
{
    results.Add(_pendingCancel);
    return true;
}

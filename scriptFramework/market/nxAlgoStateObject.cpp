#include "scriptFramework/market/nxAlgoStateObject.h"

using Self = nxAlgoStateObject;

constexpr nxLuaWrapper<Self>::FunctionType Self::Functions[] = {
    {"isPreOpen", &Self::isPreOpen},
    {"isOpen", &Self::isOpen},
    {"isClosed", &Self::isClosed},
    {nullptr, nullptr},
};
static_assert(nxIsBoundTable(Self::Functions));

constexpr nxLuaWrapper<Self>::PropertyType Self::Properties[] = {
    {"id", &Self::Get_id, nullptr},
    {nullptr, nullptr, nullptr},
};
static_assert(nxIsBoundTable(Self::Properties));

nxAlgoStateObject::nxAlgoStateObject(nxAlgoJobInterface* job, unsigned int id) : nxAlgoObject(job), _id(id) {}

nxAlgoStateObject::nxAlgoStateObject(nxAlgoJobInterface* job, unsigned int id, nxProductStateBitMask state)
    : nxAlgoObject(job), _id(id), _state(state)
{
}

bool nxAlgoStateObject::isPreOpen(nxLuaParameters&, nxLuaResults& results)
{
    results.Add(_state.AreAllBitsSet(PreOpen));
    return true;
}

bool nxAlgoStateObject::isOpen(nxLuaParameters&, nxLuaResults& results)
{
    results.Add(_state.AreAllBitsSet(Open));
    return true;
}

bool nxAlgoStateObject::isClosed(nxLuaParameters&, nxLuaResults& results)
{
    results.Add(_state.AreAllBitsSet(Closed));
    return true;
}

bool nxAlgoStateObject::Get_id(nxLuaResults& results)
{
    results.Add(_id);
    return true;
}

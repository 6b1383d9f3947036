#pragma once

#include "scriptFramework/lua/nxAlgoObject.h"
#include "scriptFramework/lua/nxLuaWrapper.h"

// Distributions, the global `quant`. Keeps nothing between calls. Owned by the script engine; no lock of its
// own.
class nxAlgoQuantObject : public nxAlgoObject
{
public:
    static constexpr const char* className = "nxAlgoQuantObject";
    static const nxLuaWrapper<nxAlgoQuantObject>::FunctionType Functions[];
    static const nxLuaWrapper<nxAlgoQuantObject>::PropertyType Properties[];

    using nxAlgoObject::nxAlgoObject;

    // An error with an empty text where the distribution is not defined.
    bool normcdf(nxLuaParameters&, nxLuaResults&);
};

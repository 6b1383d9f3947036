#pragma once

#include "scriptFramework/lua/nxAlgoObject.h"
#include "scriptFramework/lua/nxLuaWrapper.h"

// The global `date`: converts between date texts and seconds since 1970-01-01 UTC.
class nxAlgoDateObject : public nxAlgoObject
{
public:
    static constexpr const char* className = "nxAlgoDateObject";
    static const nxLuaWrapper<nxAlgoDateObject>::FunctionType Functions[];
    static const nxLuaWrapper<nxAlgoDateObject>::PropertyType Properties[];

    explicit nxAlgoDateObject(nxAlgoJobInterface* job) : nxAlgoObject(job) {}

    bool getAsSeconds(nxLuaParameters&, nxLuaResults&);
    bool getAsDate(nxLuaParameters&, nxLuaResults&);
};

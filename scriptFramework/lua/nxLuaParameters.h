#pragma once

#include "scriptFramework/lua/nxLuaParameter.h"

// The arguments of a bound call, numbered from 1 behind the object. There is one cursor: Parameter moves it
// and returns it, so read one parameter completely before asking for the next, and never keep the reference.
class nxLuaParameters
{
public:
    // In a setter the property's name stands between the object and the one parameter, the assigned value.
    nxLuaParameters(lua_State* L, bool setter);
    virtual ~nxLuaParameters() = default;
    nxLuaParameters(const nxLuaParameters&) = delete;
    nxLuaParameters& operator=(const nxLuaParameters&) = delete;

    unsigned int Count() const { return _count; }
    // Beyond the count, and for 0, a parameter that is neither valid nor null.
    const nxLuaParameter& Parameter(unsigned int number);

private:
    lua_State* _L;
    nxLuaParameter _cursor;
    unsigned int _count;
    int _base;
};

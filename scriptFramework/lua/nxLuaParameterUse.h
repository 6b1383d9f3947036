#pragma once

#include <vector>

struct lua_State;

// What a Lua function can do with its first parameter, an object of a bound class, as its code tells.
enum class nxLuaParameterUse {
    None,   // it declares neither a parameter nor `...`, so it cannot tell whether there is an argument
    Reads,  // it reads properties by name, calls functions of the class by name, and asks whether it is nil
    Any     // it may keep it, hand it on or compare it; or its code tells nothing, as that of a C function
};

// Of the function at the top of the stack, which stays there. `methods` are the functions of the class: what
// a field of such a name holds is a value of its own for each object, so that reading it is more than Reads,
// and calling one of another name is. Looks at the precompiled form, which takes some microseconds.
nxLuaParameterUse nxLuaFindParameterUse(lua_State* L, const std::vector<const char*>& methods);

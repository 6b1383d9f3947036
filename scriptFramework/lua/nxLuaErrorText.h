#pragma once

#include <string>

struct lua_State;

// The error value at the top of the stack as a text, also of a script that raises something else than a
// string.
std::string nxLuaErrorText(lua_State* L);

#include "scriptFramework/lua/nxLuaErrorText.h"

#include <lua.hpp>

std::string nxLuaErrorText(lua_State* L)
{
    if (const char* text = lua_tostring(L, -1)) return text;
    return std::string("error object is a ") + luaL_typename(L, -1) + " value";
}

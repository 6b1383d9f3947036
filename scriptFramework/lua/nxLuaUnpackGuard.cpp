#include "scriptFramework/lua/nxLuaUnpackGuard.h"

#include <limits>
#include <lua.hpp>

#ifdef LUAJIT_VERSION

void nxLuaGuardUnpack(lua_State*) {}  // this engine looks itself

#else

namespace {

// As the engine reads a bound: of anything that is no number it makes an argument error.
long long GetBound(lua_State* L, int argument, long long absent)
{
    return lua_isnumber(L, argument) ? static_cast<int>(lua_tointeger(L, argument)) : absent;
}

// Stands for the function that is its upvalue, and does what it does.
int Unpack(lua_State* L)
{
    const long long length = lua_istable(L, 1) ? static_cast<long long>(lua_objlen(L, 1)) : 0;
    if (GetBound(L, 3, length) - GetBound(L, 2, 1) >= std::numeric_limits<int>::max())
        return luaL_error(L, "too many results to unpack");
    return lua_tocfunction(L, lua_upvalueindex(1))(L);
}

}  // namespace

void nxLuaGuardUnpack(lua_State* L)
{
    lua_getglobal(L, "unpack");
    lua_pushcclosure(L, Unpack, 1);
    lua_setglobal(L, "unpack");
}

#endif

#include "scriptFramework/lua/nxLuaIsolation.h"

#include <clocale>
#include <lua.hpp>

#include "base/values/nxExactRandom.h"
#include "scriptFramework/lua/nxLuaParameter.h"
#include "scriptFramework/lua/nxLuaState.h"

namespace {

// As Lua reads the bounds of an interval: whole numbers of 32 bits.
long long CheckBound(lua_State* L, int argument)
{
    return static_cast<int>(nxLuaTruncate(luaL_checknumber(L, argument)));
}

int Random(lua_State* L)
{
    nxExactRandom& random = *nxLuaState::Of(L).random;
    const int count = lua_gettop(L);
    if (count > 2) return luaL_error(L, "wrong number of arguments");
    if (count == 0) {
        constexpr unsigned long long steps = 1ull << 53;  // as many as a double tells apart below 1
        lua_pushnumber(L, static_cast<double>(random.GetBelow(steps)) / static_cast<double>(steps));
        return 1;
    }
    const long long first = count == 1 ? 1 : CheckBound(L, 1);
    const long long last = CheckBound(L, count);
    luaL_argcheck(L, first <= last, count, "interval is empty");
    const auto size = static_cast<unsigned long long>(last - first) + 1;
    lua_pushnumber(L, static_cast<double>(first + static_cast<long long>(random.GetBelow(size))));
    return 1;
}

int RandomSeed(lua_State* L)
{
    const long long seed = nxLuaTruncateToLong(luaL_checknumber(L, 1));
    *nxLuaState::Of(L).random = nxExactRandom(static_cast<unsigned long long>(seed));
    return 0;
}

int SetLocale(lua_State* L)
{
    static constexpr int categories[] = {LC_ALL, LC_COLLATE, LC_CTYPE, LC_MONETARY, LC_NUMERIC, LC_TIME};
    static constexpr const char* names[] = {"all",     "collate", "ctype", "monetary",
                                            "numeric", "time",    nullptr};
    const bool isQuery = luaL_optstring(L, 1, nullptr) == nullptr;
    const int category = categories[luaL_checkoption(L, 2, names[0], names)];
    lua_pushstring(L, isQuery ? std::setlocale(category, nullptr) : nullptr);
    return 1;
}

// A function that the strict profile has taken away stays away.
void Replace(lua_State* L, const char* library, const char* name, lua_CFunction function)
{
    lua_getglobal(L, library);
    lua_getfield(L, -1, name);
    if (!lua_isnil(L, -1)) {
        lua_pushcfunction(L, function);
        lua_setfield(L, -3, name);
    }
    lua_pop(L, 2);
}

}  // namespace

void nxLuaIsolate(lua_State* L, unsigned long long seed)
{
    nxLuaState::Of(L).random = std::make_unique<nxExactRandom>(seed);
    luaL_checkstack(L, 3, "no room for a function");
    Replace(L, "math", "random", Random);
    Replace(L, "math", "randomseed", RandomSeed);
    Replace(L, "os", "setlocale", SetLocale);
}

#include "scriptFramework/lua/nxLuaLooks.h"

#include <lua.hpp>

#include "scriptFramework/lua/nxLuaClass.h"
#include "scriptFramework/lua/nxLuaState.h"

namespace {

enum class Look { Content, Metatable, Registry, Locals };

struct Row
{
    const char* library;
    const char* name;
    Look look;
};

constexpr Row Rows[] = {
    {"_G", "getmetatable", Look::Metatable},  {"debug", "getmetatable", Look::Metatable},
    {"debug", "getregistry", Look::Registry}, {"debug", "getlocal", Look::Locals},
    {"_G", "rawget", Look::Content},          {"_G", "rawset", Look::Content},
    {"_G", "setmetatable", Look::Content},    {"debug", "setmetatable", Look::Content},
    {"table", "foreach", Look::Content},      {"package", "seeall", Look::Content},
};

// The upvalues of a watched function.
constexpr int RowPlace = 1;
constexpr int OriginalPlace = 2;

int Watched(lua_State* L)
{
    nxLuaState& state = nxLuaState::Of(L);
    const Look look = static_cast<const Row*>(lua_touserdata(L, lua_upvalueindex(RowPlace)))->look;
    if (look == Look::Content || look == Look::Metatable) nxLuaClass::Complete(L, 1);
    if (look == Look::Locals) state.EndLoans(L);
    if (const lua_CFunction original = lua_tocfunction(L, lua_upvalueindex(OriginalPlace))) {
        // Within this frame, so that its argument errors name the function that the script called.
        const int results = original(L);
        if (look == Look::Registry ||
            (look == Look::Metatable && state.IsClassMetatable(lua_topointer(L, -1))))
            state.ExposeMetatables(L);
        return results;
    }
    // The engine implements it without one.
    if (look == Look::Registry || look == Look::Metatable) state.ExposeMetatables(L);
    lua_pushvalue(L, lua_upvalueindex(OriginalPlace));
    lua_insert(L, 1);
    lua_call(L, lua_gettop(L) - 1, LUA_MULTRET);
    return lua_gettop(L);
}

int Next(lua_State* L)
{
    luaL_checktype(L, 1, LUA_TTABLE);
    nxLuaClass::Complete(L, 1);
    lua_settop(L, 2);
    if (lua_next(L, 1)) return 2;
    lua_pushnil(L);
    return 1;
}

int Pairs(lua_State* L)
{
    luaL_checktype(L, 1, LUA_TTABLE);
    lua_pushvalue(L, lua_upvalueindex(1));
    lua_pushvalue(L, 1);
    lua_pushnil(L);
    return 3;
}

}  // namespace

void nxLuaWatchLooks(lua_State* L)
{
    const int top = lua_gettop(L);
    for (const Row& row : Rows) {
        if (row.look == Look::Content && !nxLuaClass::MakesOnDemand()) continue;
        lua_getglobal(L, row.library);
        lua_pushlightuserdata(L, const_cast<Row*>(&row));
        lua_getfield(L, -2, row.name);
        lua_pushcclosure(L, Watched, OriginalPlace);
        lua_setfield(L, -2, row.name);
    }
    if (nxLuaClass::MakesOnDemand()) {
        lua_pushcfunction(L, Next);
        lua_pushvalue(L, -1);
        lua_setglobal(L, "next");
        lua_pushcclosure(L, Pairs, 1);
        lua_setglobal(L, "pairs");
    }
    lua_settop(L, top);
}

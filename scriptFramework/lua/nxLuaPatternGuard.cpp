#include "scriptFramework/lua/nxLuaPatternGuard.h"

#include <lua.hpp>

#ifdef LUAJIT_VERSION

void nxLuaGuardPatterns(lua_State*) {}

#else

#include <pthread.h>

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace {

constexpr std::size_t Harmless = 8192;       // bytes of a pattern that any stack holds
constexpr std::size_t StackPerItem = 128;    // bytes; 96 measured
constexpr std::size_t Reserve = 256 * 1024;  // for all but the matcher

// Of this thread. The system is asked each time, since a script may move from one thread to another.
std::size_t GetStackLeft()
{
    pthread_attr_t attributes;
    if (pthread_getattr_np(pthread_self(), &attributes) != 0) return 0;
    void* end = nullptr;
    std::size_t size = 0;
    pthread_attr_getstack(&attributes, &end, &size);
    pthread_attr_destroy(&attributes);
    return static_cast<std::size_t>(static_cast<char*>(__builtin_frame_address(0)) - static_cast<char*>(end));
}

bool IsTooComplex(std::string_view pattern)
{
    const auto repeats = [](char c) { return c == '*' || c == '+' || c == '-' || c == '?'; };
    const auto items = static_cast<std::size_t>(std::ranges::count_if(pattern, repeats));
    return items * StackPerItem + Reserve > GetStackLeft();
}

// Stands for the function that is its upvalue, and does what it does.
template <bool canBePlain>
int Guard(lua_State* L)
{
    if (lua_type(L, 2) == LUA_TSTRING && lua_objlen(L, 2) > Harmless && !(canBePlain && lua_toboolean(L, 4)))
    {
        if (IsTooComplex({lua_tostring(L, 2), lua_objlen(L, 2)})) return luaL_error(L, "pattern too complex");
    }
    return lua_tocfunction(L, lua_upvalueindex(1))(L);
}

}  // namespace

void nxLuaGuardPatterns(lua_State* L)
{
    lua_getglobal(L, "string");
    for (const char* name : {"find", "match", "gmatch", "gsub"}) {
        lua_getfield(L, -1, name);
        lua_pushcclosure(L, std::string_view(name) == "find" ? Guard<true> : Guard<false>, 1);
        lua_setfield(L, -2, name);
    }
    lua_getfield(L, -1, "gmatch");
    lua_setfield(L, -2, "gfind");  // its old name
    lua_pop(L, 1);
}

#endif

#include "scriptFramework/lua/nxScriptConditions.h"

#include <lua.hpp>
#include <new>

nxScriptConditions::nxScriptConditions() : _state(luaL_newstate(), lua_close)
{
    if (_state == nullptr) throw std::bad_alloc();
    for (const lua_CFunction open : {luaopen_string, luaopen_math}) {
        lua_pushcfunction(_state.get(), open);
        lua_call(_state.get(), 0, 0);
    }
}

int nxScriptConditions::Add(const std::string& text, std::string& error)
{
    lua_State* const L = _state.get();
    const std::string expression = "return " + text;
    if (luaL_loadbuffer(L, expression.data(), expression.size(), "=condition") == 0)
        return luaL_ref(L, LUA_REGISTRYINDEX);
    error = lua_tostring(L, -1);
    lua_pop(L, 1);
    return -1;
}

void nxScriptConditions::Clear()
{
    for (const std::string& name : _names) {
        lua_pushnil(_state.get());
        lua_setglobal(_state.get(), name.c_str());
    }
    _names.clear();
}

// Takes the value at the top.
void nxScriptConditions::_Name(const char* name)
{
    lua_setglobal(_state.get(), name);
    _names.emplace_back(name);
}

void nxScriptConditions::Set(const char* name, std::string_view text)
{
    lua_pushlstring(_state.get(), text.data(), text.size());
    _Name(name);
}

void nxScriptConditions::Set(const char* name, double number)
{
    lua_pushnumber(_state.get(), number);
    _Name(name);
}

bool nxScriptConditions::Holds(int condition)
{
    lua_State* const L = _state.get();
    lua_rawgeti(L, LUA_REGISTRYINDEX, condition);
    const bool holds = lua_pcall(L, 0, 1, 0) == 0 && lua_toboolean(L, -1) != 0;
    lua_pop(L, 1);
    return holds;
}

std::string nxScriptConditions::Compute(const std::string& text)
{
    lua_State* const L = _state.get();
    std::string result;
    const int condition = Add(text, result);
    if (condition < 0) return result;
    lua_rawgeti(L, LUA_REGISTRYINDEX, condition);
    luaL_unref(L, LUA_REGISTRYINDEX, condition);
    static_cast<void>(lua_pcall(L, 0, 1, 0));
    const char* const told = lua_tostring(L, -1);
    result = told == nullptr ? luaL_typename(L, -1) : told;
    lua_pop(L, 1);
    return result;
}

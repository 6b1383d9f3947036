#include "scriptFramework/lua/nxScriptScope.h"

#include <algorithm>
#include <string_view>

namespace {

// Later ones hide earlier ones of their name.
void Add(nxScriptScope::Names& names, const char* name, int number)
{
    if (*name == '\0' || *name == '(') return;  // Lua's own
    const auto same = std::ranges::find(names, name, &nxScriptScope::Names::value_type::first);
    if (same != names.end()) names.erase(same);
    names.emplace_back(name, number);
}

}  // namespace

nxScriptScope* nxScriptScope::Push(lua_State* L)
{
    auto* const scope = static_cast<nxScriptScope*>(lua_newuserdata(L, sizeof(nxScriptScope)));
    scope->_hasFunction = false;
    return scope;
}

void nxScriptScope::SetFunction(const lua_Debug& activation)
{
    _activation = activation;
    _hasFunction = true;
}

void nxScriptScope::PushCompiled(lua_State* L, const std::string& text)
{
    constexpr const char* name = "=expression";
    const std::string expression = "return " + text;
    if (luaL_loadbuffer(L, expression.data(), expression.size(), name) == 0) return;
    // A precompiled function could break the state.
    if (text.starts_with(LUA_SIGNATURE[0])) lua_error(L);
    if (luaL_loadbuffer(L, text.data(), text.size(), name) == 0) {
        lua_remove(L, -2);
        return;
    }
    // Of an assignment the second message is the one that helps.
    if (text.find('=') == std::string::npos) lua_pop(L, 1);
    lua_error(L);
}

void nxScriptScope::PushEnvironment(lua_State* L, nxScriptScope& scope)
{
    lua_newtable(L);
    lua_newtable(L);
    lua_pushlightuserdata(L, &scope);
    lua_pushcclosure(L, _Get, 1);
    lua_setfield(L, -2, "__index");
    lua_pushlightuserdata(L, &scope);
    lua_pushcclosure(L, _Set, 1);
    lua_setfield(L, -2, "__newindex");
    lua_setmetatable(L, -2);
}

nxScriptScope::Names nxScriptScope::GetLocals(lua_State* L, const lua_Debug& activation)
{
    Names names;
    for (int number = 1; const char* const name = lua_getlocal(L, &activation, number); ++number) {
        lua_pop(L, 1);
        Add(names, name, number);
    }
    return names;
}

nxScriptScope::Names nxScriptScope::GetUpvalues(lua_State* L)
{
    Names names;
    for (int number = 1; const char* const name = lua_getupvalue(L, -1, number); ++number) {
        lua_pop(L, 1);
        Add(names, name, number);
    }
    return names;
}

// Leaves the function, where there is one.
nxScriptScope::Place nxScriptScope::_Find(lua_State* L, const char* name, int& number)
{
    if (!_hasFunction) return Place::Global;
    lua_getinfo(L, "f", &_activation);
    const auto find = [&](const Names& names) {
        const auto found = std::ranges::find(names, name, &Names::value_type::first);
        if (found != names.end()) number = found->second;
        return found != names.end();
    };
    return find(GetLocals(L, _activation)) ? Place::Local
           : find(GetUpvalues(L))          ? Place::Upvalue
                                           : Place::Global;
}

int nxScriptScope::_Get(lua_State* L)
{
    auto& scope = *static_cast<nxScriptScope*>(lua_touserdata(L, lua_upvalueindex(1)));
    int number = 0;
    switch (scope._Find(L, luaL_checkstring(L, 2), number)) {
        case Place::Local:
            lua_getlocal(L, &scope._activation, number);
            break;
        case Place::Upvalue:
            lua_getupvalue(L, -1, number);
            break;
        case Place::Global:
            if (scope._hasFunction)
                lua_getfenv(L, -1);
            else
                lua_pushvalue(L, LUA_GLOBALSINDEX);
            lua_pushvalue(L, 2);
            lua_gettable(L, -2);
            break;
    }
    return 1;
}

int nxScriptScope::_Set(lua_State* L)
{
    auto& scope = *static_cast<nxScriptScope*>(lua_touserdata(L, lua_upvalueindex(1)));
    int number = 0;
    const Place place = scope._Find(L, luaL_checkstring(L, 2), number);
    if (place == Place::Global) {
        if (scope._hasFunction)
            lua_getfenv(L, -1);
        else
            lua_pushvalue(L, LUA_GLOBALSINDEX);
        lua_pushvalue(L, 2);
        lua_pushvalue(L, 3);
        lua_settable(L, -3);
        return 0;
    }
    lua_pushvalue(L, 3);
    if (place == Place::Local)
        lua_setlocal(L, &scope._activation, number);
    else
        lua_setupvalue(L, -2, number);
    return 0;
}

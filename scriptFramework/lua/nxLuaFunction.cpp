#include "scriptFramework/lua/nxLuaFunction.h"

#include <lua.hpp>

#include "scriptFramework/lua/nxLuaArity.h"
#include "scriptFramework/lua/nxLuaClass.h"
#include "scriptFramework/lua/nxLuaEngine.h"

// False when the look-up itself raised an error; the answer is not cached then.
bool nxLuaFunction::_Check()
{
    if (!_checked) _checked = _engine._LookUpFunction(_name, _exists);
    return _checked;
}

bool nxLuaFunction::IsValid()
{
    return _Check() && _exists;
}

void nxLuaFunction::_PushFunction(lua_State* L)
{
    if (_nameReference == 0) {
        lua_pushstring(L, _name.c_str());
        _nameReference = luaL_ref(L, LUA_REGISTRYINDEX);
    }
    lua_rawgeti(L, LUA_REGISTRYINDEX, _nameReference);
    lua_gettable(L, LUA_GLOBALSINDEX);
}

// Whether the function at the top of the stack, which was pushed just now, ignores what it is given.
bool nxLuaFunction::_IgnoresArguments(lua_State* L)
{
    if (lua_topointer(L, -1) == _known) {
        if (!_knownIgnores) return false;
        // Another function may have come to lie where the known one lay, before it was collected.
        lua_rawgeti(L, LUA_REGISTRYINDEX, _knownReference);
        lua_rawgeti(L, -1, 1);
        const bool isSame = lua_rawequal(L, -1, -3) != 0;
        lua_pop(L, 2);
        if (isSame) return true;
    }
    _known = lua_topointer(L, -1);
    _knownIgnores = !nxLuaTakesArguments(L);
    if (!_knownIgnores) return false;
    if (_knownReference == 0) {
        lua_createtable(L, 1, 0);
        lua_createtable(L, 0, 1);
        lua_pushliteral(L, "v");
        lua_setfield(L, -2, "__mode");
        lua_setmetatable(L, -2);
        _knownReference = luaL_ref(L, LUA_REGISTRYINDEX);
    }
    lua_rawgeti(L, LUA_REGISTRYINDEX, _knownReference);
    lua_pushvalue(L, -2);
    lua_rawseti(L, -2, 1);
    lua_pop(L, 1);
    return true;
}

template <class Push>
bool nxLuaFunction::_Call(Push push)
{
    if (!_Check()) return false;
    if (!_exists) return true;
    // The look-up and the push may raise errors too: of a metamethod of the globals, or for want of memory.
    return _engine._Guard([&] {
        _engine._TuneCollector();
        _engine._state.MakeRoom();
        lua_State* L = _engine._GetState();
        _PushFunction(L);
        return _engine._CallFunction(push(L), 0);
    });
}

bool nxLuaFunction::Call()
{
    return _Call([](lua_State*) { return 0u; });
}

bool nxLuaFunction::Call(const std::string& argument)
{
    return _Call([&](lua_State*) {
        _engine._Push(argument);
        return 1u;
    });
}

bool nxLuaFunction::Call(const std::string& first, const std::string& second)
{
    return _Call([&](lua_State*) {
        _engine._Push(first);
        _engine._Push(second);
        return 2u;
    });
}

bool nxLuaFunction::Call(const std::string& first, const std::string& second, const std::string& third)
{
    return _Call([&](lua_State*) {
        _engine._Push(first);
        _engine._Push(second);
        _engine._Push(third);
        return 3u;
    });
}

bool nxLuaFunction::Call(unsigned int first, const std::string& second)
{
    return _Call([&](lua_State*) {
        _engine._Push(first);
        _engine._Push(second);
        return 2u;
    });
}

bool nxLuaFunction::_CallWithObject(const nxLuaClass& type, void* object)
{
    return _Call([&](lua_State* L) {
        // The push costs more than many a callback, and a function without parameters never sees it. A script
        // that holds the metatables would.
        if (!_engine._state.AreMetatablesExposed() && _IgnoresArguments(L)) return 0u;
        type.Push(L, object);
        return 1u;
    });
}

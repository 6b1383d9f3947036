#include "scriptFramework/lua/nxLuaFunction.h"

#include <lua.hpp>

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

template <class Push>
bool nxLuaFunction::_Call(Push push)
{
    if (!_Check()) return false;
    if (!_exists) return true;
    struct Request
    {
        nxLuaFunction& function;
        Push& push;
    } request{*this, push};
    const auto run = [](lua_State* L, void* context) {
        const Request& asked = *static_cast<const Request*>(context);
        asked.function._PushFunction(L);
        lua_call(L, asked.push(L), 0);
        return 0;
    };
    return _engine._RunProtected(run, &request);
}

bool nxLuaFunction::Call()
{
    return _Call([](lua_State*) { return 0; });
}

bool nxLuaFunction::Call(const std::string& argument)
{
    return _Call([&](lua_State*) {
        _engine._Push(argument);
        return 1;
    });
}

bool nxLuaFunction::Call(const std::string& first, const std::string& second)
{
    return _Call([&](lua_State*) {
        _engine._Push(first);
        _engine._Push(second);
        return 2;
    });
}

bool nxLuaFunction::Call(const std::string& first, const std::string& second, const std::string& third)
{
    return _Call([&](lua_State*) {
        _engine._Push(first);
        _engine._Push(second);
        _engine._Push(third);
        return 3;
    });
}

bool nxLuaFunction::Call(unsigned int first, const std::string& second)
{
    return _Call([&](lua_State*) {
        _engine._Push(first);
        _engine._Push(second);
        return 2;
    });
}

bool nxLuaFunction::_CallWithObject(const nxLuaClass& type, void* object)
{
    return _Call([&](lua_State* L) {
        type.Push(L, object);
        return 1;
    });
}

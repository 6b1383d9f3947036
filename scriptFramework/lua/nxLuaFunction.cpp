#include "scriptFramework/lua/nxLuaFunction.h"

#include <lua.hpp>
#include <optional>
#include <utility>

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

// What the function at the top of the stack, which was pushed just now, does with an object of the class.
nxLuaParameterUse nxLuaFunction::_FindUse(lua_State* L, const nxLuaClass& type)
{
    const void* const function = lua_topointer(L, -1);
    if (function == _known && &type == _knownType) return _knownUse;
    // Held, so that no other function can come to lie where the known one lies.
    _known = nullptr;
    if (_knownReference != 0) luaL_unref(L, LUA_REGISTRYINDEX, std::exchange(_knownReference, 0));
    const nxLuaParameterUse use = nxLuaFindParameterUse(L, type.GetFunctions());
    lua_pushvalue(L, -1);
    _knownReference = luaL_ref(L, LUA_REGISTRYINDEX);
    _known = function;
    _knownType = &type;
    return _knownUse = use;
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

// The wrapper costs more than many a callback, so a function that cannot see one gets none, and one that can
// only read it gets the same as the time before. A script that holds the metatables could tell.
bool nxLuaFunction::_CallWithObject(const nxLuaClass& type, void* object, bool endsWithCall)
{
    nxLuaState& state = _engine._state;
    std::optional<nxLuaFrames::Frame> frame;
    nxLuaClass::Loan loan(type, state);
    return _Call([&](lua_State* L) {
        const nxLuaParameterUse use =
            state.AreMetatablesExposed() ? nxLuaParameterUse::Any : _FindUse(L, type);
        if (use == nxLuaParameterUse::None) return 0u;
        const nxLuaFrames::Life life =
            endsWithCall ? frame.emplace(state.frames).GetLife() : nxLuaFrames::GetLasting();
        if (use == nxLuaParameterUse::Reads) {
            loan.Push(L, object, life);
        } else {
            type.Push(L, object, life);
        }
        return 1u;
    });
}

#include "scriptFramework/lua/nxLuaClass.h"

#include <atomic>
#include <concepts>
#include <exception>
#include <iterator>
#include <lua.hpp>
#include <utility>

#include "scriptFramework/lua/nxLuaParameters.h"
#include "scriptFramework/lua/nxLuaResults.h"
#include "scriptFramework/lua/nxLuaState.h"
#include "scriptFramework/lua/nxScriptProfile.h"

namespace {

std::atomic<unsigned int> classCount = 0;

constexpr const char* Metamethods[] = {"__gc", "__index", "__newindex"};

void SetClosure(lua_State* L, const char* key, lua_CFunction function)
{
    lua_pushcclosure(L, function, 0);
    lua_setfield(L, -2, key);
}

// Calls into an object. Where that fails the text is left at the top of the Lua stack, so that nothing waits
// to be destroyed when it is raised.
template <std::predicate<> Call>
bool Succeeds(lua_State* L, nxLuaResults& results, Call call)
{
    try {
        if (call()) return true;
    } catch (const std::exception& exception) {
        results.SetError(exception.what());
    }
    luaL_checkstack(L, 1, "no room for an error");
    lua_pushstring(L, results.GetError().c_str());
    return false;
}

int RaiseTop(lua_State* L)
{
    return luaL_error(L, "%s", lua_tostring(L, -1));
}

}  // namespace

nxLuaClass::nxLuaClass(const char* name, Rows rows)
    : _name(name), _rows(std::move(rows)), _index(classCount.fetch_add(1, std::memory_order_relaxed))
{
}

void nxLuaClass::Register(lua_State* L) const
{
    luaL_checkstack(L, 4, "no room for a class");
    nxLuaState::ClassReferences& references = nxLuaState::Of(L).References(_index);
    references.type = this;
    luaL_newmetatable(L, _name);
    if (lua_topointer(L, -1) != references.identity) {
        references.identity = lua_topointer(L, -1);
        references.rowsFilled = false;
        lua_pushvalue(L, -1);
        references.metatable = luaL_ref(L, LUA_REGISTRYINDEX);
        lua_createtable(L, static_cast<int>(_rows.functions.size()), 0);
        int position = 0;
        for (const char* name : _rows.functions) {
            lua_pushstring(L, name);
            lua_rawseti(L, -2, ++position);
        }
        references.names = luaL_ref(L, LUA_REGISTRYINDEX);
    }
    const nxLuaState& state = nxLuaState::Of(L);
    if (state.AreMetatablesExposed()) SetClosure(L, "__gc", CollectNothing);
    if (state.IsStrict()) nxLuaHideMetatable(L);
    SetClosure(L, "__index", _rows.dispatchGet);
    SetClosure(L, "__newindex", _rows.dispatchSet);
}

// The metatable as the registry holds it under the class's name: by reference while no script can have put
// another there.
void nxLuaClass::_PushMetatable(lua_State* L, const nxLuaState::ClassReferences& references,
                                bool exposed) const
{
    if (exposed) {
        lua_getfield(L, LUA_REGISTRYINDEX, _name);
        if (lua_istable(L, -1)) return;
    } else if (references.identity != nullptr) {
        lua_rawgeti(L, LUA_REGISTRYINDEX, references.metatable);
        return;
    }
    luaL_error(L, "class %s is not registered", _name);
}

void nxLuaClass::_FillRows(lua_State* L, int metatable) const
{
    nxLuaKeyMap& keys = nxLuaState::Of(L).References(_index).keys;
    keys.Reset(_rows.properties.size() + std::size(Metamethods));
    for (const char* name : Metamethods) {
        lua_pushstring(L, name);
        keys.Insert(lua_tostring(L, -1), nxLuaKeyMap::Metamethod);
        lua_pop(L, 1);
    }
    int row = 0;
    for (const char* name : _rows.properties) {
        lua_pushstring(L, name);
        keys.Insert(lua_tostring(L, -1), row);
        lua_pushnumber(L, row++);
        lua_rawset(L, metatable);
    }
}

void nxLuaClass::Push(lua_State* L, void* object) const
{
    Push(L, object, nxLuaState::Of(L).frames.GetLasting());
}

void nxLuaClass::PushMember(lua_State* L, void* object) const
{
    lua_rawgeti(L, 1, 0);
    const nxLuaFrames::Life life = static_cast<const Handle*>(lua_touserdata(L, -1))->life;
    lua_pop(L, 1);
    Push(L, object, life);
}

void nxLuaClass::Push(lua_State* L, void* object, nxLuaFrames::Life life) const
{
    luaL_checkstack(L, 6, "no room for an object");
    nxLuaState& state = nxLuaState::Of(L);
    nxLuaState::ClassReferences& references = state.References(_index);
    const bool exposed = state.AreMetatablesExposed();

    const int count = static_cast<int>(_rows.functions.size());
    lua_createtable(L, 0, count + 1);
    const int wrapper = lua_gettop(L);
    lua_rawgeti(L, LUA_REGISTRYINDEX, references.names);
    const int names = wrapper + 1;
    _PushMetatable(L, references, exposed);
    const int metatable = wrapper + 2;

    // The rows stand in the metatable from the first push on, and only a script that holds the metatable can
    // change them: then every push sets them right again.
    if (!references.rowsFilled || exposed) {
        _FillRows(L, metatable);
        references.rowsFilled = true;
    }

    *static_cast<Handle*>(lua_newuserdata(L, sizeof(Handle))) = Handle{nullptr, object, this, life};
    lua_pushvalue(L, metatable);
    lua_setmetatable(L, -2);
    lua_rawseti(L, wrapper, 0);
    lua_setmetatable(L, wrapper);

    for (int row = 0; row < count; ++row) {
        if (exposed) {
            lua_pushstring(L, _rows.functions[static_cast<std::size_t>(row)]);
        } else {
            lua_rawgeti(L, names, row + 1);
        }
        lua_pushnumber(L, row);
        lua_pushcclosure(L, _rows.dispatchFunction, 1);
        lua_rawset(L, wrapper);
    }
    lua_settop(L, wrapper);
}

// What the wrapper at index 1, a table, holds at key 0, which is left at the top of the stack. A userdata of
// another kind is an argument error: this is what keeps objects apart, whatever metatable a script gave them.
inline nxLuaClass::Held nxLuaClass::_Read(lua_State* L, void*& object) const
{
    lua_rawgeti(L, 1, 0);
    const Handle* handle = static_cast<const Handle*>(lua_touserdata(L, -1));
    if (handle == nullptr) return Held::Nothing;
    if (lua_objlen(L, -1) != sizeof(Handle) || handle->type != this) luaL_typerror(L, 1, _name);
    if (handle->life.IsOver()) return Held::Over;
    object = handle->object;
    return object == nullptr ? Held::Null : Held::Object;
}

// A script may put any userdata at key 0, so what it says of its class counts only if it is one of the
// classes.
const nxLuaClass* nxLuaClass::Find(lua_State* L, int index)
{
    if (!lua_istable(L, index)) return nullptr;
    lua_rawgeti(L, index, 0);
    const auto* const handle = static_cast<const Handle*>(lua_touserdata(L, -1));
    const bool isHandle = handle != nullptr && lua_objlen(L, -1) == sizeof(Handle);
    lua_pop(L, 1);
    if (!isHandle) return nullptr;
    for (const nxLuaState::ClassReferences& known : nxLuaState::Of(L).GetClasses())
        if (known.type != nullptr && known.type == handle->type) return known.type;
    return nullptr;
}

// For the two property dispatchers: null when the pointer was cleared, or the object is over.
inline void* nxLuaClass::_ReadObject(lua_State* L) const
{
    void* object = nullptr;
    if (!lua_istable(L, 1) || _Read(L, object) == Held::Nothing) luaL_typerror(L, 1, _name);
    return object;
}

// Looks the key at index 2 up in the metatable of the value at index 1. A key whose value is no number is
// none of ours, or a metamethod, and counts as row 0.
inline nxLuaClass::Key nxLuaClass::_FindKey(lua_State* L, unsigned int& row) const
{
    const nxLuaState& state = nxLuaState::Of(L);
    if (!state.AreMetatablesExposed()) {
        // Then Lua itself called, for a value with this class's metatable. (Or a debug hook that dug this
        // function up: what it passes is checked before any use.) A key that is no text has no address; asked
        // for one, a number would become a text where it lies.
        const void* const address = lua_type(L, 2) == LUA_TSTRING ? lua_tostring(L, 2) : nullptr;
        const int found = state.References(_index).keys.Find(address);
        row = found < 0 ? 0 : static_cast<unsigned int>(found);
        return found == nxLuaKeyMap::Absent       ? Key::Unknown
               : found == nxLuaKeyMap::Metamethod ? Key::Metamethod
                                                  : Key::Row;
    }
    if (lua_isnone(L, 2)) return Key::Unknown;
    if (!lua_getmetatable(L, 1)) luaL_typerror(L, 1, _name);
    lua_pushvalue(L, 2);
    lua_rawget(L, -2);
    row = nxLuaTruncate(lua_tonumber(L, -1));
    const Key key = lua_isnil(L, -1) ? Key::Unknown : lua_isnumber(L, -1) ? Key::Row : Key::Metamethod;
    lua_pop(L, 2);
    return key;
}

int nxLuaClass::DispatchFunction(lua_State* L) const
{
    if (!lua_istable(L, 1)) luaL_typerror(L, 1, _name);
    const unsigned int row = nxLuaTruncate(lua_tonumber(L, lua_upvalueindex(1)));
    nxLuaParameters parameters(L, false);  // which are all there is on the stack yet
    void* object = nullptr;
    const Held held = _Read(L, object);
    if (held == Held::Over) return luaL_error(L, "the event of this %s is over", _name);
    if (held != Held::Object || row >= _rows.functions.size()) return 0;
    {
        nxLuaResults results(L);
        if (Succeeds(L, results, [&] { return _rows.callFunction(object, row, parameters, results); }))
            return results.Count();
    }
    return RaiseTop(L);
}

int nxLuaClass::DispatchGet(lua_State* L) const
{
    unsigned int row = 0;
    if (_FindKey(L, row) != Key::Row || row >= _rows.properties.size()) {
        lua_pushnil(L);
        return 1;
    }
    void* object = _ReadObject(L);
    if (object == nullptr) return 0;
    {
        nxLuaResults results(L);
        if (Succeeds(L, results, [&] { return _rows.callGetter(object, row, results); }))
            return results.Count();
    }
    return RaiseTop(L);
}

int nxLuaClass::DispatchSet(lua_State* L) const
{
    lua_settop(L, 3);
    unsigned int row = 0;
    if (_FindKey(L, row) == Key::Unknown) {
        if (!lua_istable(L, 1)) luaL_typerror(L, 1, _name);
        lua_rawset(L, 1);
        return 0;
    }
    void* object = _ReadObject(L);
    lua_settop(L, 3);
    if (object == nullptr || row >= _rows.properties.size() || !_rows.hasSetter(row)) return 0;
    {
        nxLuaResults results(L);
        results.SetError("Error setting parameter");
        nxLuaParameters parameters(L, true);
        const nxLuaParameter& value = parameters.Parameter(1);
        if (Succeeds(L, results, [&] { return _rows.callSetter(object, row, value); })) return 0;
    }
    return RaiseTop(L);
}

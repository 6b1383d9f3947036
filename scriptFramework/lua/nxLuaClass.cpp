#include "scriptFramework/lua/nxLuaClass.h"

#include <atomic>
#include <concepts>
#include <exception>
#include <lua.hpp>
#include <utility>

#include "scriptFramework/lua/nxLuaParameters.h"
#include "scriptFramework/lua/nxLuaResults.h"
#include "scriptFramework/lua/nxLuaState.h"
#include "scriptFramework/lua/nxLuaTableNote.h"
#include "scriptFramework/lua/nxScriptProfile.h"

namespace {

std::atomic<unsigned int> classCount = 0;

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

// The object of the value at index 1 when that is the wrapper which is lent at this moment; null otherwise.
void* FindLent(lua_State* L, const nxLuaState::ClassReferences& references)
{
    const void* const lent = references.loan.lent;
    return lent != nullptr && lua_topointer(L, 1) == lent ? references.loan.handle->object : nullptr;
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

// The packed handle of the wrapper, a table, while that is one on demand; null otherwise.
void* nxLuaClass::_FindOnDemand(lua_State* L, int wrapper)
{
    return nxLuaTableNote::IsUsed ? nxLuaTableNote::Of(lua_topointer(L, wrapper)).packed : nullptr;
}

// What the wrapper at index 1, a table, holds. A userdata of another kind is an argument error: this is what
// keeps objects apart, whatever metatable a script gave them.
inline nxLuaClass::Held nxLuaClass::_Read(lua_State* L, nxLuaState& state, void*& object) const
{
    nxLuaFrames::Life life = nxLuaFrames::GetLasting();
    if (void* const bits = _FindOnDemand(L, 1)) {
        const nxLuaPackedHandle packed(bits);
        if (packed.GetClassIndex() != _index) luaL_typerror(L, 1, _name);
        life = packed.GetLife();
        object = packed.GetObject(state.frames);
    } else {
        lua_rawgeti(L, 1, 0);
        const auto* const handle = static_cast<const nxLuaHandle*>(lua_touserdata(L, -1));
        if (handle == nullptr) return Held::Nothing;
        if (lua_objlen(L, -1) != sizeof(nxLuaHandle) || handle->type != this) luaL_typerror(L, 1, _name);
        life = handle->life;
        object = handle->object;
    }
    if (!state.frames.IsOver(life)) return object == nullptr ? Held::Null : Held::Object;
    object = nullptr;
    return Held::Over;
}

// A script may put any userdata at key 0, so what it says of its class counts only if it is one of the
// classes.
const nxLuaClass* nxLuaClass::Find(lua_State* L, int index)
{
    if (!lua_istable(L, index)) return nullptr;
    nxLuaState& state = nxLuaState::Of(L);
    lua_pushvalue(L, index);
    const int wrapper = lua_gettop(L);
    const nxLuaClass* type = nullptr;
    if (void* const packed = _FindOnDemand(L, wrapper)) {
        type = state.References(nxLuaPackedHandle(packed).GetClassIndex()).type;
    } else {
        lua_rawgeti(L, wrapper, 0);
        const auto* const handle = static_cast<const nxLuaHandle*>(lua_touserdata(L, -1));
        const bool isHandle = handle != nullptr && lua_objlen(L, -1) == sizeof(nxLuaHandle);
        for (const nxLuaState::ClassReferences& known : state.GetClasses())
            if (isHandle && known.type != nullptr && known.type == handle->type) type = known.type;
    }
    lua_settop(L, wrapper - 1);
    return type;
}

// For the two property dispatchers: null when the pointer was cleared, or the object is over.
inline void* nxLuaClass::_ReadObject(lua_State* L, nxLuaState& state) const
{
    void* object = nullptr;
    if (!lua_istable(L, 1) || _Read(L, state, object) == Held::Nothing) luaL_typerror(L, 1, _name);
    return object;
}

// Looks the key at index 2 up in the metatable of the value at index 1. A key whose value is no number is
// none of ours, or a metamethod, and counts as row 0.
inline nxLuaClass::Key nxLuaClass::_FindKey(lua_State* L, const nxLuaState& state, unsigned int& row) const
{
    row = 0;
    if (!state.AreMetatablesExposed()) {
        // Then Lua itself called, for a value with this class's metatable. (Or a debug hook that dug this
        // function up: what it passes is checked before any use.) A key that is no text has no address; asked
        // for one, a number would become a text where it lies.
        const void* const address = lua_type(L, 2) == LUA_TSTRING ? lua_tostring(L, 2) : nullptr;
        const int found = state.References(_index).keys.Find(address);
        if (found == nxLuaKeyMap::Absent) return Key::Unknown;
        if (found == nxLuaKeyMap::Metamethod) return Key::Metamethod;
        row = static_cast<unsigned int>(found >= 0 ? found : nxLuaKeyMap::FirstFunction - found);
        return found >= 0 ? Key::Row : Key::Function;
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
    const unsigned int row = nxLuaTruncate(lua_tonumber(L, lua_upvalueindex(1)));
    nxLuaParameters parameters(L, false);  // which are all there is on the stack yet
    nxLuaState& state = nxLuaState::Of(L);
    void* object = FindLent(L, std::as_const(state).References(_index));
    if (object == nullptr) {
        if (!lua_istable(L, 1)) luaL_typerror(L, 1, _name);
        const Held held = _Read(L, state, object);
        if (held == Held::Over) return luaL_error(L, "the event of this %s is over", _name);
        if (held != Held::Object || row >= _rows.functions.size()) return 0;
    }
    {
        nxLuaResults results(L);
        if (Succeeds(L, results, [&] { return _rows.callFunction(object, row, parameters, results); }))
            return results.Count();
    }
    return RaiseTop(L);
}

int nxLuaClass::DispatchGet(lua_State* L) const
{
    nxLuaState& state = nxLuaState::Of(L);
    unsigned int row = 0;
    void* object = FindLent(L, std::as_const(state).References(_index));
    const Key key = _FindKey(L, state, row);
    if (key != Key::Row || row >= _rows.properties.size()) return _GetOnDemand(L, key, row);
    if (object == nullptr) object = _ReadObject(L, state);
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
    nxLuaState& state = nxLuaState::Of(L);
    unsigned int row = 0;
    const Key key = _FindKey(L, state, row);
    if (key == Key::Unknown || key == Key::Function) {
        if (!lua_istable(L, 1)) luaL_typerror(L, 1, _name);
        _SetOnDemand(L, key, row);
        return 0;
    }
    void* object = _ReadObject(L, state);
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

// How wrapper tables are made: whole, on demand, or lent.
#include <cstddef>
#include <iterator>
#include <lua.hpp>

#include "scriptFramework/lua/nxLuaClass.h"
#include "scriptFramework/lua/nxLuaTableNote.h"

namespace {

constexpr const char* Metamethods[] = {"__gc", "__index", "__newindex"};
constexpr int RoomToPush = 8;             // values
constexpr std::size_t MostOnDemand = 64;  // functions, each a bit of what is given

}  // namespace

bool nxLuaClass::MakesOnDemand()
{
    return nxLuaTableNote::IsUsed;
}

// The metatable as the registry holds it under the class's name: by reference while no script can have put
// another there. The rows stand in it from the first push on, and only a script that holds it can change
// them: then every push sets them right again.
void nxLuaClass::_PushMetatable(lua_State* L, nxLuaState& state) const
{
    const bool exposed = state.AreMetatablesExposed();
    nxLuaState::ClassReferences& references = state.References(_index);
    if (exposed) lua_getfield(L, LUA_REGISTRYINDEX, _name);
    if (!exposed && references.identity != nullptr) lua_rawgeti(L, LUA_REGISTRYINDEX, references.metatable);
    if (exposed ? !lua_istable(L, -1) : references.identity == nullptr)
        luaL_error(L, "class %s is not registered", _name);
    if (references.rowsFilled && !exposed) return;
    _FillRows(L, lua_gettop(L));
    references.rowsFilled = true;
}

void nxLuaClass::_FillRows(lua_State* L, int metatable) const
{
    nxLuaState::ClassReferences& references = nxLuaState::Of(L).References(_index);
    nxLuaKeyMap& keys = references.keys;
    keys.Reset(_rows.properties.size() + _rows.functions.size() + std::size(Metamethods));
    const auto insert = [&](const char* name, int row) {
        lua_pushstring(L, name);
        keys.Insert(lua_tostring(L, -1), row);
    };
    for (const char* name : Metamethods) {
        insert(name, nxLuaKeyMap::Metamethod);
        lua_pop(L, 1);
    }
    int row = nxLuaKeyMap::FirstFunction;
    for (const char* name : _rows.functions) {
        insert(name, row--);
        lua_pop(L, 1);
    }
    row = 0;
    for (const char* name : _rows.properties) {
        insert(name, row);
        lua_pushnumber(L, row++);
        lua_rawset(L, metatable);
    }
}

void nxLuaClass::_PushHandle(lua_State* L, void* object, nxLuaFrames::Life life) const
{
    void* const memory = lua_newuserdata(L, sizeof(nxLuaHandle));
    *static_cast<nxLuaHandle*>(memory) = nxLuaHandle{nullptr, object, this, life};
}

void nxLuaClass::_AddFunctions(lua_State* L, int wrapper, std::uint64_t without) const
{
    const nxLuaState& state = nxLuaState::Of(L);
    const bool exposed = state.AreMetatablesExposed();
    lua_rawgeti(L, LUA_REGISTRYINDEX, state.References(_index).names);
    const int names = lua_gettop(L);
    for (std::size_t row = 0; row < _rows.functions.size(); ++row) {
        if (row < MostOnDemand && (without >> row & 1) != 0) continue;
        if (exposed) {
            lua_pushstring(L, _rows.functions[row]);
        } else {
            lua_rawgeti(L, names, static_cast<int>(row) + 1);
        }
        lua_pushnumber(L, static_cast<double>(row));
        lua_pushcclosure(L, _rows.dispatchFunction, 1);
        lua_rawset(L, wrapper);
    }
    lua_settop(L, names - 1);
}

void nxLuaClass::_PushWhole(lua_State* L, void* object, nxLuaFrames::Life life) const
{
    lua_createtable(L, 0, static_cast<int>(_rows.functions.size()) + 1);
    const int wrapper = lua_gettop(L);
    _PushMetatable(L, nxLuaState::Of(L));
    _PushHandle(L, object, life);
    lua_pushvalue(L, wrapper + 1);
    lua_setmetatable(L, -2);
    lua_rawseti(L, wrapper, 0);
    lua_setmetatable(L, wrapper);
    _AddFunctions(L, wrapper, 0);
}

// Where scripts use no functions of the class, none has room in the table.
void nxLuaClass::_PushOnDemand(lua_State* L, nxLuaState& state, void* packed) const
{
    lua_createtable(L, 0, state.References(_index).givesFunctions ? 1 : 0);
    nxLuaTableNote::Of(lua_topointer(L, -1)).packed = packed;
    _PushMetatable(L, state);
    lua_setmetatable(L, -2);
}

void nxLuaClass::Push(lua_State* L, void* object) const
{
    Push(L, object, nxLuaFrames::GetLasting());
}

void nxLuaClass::Push(lua_State* L, void* object, nxLuaFrames::Life life) const
{
    luaL_checkstack(L, RoomToPush, "no room for an object");
    nxLuaState& state = nxLuaState::Of(L);
    const bool mayDemand =
        nxLuaTableNote::IsUsed && _rows.functions.size() <= MostOnDemand && !state.AreMetatablesExposed();
    if (void* packed = mayDemand ? nxLuaPackedHandle::Pack(_index, object, life, state.frames) : nullptr) {
        _PushOnDemand(L, state, packed);
    } else {
        _PushWhole(L, object, life);
    }
}

void nxLuaClass::PushMember(lua_State* L, void* object) const
{
    nxLuaFrames::Life life = nxLuaFrames::GetLasting();
    if (void* const packed = _FindOnDemand(L, 1)) {
        life = nxLuaPackedHandle(packed).GetLife();
    } else {
        lua_rawgeti(L, 1, 0);
        life = static_cast<const nxLuaHandle*>(lua_touserdata(L, -1))->life;
        lua_pop(L, 1);
    }
    Push(L, object, life);
}

void nxLuaClass::Complete(lua_State* L, int index)
{
    // Nearly every table that a script looks at has no metatable, or is no wrapper.
    if (!lua_istable(L, index) || !lua_getmetatable(L, index)) return;
    const int metatable = lua_gettop(L);
    nxLuaState& state = nxLuaState::Of(L);
    if (void* const packed = _FindOnDemand(L, index)) {
        luaL_checkstack(L, RoomToPush, "no room for an object");
        const nxLuaPackedHandle handle(packed);
        nxLuaTableNote& note = nxLuaTableNote::Of(lua_topointer(L, index));
        const nxLuaClass& type = *state.References(handle.GetClassIndex()).type;
        type._PushHandle(L, handle.GetObject(state.frames), handle.GetLife());
        lua_pushvalue(L, metatable);
        lua_setmetatable(L, -2);
        lua_rawseti(L, index, 0);
        type._AddFunctions(L, index, note.given);
        note = {};
    }
    lua_settop(L, metatable - 1);
}

// For the getter's dispatcher: what a key that is no property comes to. That is nil, but for what a wrapper
// on demand has not been asked for before.
int nxLuaClass::_GetOnDemand(lua_State* L, Key key, unsigned int row) const
{
    const bool isSpecial = key == Key::Unknown && _IsSpecial(L);
    const bool isOnDemand =
        (key == Key::Function || isSpecial) && lua_istable(L, 1) && _FindOnDemand(L, 1) != nullptr;
    if (isOnDemand && isSpecial) {
        Complete(L, 1);
        lua_pushvalue(L, 2);
        lua_rawget(L, 1);
    } else if (!isOnDemand || !_Give(L, row)) {
        lua_pushnil(L);
    }
    return 1;
}

// Leaves the function of the row on the stack, if the wrapper at index 1, one on demand, has never had it.
bool nxLuaClass::_Give(lua_State* L, unsigned int row) const
{
    nxLuaTableNote& note = nxLuaTableNote::Of(lua_topointer(L, 1));
    const std::uint64_t bit = std::uint64_t{1} << row % MostOnDemand;
    if ((note.given & bit) != 0) return false;
    nxLuaState::Of(L).References(_index).givesFunctions = true;
    lua_pushnumber(L, row);
    lua_pushcclosure(L, _rows.dispatchFunction, 1);
    lua_pushvalue(L, 2);
    lua_pushvalue(L, -2);
    lua_rawset(L, 1);
    note.given |= bit;
    return true;
}

// For the setter's dispatcher: the wrapper, a key that is no property, and a value to be stored.
void nxLuaClass::_SetOnDemand(lua_State* L, Key key, unsigned int row) const
{
    const bool isSpecial = key == Key::Unknown && _IsSpecial(L);
    if ((key == Key::Function || isSpecial) && _FindOnDemand(L, 1) != nullptr) {
        if (isSpecial) {
            Complete(L, 1);
        } else {
            nxLuaTableNote::Of(lua_topointer(L, 1)).given |= std::uint64_t{1} << row;
        }
    }
    lua_settop(L, 3);
    lua_rawset(L, 1);
}

// Whether the key at index 2, which no class metatable has, may be one that a whole wrapper holds: key 0, or
// once the metatables are read as they are, a function's name.
bool nxLuaClass::_IsSpecial(lua_State* L)
{
    return nxLuaState::Of(L).AreMetatablesExposed() ||
           (lua_type(L, 2) == LUA_TNUMBER && lua_tonumber(L, 2) == 0);
}

void nxLuaClass::Loan::Push(lua_State* L, void* object, nxLuaFrames::Life life)
{
    nxLuaState::Loan& loan = _state.References(_type._index).loan;
    if (!_state.CanLend() || loan.lent != nullptr) return _type.Push(L, object, life);
    if (loan.reference == 0) {
        luaL_checkstack(L, RoomToPush, "no room for an object");
        _type._PushWhole(L, object, life);
        lua_rawgeti(L, -1, 0);
        loan.handle = static_cast<nxLuaHandle*>(lua_touserdata(L, -1));
        lua_pop(L, 1);
        loan.wrapper = lua_topointer(L, -1);
        lua_pushvalue(L, -1);
        loan.reference = luaL_ref(L, LUA_REGISTRYINDEX);
    } else {
        lua_rawgeti(L, LUA_REGISTRYINDEX, loan.reference);
        loan.handle->object = object;
        loan.handle->life = life;
    }
    loan.lent = loan.wrapper;
    _isLent = true;
}

#include "scriptFramework/lua/nxLuaWatchedFunctions.h"

#include <lua.hpp>

#include "scriptFramework/lua/nxLuaState.h"

namespace {

enum class Kind { Find, Match, Iterate, Long, Print, Thread, NoHook, NoFinalizer };

struct Row
{
    const char* library;
    const char* name;
    const char* fullName;  // as the pulse tells it
    Kind kind;
};

constexpr Row Rows[] = {
    {"string", "find", "string.find", Kind::Find},
    {"string", "match", "string.match", Kind::Match},
    {"string", "gmatch", "string.gmatch", Kind::Iterate},
    {"string", "gsub", "string.gsub", Kind::Match},
    {"string", "rep", "string.rep", Kind::Long},
    {"string", "format", "string.format", Kind::Long},
    {"string", "upper", "string.upper", Kind::Long},
    {"string", "lower", "string.lower", Kind::Long},
    {"string", "reverse", "string.reverse", Kind::Long},
    {"table", "concat", "table.concat", Kind::Long},
    {"table", "sort", "table.sort", Kind::Long},
    {"table", "insert", "table.insert", Kind::Long},
    {"table", "remove", "table.remove", Kind::Long},
    {"table", "maxn", "table.maxn", Kind::Long},
    {"_G", "unpack", "unpack", Kind::Long},
    {"_G", "print", "print", Kind::Print},
    {"_G", "newproxy", "newproxy", Kind::NoFinalizer},
    {"coroutine", "create", "coroutine.create", Kind::Thread},
    {"coroutine", "wrap", "coroutine.wrap", Kind::Thread},
    {"debug", "sethook", "debug.sethook", Kind::NoHook},
    {"jit", "on", "jit.on", Kind::NoHook},
};

bool IsNeeded(const nxScriptWatch& watch, const nxScriptLimits& limits, Kind kind)
{
    switch (kind) {
        case Kind::Find:
        case Kind::Match:
        case Kind::Iterate:
            return limits.pattern != 0 || limits.subject != 0 || watch.HasPulse();
        case Kind::Long:
            return watch.HasPulse();
        case Kind::Print:
            return limits.log != 0 || limits.logLine != 0;
        case Kind::NoFinalizer:  // a pulse alone only asks, and finalizers are a script's right then
            return limits.instructions != 0 || limits.depth != 0;
        default:
            return watch.IsCounting();
    }
}

void Require(lua_State* L, bool isAllowed)
{
    if (!isAllowed) luaL_error(L, "%s", nxLuaState::Of(L).account->GetRefusal().c_str());
}

void CheckMatch(lua_State* L, bool canBePlain)
{
    nxScriptAccount& account = *nxLuaState::Of(L).account;
    const auto getLength = [&](int index) {
        return lua_type(L, index) == LUA_TSTRING ? lua_objlen(L, index) : 0;
    };
    Require(L, account.Allows(nxScriptLimit::Subject, getLength(1)));
    if (canBePlain && lua_toboolean(L, 4)) return;
    Require(L, account.Allows(nxScriptLimit::Pattern, getLength(2)));
}

void CheckPrint(lua_State* L)
{
    constexpr nxScriptLimits::Amount other = 24;  // bytes of a number, or of an address
    nxScriptLimits::Amount bytes = 0;
    for (int i = 1; i <= lua_gettop(L); ++i)
        bytes += lua_type(L, i) == LUA_TSTRING ? lua_objlen(L, i) : other;
    nxScriptAccount& account = *nxLuaState::Of(L).account;
    Require(L, account.Allows(nxScriptLimit::LogLine, bytes) && account.Adds(nxScriptLimit::Log, bytes));
}

void Check(lua_State* L, Kind kind)
{
    switch (kind) {
        case Kind::Find:
        case Kind::Match:
        case Kind::Iterate:
            return CheckMatch(L, kind == Kind::Find);
        case Kind::Print:
            return CheckPrint(L);
        case Kind::Thread:
            return nxLuaState::Of(L).watch->SpendThread(L);
        case Kind::NoHook:
            luaL_error(L, "not available, since instructions are counted");
            return;
        case Kind::NoFinalizer:
            // Lua calls finalizers without hooks.
            if (lua_type(L, 1) == LUA_TBOOLEAN && lua_toboolean(L, 1))
                luaL_error(L, "not available with a metatable, since instructions are counted");
            return;
        case Kind::Long:
            return;
    }
}

// The upvalues of a watched function: in front those of the original, which is called within this frame, so
// that its argument errors name what the script called.
constexpr int MostOriginals = 3;
constexpr int RowPlace = 4;
constexpr int OriginalPlace = 5;

int Watched(lua_State* L);

// Replaces the function at the top of the stack.
void Watch(lua_State* L, const Row& row)
{
    luaL_checkstack(L, OriginalPlace + 1, "no room for a function");
    const int original = lua_gettop(L);
    for (int i = 1; i <= MostOriginals; ++i)
        if (lua_getupvalue(L, original, i) == nullptr) lua_pushnil(L);
    lua_pushlightuserdata(L, const_cast<Row*>(&row));
    lua_pushvalue(L, original);
    lua_pushcclosure(L, Watched, OriginalPlace);
    lua_replace(L, original);
}

int CallOriginal(lua_State* L)
{
    if (const lua_CFunction function = lua_tocfunction(L, lua_upvalueindex(OriginalPlace)))
        return function(L);
    lua_pushvalue(L, lua_upvalueindex(OriginalPlace));
    lua_insert(L, 1);
    lua_call(L, lua_gettop(L) - 1, LUA_MULTRET);
    return lua_gettop(L);
}

int Watched(lua_State* L)
{
    static constexpr Row Iteration = {"string", "gmatch", "string.gmatch", Kind::Long};
    const Row& row = *static_cast<const Row*>(lua_touserdata(L, lua_upvalueindex(RowPlace)));
    Check(L, row.kind);
    int results = 0;
    {
        const nxScriptWatch::Running running(*nxLuaState::Of(L).watch, L, row.fullName);
        results = CallOriginal(L);
    }
    if (row.kind == Kind::Iterate && nxLuaState::Of(L).watch->HasPulse()) Watch(L, Iteration);
    return results;
}

}  // namespace

void nxLuaWatchFunctions(lua_State* L)
{
    luaL_checkstack(L, 2, "no room for a function");
    nxLuaState& state = nxLuaState::Of(L);
    const int top = lua_gettop(L);
    for (const Row& row : Rows) {
        lua_getglobal(L, row.library);
        if (lua_istable(L, -1) && IsNeeded(*state.watch, state.account->GetLimits(), row.kind)) {
            lua_getfield(L, -1, row.name);
            if (lua_tocfunction(L, -1) != Watched && lua_isfunction(L, -1)) {
                Watch(L, row);
                lua_pushvalue(L, -1);
                lua_setfield(L, -3, row.name);
                if (row.kind == Kind::Iterate) lua_setfield(L, -2, "gfind");
            }
        }
        lua_settop(L, top);
    }
}

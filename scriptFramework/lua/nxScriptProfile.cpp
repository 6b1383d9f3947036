#include "scriptFramework/lua/nxScriptProfile.h"

#include <algorithm>
#include <cstring>
#include <ctime>
#include <exception>
#include <iterator>
#include <lua.hpp>
#include <string_view>
#include <utility>

#include "scriptFramework/lua/nxLuaParameter.h"
#include "scriptFramework/lua/nxLuaState.h"

namespace {

// All that a script of the strict profile finds. A library that is named here without a list of its own
// stays whole.
constexpr std::string_view KeptGlobals[] = {
    "_G",       "_VERSION", "assert", "bit",    "debug",        "error",  "getmetatable",
    "ipairs",   "math",     "next",   "os",     "pairs",        "pcall",  "print",
    "rawequal", "rawget",   "rawset", "select", "setmetatable", "string", "table",
    "tonumber", "tostring", "type",   "unpack", "xpcall"};
constexpr std::string_view KeptOfDebug[] = {"getinfo", "traceback"};
constexpr std::string_view KeptOfOs[] = {"clock", "date", "time"};
constexpr std::string_view KeptOfString[] = {"byte",   "char",    "find", "format", "gfind",
                                             "gmatch", "gsub",    "len",  "lower",  "match",
                                             "rep",    "reverse", "sub",  "upper"};

constexpr const char* AllowedInfo = "nSluL";  // of debug.getinfo: neither the function nor what it holds

template <std::size_t count>
void KeepOnly(lua_State* L, const char* library, const std::string_view (&kept)[count])
{
    lua_getglobal(L, library);
    lua_pushnil(L);
    while (lua_next(L, -2)) {
        lua_pop(L, 1);
        const bool stays = lua_type(L, -1) == LUA_TSTRING && std::ranges::count(kept, lua_tostring(L, -1));
        if (stays) continue;
        lua_pushvalue(L, -1);
        lua_pushnil(L);
        lua_rawset(L, -4);
    }
    lua_pop(L, 1);
}

const nxScriptServices& Services(lua_State* L)
{
    return *nxLuaState::Of(L).services;
}

int Clock(lua_State* L)
{
    lua_pushnumber(L, Services(L).getClock());
    return 1;
}

// As Lua reads a field of the table at index 1; a negative `absent` means that it must be there.
int GetField(lua_State* L, const char* key, int absent)
{
    lua_getfield(L, 1, key);
    const int value = lua_isnumber(L, -1) ? static_cast<int>(nxLuaTruncate(lua_tonumber(L, -1))) : absent;
    if (absent < 0 && !lua_isnumber(L, -1)) luaL_error(L, "field '%s' missing in date table", key);
    lua_pop(L, 1);
    return value;
}

// A date in a table is one of UTC.
int Time(lua_State* L)
{
    if (lua_isnoneornil(L, 1)) {
        lua_pushnumber(L, static_cast<double>(Services(L).getTime()));
        return 1;
    }
    luaL_checktype(L, 1, LUA_TTABLE);
    const auto below = [](int value, unsigned int by) {
        return static_cast<int>(static_cast<unsigned int>(value) - by);
    };
    std::tm date{};
    date.tm_sec = GetField(L, "sec", 0);
    date.tm_min = GetField(L, "min", 0);
    date.tm_hour = GetField(L, "hour", 12);
    date.tm_mday = GetField(L, "day", -1);
    date.tm_mon = below(GetField(L, "month", -1), 1);
    date.tm_year = below(GetField(L, "year", -1), 1900);
    const std::time_t time = timegm(&date);
    if (time == -1) {
        lua_pushnil(L);
    } else {
        lua_pushnumber(L, static_cast<double>(time));
    }
    return 1;
}

int PushDateTable(lua_State* L, const std::tm& date)
{
    const std::pair<const char*, int> fields[] = {{"sec", date.tm_sec},       {"min", date.tm_min},
                                                  {"hour", date.tm_hour},     {"day", date.tm_mday},
                                                  {"month", date.tm_mon + 1}, {"year", date.tm_year + 1900},
                                                  {"wday", date.tm_wday + 1}, {"yday", date.tm_yday + 1}};
    lua_createtable(L, 0, static_cast<int>(std::size(fields)) + 1);
    for (const auto& [name, value] : fields) {
        lua_pushnumber(L, value);
        lua_setfield(L, -2, name);
    }
    lua_pushboolean(L, false);
    lua_setfield(L, -2, "isdst");
    return 1;
}

// Of UTC, with or without the mark that asks for it.
int Date(lua_State* L)
{
    const char* format = luaL_optstring(L, 1, "%c");
    const std::time_t time =
        lua_isnoneornil(L, 2) ? Services(L).getTime() : nxLuaTruncateToLong(luaL_checknumber(L, 2));
    if (*format == '!') ++format;
    std::tm date{};
    if (gmtime_r(&time, &date) == nullptr) {
        lua_pushnil(L);
        return 1;
    }
    if (std::strcmp(format, "*t") == 0) return PushDateTable(L, date);
    luaL_Buffer text;
    luaL_buffinit(L, &text);
    for (; *format != '\0'; ++format) {
        if (*format != '%' || format[1] == '\0') {
            luaL_addchar(&text, *format);
            continue;
        }
        const char conversion[] = {'%', *++format, '\0'};
        char part[200];
        if (*format == 's') {  // which the C library would count from the process's zone
            lua_pushfstring(L, "%f", static_cast<double>(time));
            luaL_addvalue(&text);
        } else {
            luaL_addlstring(&text, part, std::strftime(part, sizeof part, conversion, &date));
        }
    }
    luaL_pushresult(&text);
    return 1;
}

// As Lua's own, but the line goes to the host: what a process writes is not the script's.
int Print(lua_State* L)
{
    const int count = lua_gettop(L);
    luaL_checkstack(L, 2 * count + 3, "too many values to print");
    lua_getglobal(L, "tostring");
    const int toText = count + 1;
    for (int i = 1; i <= count; ++i) {
        if (i > 1) lua_pushliteral(L, "\t");
        lua_pushvalue(L, toText);
        lua_pushvalue(L, i);
        lua_call(L, 1, 1);
        if (!lua_isstring(L, -1)) return luaL_error(L, "'tostring' must return a string to 'print'");
    }
    lua_concat(L, lua_gettop(L) - toText);
    try {
        Services(L).onText(lua_tostring(L, -1));
        return 0;
    } catch (const std::exception& exception) {
        lua_pushstring(L, exception.what());
    }
    return luaL_error(L, "%s", lua_tostring(L, -1));
}

// Stands for the function that is its upvalue, with what it may be asked for limited.
int GetInfo(lua_State* L)
{
    const int argument = lua_isthread(L, 1) ? 3 : 2;
    const char* const what = luaL_optstring(L, argument, "");
    if (what[std::strspn(what, AllowedInfo)] != '\0') return luaL_argerror(L, argument, "invalid option");
    const int results = lua_tocfunction(L, lua_upvalueindex(1))(L);
    if (lua_istable(L, -1)) {
        lua_pushnil(L);
        lua_setfield(L, -2, "func");
    }
    return results;
}

// Stands for the function that is its upvalue. A level below 0 would be counted up to 0, a line for each.
int Traceback(lua_State* L)
{
    const int argument = lua_isthread(L, 1) ? 3 : 2;
    if (static_cast<int>(lua_tointeger(L, argument)) < 0)
        return luaL_argerror(L, argument, "level out of range");
    return lua_tocfunction(L, lua_upvalueindex(1))(L);
}

void Set(lua_State* L, const char* library, const char* name, lua_CFunction function)
{
    lua_getglobal(L, library);
    lua_getfield(L, -1, name);
    lua_pushcclosure(L, function, 1);
    lua_setfield(L, -2, name);
    lua_pop(L, 1);
}

}  // namespace

void nxLuaHideMetatable(lua_State* L)
{
    lua_pushboolean(L, false);
    lua_setfield(L, -2, "__metatable");
}

void nxRestrictScript(lua_State* L, nxScriptServices services)
{
    luaL_checkstack(L, 6, "no room for a library");
    nxLuaState::Of(L).services = std::make_unique<const nxScriptServices>(std::move(services));
    KeepOnly(L, "_G", KeptGlobals);
    KeepOnly(L, "debug", KeptOfDebug);
    KeepOnly(L, "os", KeptOfOs);
    KeepOnly(L, "string", KeptOfString);
    Set(L, "_G", "print", Print);
    Set(L, "debug", "getinfo", GetInfo);
    Set(L, "debug", "traceback", Traceback);
    Set(L, "os", "clock", Clock);
    Set(L, "os", "date", Date);
    Set(L, "os", "time", Time);
    lua_pushliteral(L, "");
    if (lua_getmetatable(L, -1)) {
        nxLuaHideMetatable(L);
        lua_pop(L, 1);
    }
    lua_pop(L, 1);
}

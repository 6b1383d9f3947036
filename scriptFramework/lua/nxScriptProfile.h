#pragma once

#include <functional>
#include <string>

struct lua_State;

// What a script finds of Lua's own libraries.
enum class nxScriptProfile {
    Base,   // the main chunk has all of them, callbacks what the sandbox leaves
    Strict  // the main chunk, too, has only what reaches nothing outside its Lua state
};

// What the strict profile gives a script in place of the process's own.
struct nxScriptServices
{
    std::function<long long()> getTime;                   // seconds since 1970 UTC: os.time, os.date
    std::function<double()> getClock;                     // seconds from any beginning: os.clock
    std::function<void(const std::string& text)> onText;  // what the script prints, a line without its end
};

// Takes away all but a list of functions and libraries, and puts those in place that serve the job. Globals
// that were set before go, too. For a state of nxLuaEngine; before the script's main chunk.
void nxRestrictScript(lua_State* L, nxScriptServices services);

// Has getmetatable answer false for what has the metatable at the top of the stack, and setmetatable refuse.
void nxLuaHideMetatable(lua_State* L);

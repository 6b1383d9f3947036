#pragma once

struct lua_State;

// Lua 5.1's matcher calls itself for each repeated item of a pattern and knows no bound, so that a long
// pattern overflows the stack of the thread and ends the process. With this, string.find, match, gmatch and
// gsub raise "pattern too complex" for a pattern that the rest of the stack would not hold, as later versions
// of Lua do. For a state with its libraries open; an engine that has a bound of its own is left as it is.
void nxLuaGuardPatterns(lua_State* L);

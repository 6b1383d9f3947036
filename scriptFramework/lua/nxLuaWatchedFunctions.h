#pragma once

struct lua_State;

// Puts functions in the place of those of Lua's libraries that the limits and the pulse of a state must know
// of: they measure what is to be matched or printed, tell the pulse what runs, count threads, and refuse what
// would take a script out of sight. They do what the originals do. For a state that has a watch; called again
// it replaces what the first call left alone.
void nxLuaWatchFunctions(lua_State* L);

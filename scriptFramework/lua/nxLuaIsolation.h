#pragma once

struct lua_State;

// Keeps a script from what Lua's libraries share between all states of a process, so that no job notices
// another: math.random and math.randomseed draw from a generator of this state's own, the same numbers on
// every machine; os.setlocale tells the locale and answers any change of it with nil. For a state of
// nxLuaEngine.
void nxLuaIsolate(lua_State* L, unsigned long long seed);

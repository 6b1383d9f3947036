#pragma once

struct lua_State;

// Puts functions in the place of those of Lua's libraries by which a script can look at more of a wrapper
// than its fields by name: its content as it lies there, its metatable, the registry, or the locals of a
// function that was given one. They do what the originals do, and let the binding know before.
void nxLuaWatchLooks(lua_State* L);

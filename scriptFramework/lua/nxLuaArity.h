#pragma once

struct lua_State;

// Whether the function at the top of the stack can tell if it is given arguments. False only for one that is
// written in Lua and declares neither parameters nor `...`; true whenever that cannot be found out. Leaves
// the stack as it is and raises nothing. Takes about as long as the function is large, so keep the answer.
bool nxLuaTakesArguments(lua_State* L);

#pragma once

struct lua_State;

// Has `unpack` refuse, with its own text, a range so wide that the count of its values overflows: the engine
// would write them past the end of its stack.
void nxLuaGuardUnpack(lua_State* L);

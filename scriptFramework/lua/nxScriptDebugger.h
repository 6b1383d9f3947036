#pragma once

#include <string>

class nxLuaState;
struct lua_State;

// Who follows a script line by line. All is called on the thread that runs the script, which stands still
// until the call returns; an nxScriptInspector looks at it meanwhile. A state without a debugger pays nothing
// for it.
//
// A thread is the script's main one or a coroutine.
class nxScriptDebugger
{
public:
    // The script's state is made, and is not loaded yet. It goes with its engine.
    virtual void OnState(nxLuaState& state) = 0;
    // The top function of the thread is about to run a line: of the script, or of another text of Lua.
    virtual void OnLine(lua_State* thread, unsigned int line) = 0;
    // A call of the host is about to fail, with its whole stack still there. `level` is the place on the
    // stack of the innermost function that failed; `text` tells why, as Lua told it.
    virtual void OnFailure(lua_State* thread, int level, const std::string& text) = 0;

protected:
    ~nxScriptDebugger() = default;
};

#pragma once

#include <lua.hpp>
#include <string>
#include <utility>
#include <vector>

// The names that an expression finds which is computed in the place of a function on the stack: its locals,
// its upvalues, its globals. Lives as a userdata on the stack of the Lua thread on which it is computed.
class nxScriptScope
{
public:
    using Names =
        std::vector<std::pair<std::string, int>>;  // with their places; each once, the one that is seen

    // Leaves a new one at the top of the stack: the globals alone.
    static nxScriptScope* Push(lua_State* L);
    // The activation is good as long as the function has not returned.
    void SetFunction(const lua_Debug& activation);

    // Leaves a function of no arguments, or raises why there is none: the text as an expression or, where it
    // is none, as a statement.
    static void PushCompiled(lua_State* L, const std::string& text);
    // Leaves a table whose names are those of the scope, which is to stay on the stack.
    static void PushEnvironment(lua_State* L, nxScriptScope& scope);

    static Names GetLocals(lua_State* L, const lua_Debug& activation);
    // Of the function at the top of the stack.
    static Names GetUpvalues(lua_State* L);

private:
    enum class Place { Local, Upvalue, Global };
    Place _Find(lua_State* L, const char* name, int& number);
    static int _Get(lua_State* L);
    static int _Set(lua_State* L);

    lua_Debug _activation;
    bool _hasFunction;
};

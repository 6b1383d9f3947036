#pragma once

#include <string>

#include "scriptFramework/lua/nxScriptAccount.h"
#include "scriptFramework/lua/nxScriptDebugger.h"
#include "scriptFramework/lua/nxScriptPulse.h"
#include "scriptFramework/lua/nxScriptSampler.h"

class nxLuaState;
struct lua_Debug;
struct lua_State;

// Ends a script's call that has run too long, or that the host wants to end, and tells by a pulse what it is
// doing. There is one for a state with limits or a pulse; for the thread that runs the script.
//
// A hook comes every Interval instructions, or as often as a sampler wants it. When a call is to end it
// throws what Lua takes for an exception of the host: so no handler of the script is called, which would run
// without hooks. What pcall and resume make of it lasts until the next instruction, since by then the hook
// comes at each.
class nxScriptWatch
{
public:
    static constexpr unsigned int Interval = 1000;

    // Of the state in which it is.
    explicit nxScriptWatch(nxLuaState& state);

    void SetPulse(nxScriptPulse* pulse) { _pulse = pulse; }
    void SetDebugger(nxScriptDebugger* debugger) { _debugger = debugger; }
    nxScriptDebugger* GetDebugger() const { return _debugger; }
    void SetSampler(nxScriptSampler* sampler) { _sampler = sampler; }
    // Takes what limits and pulse ask for. Before the load, whose main chunk could keep functions of Lua's
    // libraries that are replaced here; raises for want of memory.
    void Prepare();
    // The function at the top of the stack is the main chunk of the script, of which the pulse tells lines.
    void SetChunk(lua_State* L);
    // The name that Lua keeps of it, as an identity.
    const char* GetChunk() const { return _chunk; }

    // Whether instructions are looked at, so that a script may not set hooks of its own.
    bool IsCounting() const;
    bool HasPulse() const { return _pulse != nullptr; }

    // A call of the host begins. While it lasts a script can be ended.
    void Begin()
    {
        _isEnding = false;
        if (_interval != 0) _BeginCounting();
    }
    bool IsEnding() const { return _isEnding; }
    // Why, with the place; and the error of nxErrorEnum.
    const std::string& GetReason() const { return _reason; }
    unsigned int GetError() const { return _error; }

    // So many instructions have run, or something that is worth so many. Ends the call if it is time.
    void Spend(lua_State* L, nxScriptLimits::Amount instructions);
    // A thread of its own counts from its making, so that many short ones would never be counted.
    void SpendThread(lua_State* L) { Spend(L, _interval); }

    // A function of Lua's libraries that may run long, as long as it runs.
    class Running
    {
    public:
        Running(nxScriptWatch& watch, lua_State* L, const char* function);
        ~Running();
        Running(const Running&) = delete;
        Running& operator=(const Running&) = delete;

    private:
        nxScriptPulse* _pulse;
        const char* _before = nullptr;  // the one that called it, by way of the script
    };

private:
    static void _OnHook(lua_State* L, lua_Debug* activation);
    void _BeginCounting();
    void _SetHook();
    void _Follow(lua_State* L, lua_Debug* activation);
    void _TellLine(lua_State* L);
    [[noreturn]] void _End(lua_State* L, unsigned int error, const std::string& text);
    [[noreturn]] void _GoOnEnding(lua_State* L);

    nxLuaState& _state;
    nxScriptPulse* _pulse = nullptr;
    nxScriptDebugger* _debugger = nullptr;
    nxScriptSampler* _sampler = nullptr;
    const char* _chunk = nullptr;      // the name that Lua keeps of the script's chunk, as an identity
    unsigned int _interval = 0;        // 0: nothing is counted
    nxScriptLimits::Amount _left = 0;  // instructions
    bool _isBegun = false;             // the interval that runs began before the call
    bool _isEnding = false;
    unsigned int _error = 0;
    std::string _reason;
};

#pragma once

#include <cstddef>
#include <string>
#include <utility>

#include "scriptFramework/lua/nxLuaState.h"
#include "scriptFramework/lua/nxScriptHeap.h"
#include "scriptFramework/lua/nxScriptHelper.h"
#include "scriptFramework/lua/nxScriptProfile.h"

class nxLuaClass;

// Owns one Lua state, loads text into it and turns Lua's messages into messages a script author can use. The
// state opens with all standard libraries and closes with the engine. Used by one thread at a time; the
// script job sees to that.
//
// No Lua error leaves an operation: it becomes false (or 0) and a text in GetLastError().
class nxLuaEngine
{
public:
    nxLuaEngine() = default;
    virtual ~nxLuaEngine() = default;
    nxLuaEngine(const nxLuaEngine&) = delete;
    nxLuaEngine& operator=(const nxLuaEngine&) = delete;

    // Registers the custom objects and runs a file's main chunk. A failure leaves the last error empty and
    // the message on the Lua stack: callers of the file form only tell that it failed. Binary chunks are
    // refused.
    [[nodiscard]] bool LoadScript(const std::string& path);
    // The same for a text; a failure is told by the last error.
    [[nodiscard]] bool LoadText(const std::string& text);
    // Adds a library text to a state that is already set up.
    [[nodiscard]] bool LoadModule(const std::string& text);

    // Whether the global of that name is a function. The value fetched stays on the Lua stack.
    bool DoesFunctionExist(const std::string& name) const;
    // 0 when the global is absent or not numeric.
    double GetGlobalNumber(const std::string& name);
    // Sets the global to nil, whatever it is.
    void RemoveFunction(const std::string& name);
    [[nodiscard]] bool SetGlobalObject(const std::string& name, const nxLuaClass& type, void* object);

    void SetScriptHelper(const nxScriptHelper& helper) { _helper = helper; }
    // Tells of the latest load or call; empty when that succeeded.
    const std::string& GetLastError() const { return _lastError; }

    // Before the load, as SetPulse. Throws std::bad_alloc when the limit leaves no memory for that.
    void SetLimits(const nxScriptLimits& limits);
    const nxScriptLimits& GetLimits() const { return _state.account->GetLimits(); }
    // Of the memory alone, at any time.
    void SetMemoryLimit(std::size_t bytes)
    {
        nxScriptLimits limits = GetLimits();
        limits.memory = bytes;
        _state.account->SetLimits(limits);
        _state.TuneCollector();
    }
    const nxLuaPool& GetMemory() const { return _state.GetPool(); }
    // What the script does from now on is told by it; null ends that. It outlives the engine.
    void SetPulse(nxScriptPulse* pulse);
    // Who follows the script from now on; null ends that. It outlives the engine.
    void SetDebugger(nxScriptDebugger* debugger);
    // Who samples the script from now on; null ends that. It outlives the engine.
    void SetSampler(nxScriptSampler* sampler);
    // What the script holds, after a full collection. False: there was no memory to look, and the last error
    // tells.
    [[nodiscard]] bool ReadHeap(nxScriptHeap& heap);
    // The error of nxErrorEnum when a limit or the host ended the latest load or call; 0: neither did.
    unsigned int GetLimitError() const { return _limitError; }
    // See nxLuaIsolate. Before the load, whose main chunk could keep the functions that it replaces.
    void Isolate(unsigned long long seed);

    // Closes the Lua state ahead of the destructor, while what is bound to it still lives: finalizers of the
    // script run now, and may use it. Nothing else may be called behind.
    void Close() { _state.Close(); }

protected:
    // Puts the script under the strict profile, see nxRestrictScript. Before the load.
    void _Restrict(nxScriptServices services);
    bool _IsRestricted() const { return _state.IsStrict(); }

    [[nodiscard]] bool _CallFunction(unsigned int arguments, unsigned int results);
    void _GetFunction(const std::string& name);
    void _Push(const std::string& value);
    void _Push(unsigned int value);
    void _ResetError()
    {
        _lastError.clear();
        _limitError = 0;
    }
    // Takes the error value off the Lua stack and makes it the last error.
    void _ProcessError();

    virtual void _RegisterCustomObjects() {}
    // While OnShutdown runs.
    void _SetInShutdown(bool inShutdown) { _state.account->SetInShutdown(inShutdown); }

    lua_State* _GetState() const { return _state.GetState(); }

private:
    friend class nxLuaFunction;

    // Runs what touches Lua outside a protected call; an error in it becomes the last error and false.
    template <class Body>
    bool _Guard(Body body)
    {
        struct Run
        {
            Body& body;
            bool succeeded;
        } run{body, false};
        const auto call = [](void* context) {
            Run& what = *static_cast<Run*>(context);
            what.succeeded = what.body();
        };
        nxScriptWatch* const watch = _state.watch.get();
        if (watch != nullptr) watch->Begin();
        std::string error;
        if (!_state.Protect(call, &run, error)) {
            _SetError(std::move(error));
            run.succeeded = false;
        }
        return watch == nullptr ? run.succeeded : _Settle(run.succeeded);
    }
    // Leaves what a failure of the call below is told to first, and gives its place; 0: nobody.
    int _PushFailureHandler(int below);
    // The outcome of a call that the watch may have ended.
    bool _Settle(bool succeeded);
    void _PrepareWatch();
    // The script's chunk is at the top of the stack.
    void _NoteChunk();
    // Whether a global is a function, or false when finding out raised an error, which is the last error
    // then.
    [[nodiscard]] bool _LookUpFunction(const std::string& name, bool& exists);
    // Makes text the last error, its line number told in the terms of the script helper.
    void _SetError(std::string text);
    void _TellLine();
    void _TuneCollector();
    bool _LoadAndRun(const std::string& text, bool isScript);

    nxScriptHelper _helper;
    std::string _lastError;
    unsigned int _limitError = 0;
    unsigned int _untilTuning = 0;
    mutable nxLuaState _state;  // last, so that Lua closes first
};

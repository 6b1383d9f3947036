#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class nxLuaClass;
class nxLuaState;
struct lua_Debug;
struct lua_State;

// A script that stands still, as a person sees it: the functions on its stack, their variables, what an
// expression comes to. Getters and expressions run Lua, and so may do all that the script may; no error of
// theirs leaves an operation. For the thread that runs the script.
class nxScriptInspector
{
public:
    // Of a stack, the innermost function first.
    struct Frame
    {
        enum class Kind { Script, Library, Native };
        Kind kind;
        int level;  // names it for the other operations
        std::string name;
        unsigned int line;  // of the script's text; 0: not known
    };
    struct Value
    {
        std::string name;
        std::string text;  // as Lua would write it, or why it cannot be read
        std::string type;
        unsigned int reference = 0;  // has what is inside, until Resume; 0: nothing is
        std::size_t indexed = 0;     // places of its array, of which any part can be asked for
        std::string path;            // an expression that gives it; empty: none
    };
    // What was asked for, or why there is none.
    struct Outcome
    {
        std::optional<Value> value;
        std::string error;
    };
    enum class Part { All, Indexed, Named };

    explicit nxScriptInspector(nxLuaState& state) : _state(state) {}

    // The thread stands still; `level` is where its stack begins. isInHook: nothing that runs meanwhile is
    // counted or followed.
    void Stop(lua_State* thread, int level, bool isInHook);
    // No function of the script runs: there are globals alone.
    void StopIdle();
    // References end.
    void Resume();
    bool IsBusy() const { return _isBusy; }

    // Of a thread that is in a hook, without Stop.
    static bool IsDeeperThan(lua_State* thread, int depth);
    static int GetDepth(lua_State* thread);
    // Whether the top function is of the script's own text.
    bool IsInScript(lua_State* thread) const;

    std::vector<Frame> GetFrames(int first, int count) const;
    // Of the stack.
    int GetDepth() const { return GetDepth(_thread) - _level; }
    // References.
    unsigned int GetLocals(int level) { return _Add({Kind::Locals, level, {}}); }
    unsigned int GetUpvalues(int level) { return _Add({Kind::Upvalues, level, {}}); }
    unsigned int GetGlobals() { return _Add({Kind::Globals, NoLevel, {}}); }
    // What is inside of a reference, from `start` on and at most `count`; nothing for one that has ended.
    std::vector<Value> GetVariables(unsigned int reference, Part part, std::size_t start, std::size_t count);

    static constexpr int NoLevel = -1;
    // In a function's place with its locals and upvalues, or without one with the globals alone. A text that
    // is no expression runs as a statement.
    Outcome Evaluate(int level, const std::string& text);
    // Whether it comes to something other than nil and false.
    bool Test(int level, const std::string& text, std::string& error);
    // Assigns what the text comes to; gives the variable as it is then.
    Outcome Set(unsigned int reference, const std::string& name, const std::string& text);
    Outcome SetExpression(int level, const std::string& expression, const std::string& text);

private:
    enum class Kind { Locals, Upvalues, Globals, Value };
    struct Reference
    {
        Kind kind;
        int level;
        std::string path;
    };

    unsigned int _Add(Reference reference);
    // Protected, and neither counted nor followed.
    bool _Try(const std::function<void(lua_State*)>& body, std::string& error);
    // The function of a level, by which it is known while others stand above it on the stack.
    std::unique_ptr<lua_Debug> _Find(int level) const;
    void _Keep(unsigned int reference);
    void _PushKept(unsigned int reference);
    Value _Describe(std::string name, std::string path);
    Outcome _Give(const std::function<Value()>& body);
    void _AddNames(const Reference& reference, const lua_Debug* function, std::vector<Value>& values);
    void _AddInside(const Reference& reference, unsigned int number, Part part, std::size_t start,
                    std::size_t count, std::vector<Value>& values);
    void _AddObject(const nxLuaClass& type, const std::string& path, std::vector<Value>& values);
    void _AddTable(const std::string& path, Part part, std::size_t start, std::size_t count,
                   std::vector<Value>& values);
    void _AddGlobals(std::size_t start, std::size_t count, std::vector<Value>& values);
    void _AddEntries(std::vector<Value>& values, const std::string& path, std::size_t indexed,
                     bool isGlobals);
    void _Compute(const lua_Debug* function, const std::string& text);

    nxLuaState& _state;
    lua_State* _thread = nullptr;
    int _level = 0;
    bool _isInHook = false;
    bool _isBusy = false;
    std::vector<Reference> _references;
};

#pragma once

#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

class nxLuaClass;
class nxLuaState;
struct lua_Debug;
struct lua_State;

// Where a script spends its instructions and its time: a tree of the calls that were seen, the host's
// callbacks at its top. Each so many instructions count for the line that is about to run and for all that
// called it. The time since such a sample goes the same way; that of a native function is taken from its
// entry to its return and is its own. What looking costs is in no figure.
//
// Instructions depend on the script and its data alone. So do the nodes and their order.
//
// For the thread that runs the script. A state without a sampler pays nothing for it.
class nxScriptSampler
{
public:
    enum class Kind { Callback, Script, Library, Native };
    struct Function
    {
        Kind kind;
        std::string name;   // empty: it has none
        unsigned int line;  // of the text that defines it, at which it begins; 0: not of a text
    };
    // A place on a stack: a line of a function, which a place further out called.
    struct Node
    {
        unsigned int parent;    // comes before it; the first node is the root of all
        unsigned int function;  // its index
        unsigned int line;      // of the script's text; 0: none
        // Its own, without those that it called.
        unsigned long long instructions = 0;
        long long nanoseconds = 0;
        unsigned long long calls = 0;  // of a callback or of a native function
    };

    // A sample each so many instructions, which is at least 1.
    explicit nxScriptSampler(unsigned int interval);

    unsigned int GetInterval() const { return _interval; }
    // A call of the host begins and ends; they may be nested. End gives its time in nanoseconds, without that
    // of the calls within it.
    void Begin(std::string_view callback);
    long long End();
    // Gives callbacks the time that no sample took.
    void Finish();
    const std::vector<Node>& GetNodes() const { return _nodes; }
    const std::vector<Function>& GetFunctions() const { return _functions; }

    // For the state's watch: the state that is sampled, and what its hook tells.
    void SetState(nxLuaState& state) { _state = &state; }
    void OnCount(lua_State* thread, unsigned int instructions);
    void OnCall(lua_State* thread, lua_Debug* activation);
    void OnReturn(lua_State* thread, lua_Debug* activation);

private:
    struct Callback
    {
        unsigned int node = 0;
        long long waiting = 0;  // nanoseconds that the next sample takes
    };
    struct Call
    {
        Callback* callback;
        int depth;  // of the stack below it
        long long nanoseconds = 0;
    };
    struct Place
    {
        unsigned int function, line;
        bool operator==(const Place&) const = default;
    };
    struct Thread
    {
        lua_State* state;
        unsigned int node;  // which resumed it
    };
    struct Key
    {
        unsigned int parent;
        Place place;
        bool operator==(const Key&) const = default;
    };
    struct Hash
    {
        std::size_t operator()(const Key& key) const;
        std::size_t operator()(const std::pair<const void*, int>& key) const;
    };

    long long _Take();
    unsigned int _FindNode(lua_State* thread);
    unsigned int _WalkFrom(unsigned int base, lua_State* thread, int levels);
    unsigned int _GetChild(unsigned int parent, Place place);
    bool _ReadPlace(lua_State* thread, lua_Debug& activation, Place& place);
    unsigned int _FindScriptFunction(lua_State* thread, lua_Debug& activation);
    unsigned int _FindNative(lua_State* thread, lua_Debug& activation);
    std::string _NameNative(lua_State* thread, lua_Debug& activation);
    std::string _NameMember(lua_State* thread, lua_Debug& activation, const nxLuaClass& type);
    void _ReadLibraries();
    unsigned int _AddFunction(Function function);

    const unsigned int _interval;
    nxLuaState* _state = nullptr;
    std::vector<Node> _nodes;
    std::vector<Function> _functions;
    std::map<std::string, Callback, std::less<>> _callbacks;
    std::vector<Call> _calls;      // that run, the innermost last
    std::vector<Thread> _threads;  // coroutines that run, the innermost last
    std::vector<Place> _places;    // of the stack that is being read
    long long _mark = 0;           // nanoseconds; up to there time has been given away
    bool _isNative = false;        // a native function runs since then, and has called no other
    bool _hasLibraries = false;
    std::unordered_map<Key, unsigned int, Hash> _children;
    std::unordered_map<std::pair<const void*, int>, unsigned int, Hash> _known;  // by text and line
    std::unordered_map<std::string, unsigned int> _natives;                      // by name
    std::unordered_map<const void*, std::string> _libraries;                     // by function
};

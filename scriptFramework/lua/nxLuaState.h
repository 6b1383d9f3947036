#pragma once

#include <memory>
#include <string>
#include <vector>

#include "scriptFramework/lua/nxLuaFrames.h"
#include "scriptFramework/lua/nxLuaKeyMap.h"
#include "scriptFramework/lua/nxLuaPool.h"
#include "scriptFramework/lua/nxScriptWatch.h"

class nxExactRandom;
class nxLuaClass;
struct nxLuaHandle;
struct nxScriptServices;
struct lua_State;

// What the binding keeps beside one lua_State: its memory, and per bound class the registry references that
// spare a look-up by name on each push. Reached from the lua_State alone. One thread at a time, as the state.
class nxLuaState
{
public:
    // A wrapper that one call after another has, of those that cannot keep it.
    struct Loan
    {
        int reference = 0;              // registry reference of the wrapper; 0 before there is one
        const void* wrapper = nullptr;  // that table, to be recognised by
        nxLuaHandle* handle = nullptr;  // its userdata
        const void* lent = nullptr;     // the wrapper while a call has it
    };
    struct ClassReferences
    {
        const nxLuaClass* type = nullptr;
        const void* identity = nullptr;  // the class metatable, to be recognised by; null before registration
        int metatable = 0;               // registry reference of the class metatable
        int names = 0;                   // registry reference of a table of the interned names
        bool rowsFilled = false;         // the metatable holds the property rows
        bool givesFunctions = false;     // a wrapper on demand has been asked for one
        nxLuaKeyMap keys;                // what the metatable holds, and the functions, by key
        Loan loan;
    };

    nxLuaState();   // opens the state with all standard libraries; throws without memory
    ~nxLuaState();  // closes it
    nxLuaState(const nxLuaState&) = delete;
    nxLuaState& operator=(const nxLuaState&) = delete;

    // Closes the state before its time: finalizers of the script run, and may still use what is bound to it.
    // Nothing else may be called behind.
    void Close();

    // Raises a Lua error for a lua_State that no nxLuaState has opened.
    static nxLuaState& Of(lua_State* L);
    lua_State* GetState() const { return _L; }
    nxLuaPool& GetPool() { return _pool; }
    // The script's own random numbers; null for one that has the process's.
    std::unique_ptr<nxExactRandom> random;
    // What a script of the strict profile has in place of the process; null for the base one.
    std::unique_ptr<const nxScriptServices> services;
    bool IsStrict() const { return services != nullptr; }
    nxLuaFrames frames;
    // What the script holds and may hold.
    const std::shared_ptr<nxScriptAccount> account;
    // Null while nothing but memory is limited.
    std::unique_ptr<nxScriptWatch> watch;

    ClassReferences& References(unsigned int classIndex)
    {
        if (classIndex >= _classes.size()) [[unlikely]]
            _classes.resize(classIndex + 1);
        return _classes[classIndex];
    }
    const ClassReferences& References(unsigned int classIndex) const { return _classes[classIndex]; }
    const std::vector<ClassReferences>& GetClasses() const { return _classes; }

    // True once the script may hold a class metatable, by getmetatable, debug.getmetatable or
    // debug.getregistry, which the strict profile does not let it: from then on the metatables are read and
    // written as a script may see them.
    bool AreMetatablesExposed() const { return _metatablesExposed; }
    void ExposeMetatables(lua_State* L);
    bool IsClassMetatable(const void* table) const;

    // False once the script may look at the locals of its functions, or at the registry: then it would know a
    // wrapper again that was lent to one call after the other.
    bool CanLend() const { return _canLend; }
    void EndLoans(lua_State* L);

    // Makes room on the stack, if need be by dropping what loads and look-ups left there: nothing relies on
    // it.
    void MakeRoom(int values = 16);  // enough for an entry with an object

    // Runs body(context), which may touch Lua outside any protected call. False and a text when an error, or
    // an exception of the host out of what a script hung on its globals, ended it; what it left running is
    // closed then.
    bool Protect(void (*body)(void* context), void* context, std::string& error);

    // Sets the collector's pause by the size of the heap; to be called now and then. A small heap may grow to
    // several times its size before it is walked again, since walking it costs more than its garbage.
    void TuneCollector();

private:
    void _Open();
    void _CheckTables();

    nxLuaPool _pool;
    std::vector<ClassReferences> _classes;
    bool _metatablesExposed = false;
    bool _canLend = true;
    lua_State* _L = nullptr;
};

#pragma once

#include <vector>

#include "scriptFramework/lua/nxLuaHandle.h"
#include "scriptFramework/lua/nxLuaState.h"

struct lua_State;
class nxLuaParameter;
class nxLuaParameters;
class nxLuaResults;

// One bound class as Lua sees it: its name, the names of its rows, and how a row is called on an object. Made
// once per class by nxLuaWrapper and shared by all jobs of the process; immutable, so any thread may use it.
//
// An object in Lua is a wrapper table: at key 0 a userdata with the object's pointer (nxLuaHandle), one
// closure for each function, and the class metatable, which also maps each property name to its row. Lua
// never owns the object. The userdata bears, behind the pointer, the address of its class, so that no
// metatable that a script may exchange can make an object of one class pass for another, and how long the
// object may be used. One whose call is over reads as nil, its functions raise an error, and a write to it is
// ignored.
//
// Most wrappers live for one event, and of most a script uses little. So they are made on demand: such a
// wrapper is an empty table with an nxLuaPackedHandle in its nxLuaTableNote, and gets a function when it is
// first asked for. Before a script can look at one in any other way, Complete makes it whole. And
// a function that can only read its argument is lent the same whole wrapper each time.
class nxLuaClass
{
public:
    struct Rows
    {
        std::vector<const char*> functions;
        std::vector<const char*> properties;
        bool (*callFunction)(void* object, unsigned int row, nxLuaParameters&, nxLuaResults&);
        bool (*callGetter)(void* object, unsigned int row, nxLuaResults&);  // true for a null getter
        bool (*callSetter)(void* object, unsigned int row, const nxLuaParameter&);
        bool (*hasSetter)(unsigned int row);
        int (*dispatchFunction)(lua_State*);
        int (*dispatchGet)(lua_State*);
        int (*dispatchSet)(lua_State*);
    };

    nxLuaClass(const char* name, Rows rows);

    // Creates the class metatable, or sets its metamethods anew, and leaves it on the stack.
    void Register(lua_State* L) const;
    // Leaves a new wrapper table on the stack. Two pushes of one object are two tables. What comes without a
    // life lasts.
    void Push(lua_State* L, void* object) const;
    void Push(lua_State* L, void* object, nxLuaFrames::Life life) const;
    // Of a part of the object that a dispatcher is calling: usable as long as that one.
    void PushMember(lua_State* L, void* object) const;

    // False for an engine on which watching Lua's table functions would cost more than is won.
    static bool MakesOnDemand();
    // Makes the wrapper at the index whole, if it is one on demand.
    static void Complete(lua_State* L, int index);

    // For one call, from construction to destruction: the argument of a function that can only read it.
    class Loan
    {
    public:
        Loan(const nxLuaClass& type, nxLuaState& state) : _type(type), _state(state) {}
        ~Loan()
        {
            if (_isLent) _state.References(_type._index).loan.lent = nullptr;
        }
        Loan(const Loan&) = delete;
        Loan& operator=(const Loan&) = delete;

        void Push(lua_State* L, void* object, nxLuaFrames::Life life);

    private:
        const nxLuaClass& _type;
        nxLuaState& _state;
        bool _isLent = false;
    };

    // The class of the object that the value at the index is the wrapper of; null for any other value.
    static const nxLuaClass* Find(lua_State* L, int index);
    const char* GetName() const { return _name; }
    // Whether Lua calls it for a function or a property of this class.
    bool IsDispatcher(int (*function)(lua_State*)) const
    {
        return function == _rows.dispatchFunction || function == _rows.dispatchGet ||
               function == _rows.dispatchSet;
    }
    const std::vector<const char*>& GetProperties() const { return _rows.properties; }
    const std::vector<const char*>& GetFunctions() const { return _rows.functions; }

    // The native functions behind the metatable. They raise Lua errors; a std::exception out of the object
    // becomes one with its text. Whatever a script passes, no pointer of another class is followed.
    int DispatchFunction(lua_State* L) const;
    int DispatchGet(lua_State* L) const;
    int DispatchSet(lua_State* L) const;
    // The metatables' __gc: a wrapper never owns its object.
    static int CollectNothing(lua_State*) { return 0; }

private:
    enum class Held { Nothing, Null, Over, Object };
    Held _Read(lua_State* L, nxLuaState& state, void*& object) const;
    void* _ReadObject(lua_State* L, nxLuaState& state) const;
    enum class Key { Unknown, Metamethod, Row, Function };
    Key _FindKey(lua_State* L, const nxLuaState& state, unsigned int& row) const;
    static void* _FindOnDemand(lua_State* L, int wrapper);
    static bool _IsSpecial(lua_State* L);
    int _GetOnDemand(lua_State* L, Key key, unsigned int row) const;
    bool _Give(lua_State* L, unsigned int row) const;
    void _SetOnDemand(lua_State* L, Key key, unsigned int row) const;
    void _PushMetatable(lua_State* L, nxLuaState& state) const;
    void _PushHandle(lua_State* L, void* object, nxLuaFrames::Life life) const;
    void _PushWhole(lua_State* L, void* object, nxLuaFrames::Life life) const;
    void _PushOnDemand(lua_State* L, nxLuaState& state, void* packed) const;
    void _AddFunctions(lua_State* L, int wrapper, std::uint64_t without) const;
    void _FillRows(lua_State* L, int metatable) const;

    const char* _name;
    Rows _rows;
    unsigned int _index;
};

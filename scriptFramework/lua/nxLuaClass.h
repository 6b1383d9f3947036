#pragma once

#include <vector>

#include "scriptFramework/lua/nxLuaState.h"

struct lua_State;
class nxLuaParameter;
class nxLuaParameters;
class nxLuaResults;

// One bound class as Lua sees it: its name, the names of its rows, and how a row is called on an object. Made
// once per class by nxLuaWrapper and shared by all jobs of the process; immutable, so any thread may use it.
//
// An object in Lua is a wrapper table: at key 0 a userdata with the object's pointer, one closure for each
// function, and the class metatable, which also maps each property name to its row. Lua never owns the
// object. The userdata bears, behind the pointer, the address of its class, so that no metatable that a
// script may exchange can make an object of one class pass for another, and how long the object may be used.
// One whose call is over reads as nil, its functions raise an error, and a write to it is ignored.
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

    // The class of the object that the value at the index is the wrapper of; null for any other value.
    static const nxLuaClass* Find(lua_State* L, int index);
    const char* GetName() const { return _name; }
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
    struct Handle
    {
        // Lua's own libraries take the first word of a userdata for a file or a library when a script has
        // given it their metatable; null is a closed one.
        void* none;
        void* object;
        const nxLuaClass* type;
        nxLuaFrames::Life life;
    };

    enum class Held { Nothing, Null, Over, Object };
    Held _Read(lua_State* L, void*& object) const;
    void* _ReadObject(lua_State* L) const;
    enum class Key { Unknown, Metamethod, Row };
    Key _FindKey(lua_State* L, unsigned int& row) const;
    void _PushMetatable(lua_State* L, const nxLuaState::ClassReferences& references, bool exposed) const;
    void _FillRows(lua_State* L, int metatable) const;

    const char* _name;
    Rows _rows;
    unsigned int _index;
};

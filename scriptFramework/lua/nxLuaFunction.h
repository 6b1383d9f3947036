#pragma once

#include <string>

#include "scriptFramework/lua/nxLuaParameterUse.h"

class nxLuaClass;
class nxLuaEngine;
template <class T>
class nxLuaWrapper;
struct lua_State;

// A named global script function that the library may call. Bound to its name, not to a value: each call
// fetches the global anew. Only the answer to whether it exists is cached, on the first check, and never
// reviewed; so the first check must come after the script has been loaded.
//
// Call answers true when the script does not define the function: it has simply not asked for the event.
// False when it raised an error, which is the engine's last error then.
class nxLuaFunction
{
public:
    nxLuaFunction(nxLuaEngine& engine, const std::string& name) : _name(name), _engine(engine) {}
    virtual ~nxLuaFunction() = default;

    bool IsValid();

    [[nodiscard]] bool Call();
    [[nodiscard]] bool Call(const std::string& argument);
    [[nodiscard]] bool Call(const std::string& first, const std::string& second);
    [[nodiscard]] bool Call(const std::string& first, const std::string& second, const std::string& third);
    [[nodiscard]] bool Call(unsigned int first, const std::string& second);
    // With an object of a bound class as the one argument. The script sees the caller's object, not a copy.
    // One of a class that ends with its event needs to live for this call alone.
    template <class T>
    requires requires { T::className; }
    [[nodiscard]] bool Call(T& object) { return nxLuaWrapper<T>::Call(*this, object); }

private:
    template <class T>
    friend class nxLuaWrapper;

    [[nodiscard]] bool _CallWithObject(const nxLuaClass& type, void* object, bool endsWithCall);
    // push(L) leaves the arguments and answers their count.
    template <class Push>
    bool _Call(Push push);
    bool _Check();
    void _PushFunction(lua_State* L);
    nxLuaParameterUse _FindUse(lua_State* L, const nxLuaClass& type);

    std::string _name;
    nxLuaEngine& _engine;
    int _nameReference = 0;  // registry reference of the name as Lua keeps it, from the first call on
    // The function that was asked last what it does with an object of the class.
    const void* _known = nullptr;
    const nxLuaClass* _knownType = nullptr;
    nxLuaParameterUse _knownUse = nxLuaParameterUse::Any;
    int _knownReference = 0;  // its registry reference, 0 before there is one
    bool _checked = false;
    bool _exists = false;
};

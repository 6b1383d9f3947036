#pragma once

#include <string>

#include "scriptFramework/lua/nxLuaClass.h"
#include "scriptFramework/lua/nxLuaEngine.h"
#include "scriptFramework/lua/nxLuaFunction.h"
#include "scriptFramework/lua/nxLuaParameters.h"
#include "scriptFramework/lua/nxLuaResults.h"

// Turns the two static tables of a bound class into its Lua face. T declares
//
//     static const char* const className;
//     static const nxLuaWrapper<T>::FunctionType Functions[];
//     static const nxLuaWrapper<T>::PropertyType Properties[];
//
// each table ended by a row whose name is null. A row's position is its identity at run time. A class whose
// objects are there for one event alone, where they are a callback's argument, also declares
//
//     static constexpr bool endsWithEvent = true;
template <class T>
class nxLuaWrapper
{
public:
    struct FunctionType
    {
        const char* name;
        bool (T::*function)(nxLuaParameters&, nxLuaResults&);
    };

    struct PropertyType
    {
        const char* name;
        bool (T::*getter)(nxLuaResults&);          // null: write-only
        bool (T::*setter)(const nxLuaParameter&);  // null: read-only, a write is ignored
    };

    // Register and Push serve states of nxLuaEngine alone. On any other they raise the Lua error "not a state
    // of nxLuaEngine", so call them there, if at all, inside a protected call.
    static void Register(lua_State* L) { _class.Register(L); }

    // Leaves a new wrapper table on the stack. The object stays its owner's and must outlive the script's
    // use.
    static void Push(lua_State* L, T* object) { _class.Push(L, object); }

    // The same for a part of the object whose function or property runs: it can be used as long as that one.
    static void PushMember(lua_State* L, T* object) { _class.PushMember(L, object); }

    // Binds a wrapper table to a global name. False when Lua raised an error; the engine's last error tells.
    static bool SetGlobal(nxLuaEngine& engine, const std::string& name, T* object)
    {
        return engine.SetGlobalObject(name, _class, object);
    }

    // Runs a global script function with the object as its one argument.
    static bool Call(nxLuaFunction& function, T& object)
    {
        return function._CallWithObject(
            _class, &object, requires { requires T::endsWithEvent; });
    }

private:
    static int DispatchFunction(lua_State* L) { return _class.DispatchFunction(L); }
    static int DispatchGet(lua_State* L) { return _class.DispatchGet(L); }
    static int DispatchSet(lua_State* L) { return _class.DispatchSet(L); }

    static nxLuaClass::Rows _MakeRows()
    {
        nxLuaClass::Rows rows;
        for (const FunctionType* row = T::Functions; row->name != nullptr; ++row)
            rows.functions.push_back(row->name);
        for (const PropertyType* row = T::Properties; row->name != nullptr; ++row)
            rows.properties.push_back(row->name);
        rows.callFunction = [](void* object, unsigned int row, nxLuaParameters& parameters,
                               nxLuaResults& results) {
            return (static_cast<T*>(object)->*T::Functions[row].function)(parameters, results);
        };
        rows.callGetter = [](void* object, unsigned int row, nxLuaResults& results) {
            const auto getter = T::Properties[row].getter;
            return getter == nullptr || (static_cast<T*>(object)->*getter)(results);
        };
        rows.callSetter = [](void* object, unsigned int row, const nxLuaParameter& value) {
            return (static_cast<T*>(object)->*T::Properties[row].setter)(value);
        };
        rows.hasSetter = [](unsigned int row) { return T::Properties[row].setter != nullptr; };
        rows.dispatchFunction = DispatchFunction;
        rows.dispatchGet = DispatchGet;
        rows.dispatchSet = DispatchSet;
        return rows;
    }

    // Made before main, from tables that are constants: the dispatchers need not ask whether it exists.
    static inline const nxLuaClass _class{T::className, _MakeRows()};
};

// For a static_assert behind each table: the names are unique and the null row is the last.
template <class Row, int count>
consteval bool nxIsBoundTable(const Row (&rows)[count])
{
    const auto same = [](const char* a, const char* b) {
        while (*a != '\0' && *a == *b)
            ++a, ++b;
        return *a == *b;
    };
    for (int i = 0; i < count - 1; ++i) {
        if (rows[i].name == nullptr) return false;
        for (int j = 0; j < i; ++j)
            if (same(rows[i].name, rows[j].name)) return false;
    }
    return rows[count - 1].name == nullptr;
}

template <class T>
void nxLuaResults::AddObject(T* object)
{
    nxLuaWrapper<T>::Push(_L, object);
    ++_count;
}

template <class T>
void nxLuaResults::AddMember(T* object)
{
    nxLuaWrapper<T>::PushMember(_L, object);
    ++_count;
}

template <class T>
void nxLuaResults::AddObjectOrNull(T* object)
{
    if (object == nullptr) {
        AddNull();
    } else {
        AddObject(object);
    }
}

#pragma once

#include <functional>
#include <string>

#include "scriptFramework/lua/nxAlgoObject.h"
#include "scriptFramework/lua/nxLuaWrapper.h"
#include "tests/lua/nxTeller.h"

// A bound class for the tests of the binding itself: each kind of row once, with bodies that the test sets.
class nxProbe : public nxAlgoObject
{
public:
    static constexpr const char* className = "nxProbe";
    static const nxLuaWrapper<nxProbe>::FunctionType Functions[];
    static const nxLuaWrapper<nxProbe>::PropertyType Properties[];

    nxProbe() : nxAlgoObject(nullptr) {}

    std::function<bool(nxLuaParameters&, nxLuaResults&)> body = [](auto&, auto&) { return true; };
    double first = 1.0;
    std::string writes;  // each setter call: the row's name and the value
    class nxOther* other = nullptr;

    bool run(nxLuaParameters& parameters, nxLuaResults& results) { return body(parameters, results); }
    bool again(nxLuaParameters&, nxLuaResults& results);  // the same object in a new wrapper
    bool getOther(nxLuaParameters&, nxLuaResults& results);

    bool Get_first(nxLuaResults& results);
    bool Set_first(const nxLuaParameter& value);
    bool Get_readOnly(nxLuaResults& results);
    bool Set_writeOnly(const nxLuaParameter& value);
    bool Get_failing(nxLuaResults& results);
    bool Set_failing(const nxLuaParameter& value);
};

// Another class, whose objects begin with no nxAlgoObject, and are there for one event.
struct nxOtherBase
{
    virtual ~nxOtherBase() = default;
    int padding = 7;
};

class nxOther : public nxOtherBase, public nxAlgoObject
{
public:
    static constexpr const char* className = "nxOther";
    static constexpr bool endsWithEvent = true;
    static const nxLuaWrapper<nxOther>::FunctionType Functions[];
    static const nxLuaWrapper<nxOther>::PropertyType Properties[];

    nxOther() : nxAlgoObject(nullptr) {}

    double value = 42.0;

    bool twice(nxLuaParameters&, nxLuaResults& results);
    bool Get_value(nxLuaResults& results);
    bool Set_value(const nxLuaParameter& given);
};

// An engine with both classes registered, the globals `probe`, `other`, `teller` and `cleared`, a probe
// without an object, and evaluate (see nxScriptJob.h).
class nxProbeEngine : public nxLuaEngine
{
public:
    nxProbeEngine();

    nxProbe probe;
    nxOther other;
    nxTeller teller{*this};

    // In the messages of argument errors, '?' stands for what the Lua engines name each in their own way.
    std::string Evaluate(const std::string& code);

    using nxLuaEngine::_CallFunction;
    using nxLuaEngine::_GetState;

protected:
    void _RegisterCustomObjects() override;
};

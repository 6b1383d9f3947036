#pragma once

#include "scriptFramework/lua/nxAlgoObject.h"
#include "scriptFramework/lua/nxLuaWrapper.h"

class nxProbeEngine;

// A bound class that tells what calls look like from the inside: its functions answer with what their
// arguments read as, or give what they are asked for.
class nxTeller : public nxAlgoObject
{
public:
    static constexpr const char* className = "nxTeller";
    static const nxLuaWrapper<nxTeller>::FunctionType Functions[];
    static const nxLuaWrapper<nxTeller>::PropertyType Properties[];

    explicit nxTeller(nxProbeEngine& engine) : nxAlgoObject(nullptr), _engine(engine) {}

    bool takeWrites(nxLuaParameters&, nxLuaResults&);
    bool isolate(nxLuaParameters&, nxLuaResults&);
    bool fail(nxLuaParameters&, nxLuaResults&);
    bool give(nxLuaParameters&, nxLuaResults&);
    bool types(nxLuaParameters&, nxLuaResults&);
    bool missing(nxLuaParameters&, nxLuaResults&);
    bool read(nxLuaParameters&, nxLuaResults&);
    bool named(nxLuaParameters&, nxLuaResults&);
    bool vector(nxLuaParameters&, nxLuaResults&);
    bool matrix(nxLuaParameters&, nxLuaResults&);
    bool map(nxLuaParameters&, nxLuaResults&);

private:
    nxProbeEngine& _engine;
};

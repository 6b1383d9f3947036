#pragma once

#include "base/enums/nxBitMasks.h"
#include "scriptFramework/lua/nxAlgoObject.h"
#include "scriptFramework/lua/nxLuaWrapper.h"

// Whether a product's market is pre-open, open or closed: the argument of OnProductState, and the object
// behind a product's `state`. Holds a value. Each function tests one bit alone, so more than one can be true.
class nxAlgoStateObject : public nxAlgoObject
{
public:
    static constexpr const char* className = "nxAlgoStateObject";
    static constexpr bool endsWithEvent = true;
    static const nxLuaWrapper<nxAlgoStateObject>::FunctionType Functions[];
    static const nxLuaWrapper<nxAlgoStateObject>::PropertyType Properties[];

    // The bits of the state.
    static constexpr unsigned int PreOpen = 1u << 0;
    static constexpr unsigned int Open = 1u << 1;
    static constexpr unsigned int Closed = 1u << 3;

    nxAlgoStateObject(nxAlgoJobInterface* job, unsigned int id);
    nxAlgoStateObject(nxAlgoJobInterface* job, unsigned int id, nxProductStateBitMask state);

    void SetState(nxProductStateBitMask state) { _state = state; }

    bool isPreOpen(nxLuaParameters&, nxLuaResults&);
    bool isOpen(nxLuaParameters&, nxLuaResults&);
    bool isClosed(nxLuaParameters&, nxLuaResults&);

    bool Get_id(nxLuaResults&);

private:
    unsigned int _id;
    nxProductStateBitMask _state;
};

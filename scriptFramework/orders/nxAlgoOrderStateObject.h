#pragma once

#include "base/enums/nxOrderStatusEnum.h"
#include "scriptFramework/lua/nxAlgoObject.h"
#include "scriptFramework/lua/nxLuaWrapper.h"

// The answer of an order's `state`: a status with a set of questions about it, which overlap. It belongs to
// its order, which sets it anew at each read, so every script table over it shows the newest read.
class nxAlgoOrderStateObject : public nxAlgoObject
{
public:
    static constexpr const char* className = "nxAlgoOrderStateObject";
    static const nxLuaWrapper<nxAlgoOrderStateObject>::FunctionType Functions[];
    static const nxLuaWrapper<nxAlgoOrderStateObject>::PropertyType Properties[];

    explicit nxAlgoOrderStateObject(nxAlgoJobInterface* job) : nxAlgoObject(job) {}

    void SetStatus(const nxOrderStatusEnum& status) { _status = status.GetValue(); }
    void SetPendingAmend(bool pending) { _pendingAmend = pending; }
    void SetPendingCancel(bool pending) { _pendingCancel = pending; }

    bool isWorking(nxLuaParameters&, nxLuaResults&);
    // Also before the host has told any status.
    bool isPending(nxLuaParameters&, nxLuaResults&);
    bool isFilled(nxLuaParameters&, nxLuaResults&);
    bool isDeleted(nxLuaParameters&, nxLuaResults&);
    // What is left over: a status that is neither working, deleted nor filled, and so also one of pending.
    bool isFailed(nxLuaParameters&, nxLuaResults&);
    bool isPendingAmend(nxLuaParameters&, nxLuaResults&);
    bool isPendingCancel(nxLuaParameters&, nxLuaResults&);

private:
    nxOrderStatusEnum _GetStatus() const { return nxOrderStatusEnum(_status); }

    unsigned int _status = nxEnum_Undefined;  // the bare value: each order has one of these objects
    bool _pendingAmend = false;
    bool _pendingCancel = false;
};

#pragma once

#include "scriptFramework/lua/nxAlgoObject.h"
#include "scriptFramework/lua/nxLuaWrapper.h"

class nxAlgoOrderObject;

// A numbered set of orders: the answer of job:getOrders and job:getJobOrders. The host derives from it and
// keeps it, and its orders, as long as the script can reach them. Used on the thread that runs the script.
class nxAlgoOrderCollectionObject : public nxAlgoObject
{
public:
    static constexpr const char* className = "nxAlgoOrderCollectionObject";
    static const nxLuaWrapper<nxAlgoOrderCollectionObject>::FunctionType Functions[];
    static const nxLuaWrapper<nxAlgoOrderCollectionObject>::PropertyType Properties[];

    explicit nxAlgoOrderCollectionObject(nxAlgoJobInterface* job) : nxAlgoObject(job) {}

    // Null beyond the orders. From where the index counts is the host's. Asked twice for an order that there
    // is, and must give the same both times.
    virtual nxAlgoOrderObject* GetOrder(unsigned int index) = 0;
    virtual unsigned int GetCount() = 0;

    bool getOrder(nxLuaParameters&, nxLuaResults&);
    // Does nothing, whatever its arguments.
    bool setFilter(nxLuaParameters&, nxLuaResults&);

    bool Get_count(nxLuaResults&);
};

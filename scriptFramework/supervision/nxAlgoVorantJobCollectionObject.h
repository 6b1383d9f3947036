#pragma once

#include "scriptFramework/lua/nxAlgoObject.h"
#include "scriptFramework/lua/nxLuaWrapper.h"

class nxAlgoVorantJobObject;

// The other jobs that a script may watch, as job:getVorantJobs() gives them. The host derives from it and
// keeps it, and the jobs that it hands out, alive as long as the script can reach them. Used on the thread
// that runs the script.
class nxAlgoVorantJobCollectionObject : public nxAlgoObject
{
public:
    static constexpr const char* className = "nxAlgoVorantJobCollectionObject";
    static const nxLuaWrapper<nxAlgoVorantJobCollectionObject>::FunctionType Functions[];
    static const nxLuaWrapper<nxAlgoVorantJobCollectionObject>::PropertyType Properties[];

    using nxAlgoObject::nxAlgoObject;

    bool getVorantJob(nxLuaParameters&, nxLuaResults&);

    bool Get_count(nxLuaResults&);

protected:
    virtual unsigned int _GetCount() = 0;
    // Whether the index counts from 0 or 1 is the host's choice. A null reaches the script as an object whose
    // functions do nothing and whose properties are nil.
    virtual nxAlgoVorantJobObject* _GetVorantJob(unsigned int index) = 0;
};

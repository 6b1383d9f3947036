#pragma once

#include <map>
#include <string>

#include "base/records/nxVorantJobStatus.h"
#include "base/threads/nxMutex.h"
#include "base/values/nxDecimal.h"
#include "base/values/nxValueWrapper.h"
#include "scriptFramework/lua/nxAlgoObject.h"
#include "scriptFramework/lua/nxLuaWrapper.h"

// Another job of the same host, live: what a script reads, stops and subscribes to. The host derives from it,
// fills the protected fields, keeps it alive as long as the script can reach it, and tells of changes by the
// OnJob... entries of nxAlgoJobObject. A script that kept the object reads the latest values without them.
//
// Scripts read on their own thread. From another one the host may replace _status under _statusMutex, and the
// price and volume of the selection under _selectionMutex; the two are never held together. The other fields
// have no lock: the host sets them before it hands the object out, or between two callbacks on the thread
// that runs the script.
class nxAlgoVorantJobObject : public nxAlgoObject
{
public:
    static constexpr const char* className = "nxAlgoVorantJobObject";
    static const nxLuaWrapper<nxAlgoVorantJobObject>::FunctionType Functions[];
    static const nxLuaWrapper<nxAlgoVorantJobObject>::PropertyType Properties[];

    explicit nxAlgoVorantJobObject(nxAlgoJobInterface* job) : nxAlgoObject(job) {}

    bool stop(nxLuaParameters&, nxLuaResults&);
    bool subscribe(nxLuaParameters&, nxLuaResults&);
    bool getOutputParameter(nxLuaParameters&, nxLuaResults&);

    bool Get_id(nxLuaResults&);
    bool Get_name(nxLuaResults&);
    bool Get_reference(nxLuaResults&);
    bool Get_owner(nxLuaResults&);
    bool Get_running(nxLuaResults&);
    bool Get_userText1(nxLuaResults&);
    bool Get_userText2(nxLuaResults&);
    bool Get_userText3(nxLuaResults&);
    bool Get_userStateLevel(nxLuaResults&);
    bool Get_userStateText(nxLuaResults&);
    bool Get_transactionCount(nxLuaResults&);
    bool Get_isContext(nxLuaResults&);
    bool Get_selectedProduct(nxLuaResults&);
    bool Get_selectedPrice(nxLuaResults&);
    bool Get_selectedVolume(nxLuaResults&);
    bool Get_selectedSide(nxLuaResults&);

protected:
    virtual bool _IsRunning() = 0;
    virtual std::string _GetReference() = 0;
    // The answers of these two do not reach the script: neither fails there.
    virtual nxErrorEnum _Stop() = 0;
    virtual nxErrorEnum _Subscribe() = 0;

    std::string _owner;
    std::string _name;
    nxValueWrapper<unsigned int, -1, -2> _id;
    std::string _hostText;  // the host's own, as the next
    nxValueWrapper<unsigned int, -1, -2> _hostID;
    nxVorantJobStatus _status;  // guarded by _statusMutex
    nxMutex _statusMutex;
    nxMutex _selectionMutex;
    bool _isContext = false;  // whether there is a selection
    std::string _selectedProduct;
    nxDecimal _selectedPrice;  // guarded by _selectionMutex, as the next
    nxVolume _selectedVolume;
    std::string _selectedSide;
    // What the status's output parameters were when the script last asked for one, parsed and as their text.
    // Written on the script's thread alone.
    std::map<std::string, std::string> _outputParameters;
    std::string _outputParameterText;

private:
    // Reads one field of the status under its lock. Results are pushed behind it: a push may leave the
    // function.
    template <class Field>
    Field _ReadStatus(const Field& (nxVorantJobStatus::*getter)() const);
};

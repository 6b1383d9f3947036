#pragma once

#include <string>

#include "base/threads/nxMutexGuard.h"
#include "scriptFramework/supervision/nxAlgoVorantJobObject.h"

// A watched job whose fields the test sets, and which writes down what the script asks of it.
class nxTestVorantJob : public nxAlgoVorantJobObject
{
public:
    nxTestVorantJob(nxAlgoJobInterface* job, unsigned int id) : nxAlgoVorantJobObject(job) { _id = id; }

    bool running = true;
    std::string calls;

    // As a host does it, from any thread.
    void SetStatus(const nxVorantJobStatus& status)
    {
        const nxMutexGuard guard(_statusMutex);
        _status = status;
    }
    void SetSelection(const nxDecimal& price, const nxVolume& volume)
    {
        const nxMutexGuard guard(_selectionMutex);
        _selectedPrice = price;
        _selectedVolume = volume;
    }

    using nxAlgoVorantJobObject::_isContext;
    using nxAlgoVorantJobObject::_name;
    using nxAlgoVorantJobObject::_outputParameters;
    using nxAlgoVorantJobObject::_owner;
    using nxAlgoVorantJobObject::_selectedProduct;
    using nxAlgoVorantJobObject::_selectedSide;

protected:
    bool _IsRunning() override { return running; }
    std::string _GetReference() override { return "reference"; }
    nxErrorEnum _Stop() override
    {
        calls += "stop ";
        running = false;
        return nxError_GeneralFailure;
    }
    nxErrorEnum _Subscribe() override
    {
        calls += "subscribe ";
        return nxError_GeneralFailure;
    }
};

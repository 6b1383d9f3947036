#pragma once

#include <string>

#include "host/report/nxRunRecord.h"

class nxLaunchedJob;

// Where what leaves a script goes. Calls come on the run's thread, mostly from inside a callback.
class nxOutputServices
{
public:
    // A line for the person who watches the run.
    virtual void LogText(const nxLaunchedJob& job, const std::string& text) = 0;
    // One entry of the run's record. The fields are read before it returns.
    virtual void Record(const nxLaunchedJob& job, const char* type, nxRunRecord::Fields fields) = 0;
    // Without it entries need not be put together.
    virtual bool IsRecording() const = 0;

protected:
    ~nxOutputServices() = default;
};

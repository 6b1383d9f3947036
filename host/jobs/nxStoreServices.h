#pragma once

#include <string>

class nxAlgoDataStoreObject;
class nxLaunchedJob;

// The data stores of a run, each one for all jobs. Calls come on the run's thread, from inside a callback.
class nxStoreServices
{
public:
    // Null when there is none of that name or it cannot be had, which the log tells.
    virtual nxAlgoDataStoreObject* GetDataStore(nxLaunchedJob& job, const std::string& name, bool create) = 0;

protected:
    ~nxStoreServices() = default;
};

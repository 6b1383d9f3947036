#pragma once

#include <string>
#include <vector>

#include "base/enums/nxErrorEnum.h"

class nxHostJob;

// What jobs learn of each other, and how one ends itself or another. Calls come on the run's thread, from
// inside a callback.
class nxNewsServices
{
public:
    // Ends the job when the running callback has returned.
    virtual void NoteShutdown(nxHostJob& job) = 0;
    // The running job has news for those that watch it, to be taken when the callback has returned.
    virtual void NoteChange() = 0;
    // The jobs of the run in their order, without the one that asks.
    virtual std::vector<nxHostJob*> GetOtherJobs(const nxHostJob& job) = 0;
    // Ends a job when the running callback has returned. An error for one that has ended.
    [[nodiscard]] virtual nxErrorEnum StopJob(nxHostJob& job, const nxHostJob& by) = 0;
    // The board of named values that all jobs share, by tag and name; "" where nothing stands.
    virtual std::string GetDynamicParameter(const std::string& tag, const std::string& name) = 0;
    virtual void SetDynamicParameter(const std::string& tag, const std::string& name,
                                     const std::string& value) = 0;

protected:
    ~nxNewsServices() = default;
};

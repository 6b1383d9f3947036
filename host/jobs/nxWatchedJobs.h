#pragma once

#include <memory>
#include <vector>

#include "host/jobs/nxWatchedJob.h"
#include "scriptFramework/supervision/nxAlgoVorantJobCollectionObject.h"

// All other jobs of the run as one job's script sees them, in the order of the command line. Scripts count
// them from 1; there is none at another index. Owned by the job that watches.
class nxWatchedJobs : public nxAlgoVorantJobCollectionObject
{
public:
    nxWatchedJobs(nxNewsServices& services, nxHostJob& watcher);

    // Null for the watcher itself.
    nxWatchedJob* Find(const nxHostJob& watched);

protected:
    unsigned int _GetCount() override { return static_cast<unsigned int>(_jobs.size()); }
    nxAlgoVorantJobObject* _GetVorantJob(unsigned int index) override;

private:
    std::vector<std::unique_ptr<nxWatchedJob>> _jobs;
};

#include "host/jobs/nxWatchedJobs.h"

#include <algorithm>

#include "host/jobs/nxHostJob.h"
#include "host/jobs/nxNewsServices.h"

nxWatchedJobs::nxWatchedJobs(nxNewsServices& services, nxHostJob& watcher)
    : nxAlgoVorantJobCollectionObject(&watcher)
{
    for (nxHostJob* watched : services.GetOtherJobs(watcher))
        _jobs.push_back(std::make_unique<nxWatchedJob>(services, watcher, *watched));
}

nxWatchedJob* nxWatchedJobs::Find(const nxHostJob& watched)
{
    const auto found =
        std::ranges::find_if(_jobs, [&](const auto& job) { return &job->GetWatched() == &watched; });
    return found == _jobs.end() ? nullptr : found->get();
}

nxAlgoVorantJobObject* nxWatchedJobs::_GetVorantJob(unsigned int index)
{
    return index == 0 || index > _jobs.size() ? nullptr : _jobs[index - 1].get();
}

#include "host/run/nxRunFailure.h"

std::string nxFindRunFailure(const nxRunStatistics& statistics, nxRunResult result, const std::string& errors)
{
    for (const nxJobStatistics& job : statistics.jobs)
        if (!job.failures.empty()) return job.failures.front().what.message;
    if (result == nxRunResult::Done) return {};
    return errors.empty() ? "the run did not go to its end" : errors.substr(0, errors.find('\n'));
}

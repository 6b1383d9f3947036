#pragma once

#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "host/sweep/nxSlurmFolder.h"
#include "host/sweep/nxSlurmOptions.h"
#include "host/sweep/nxSlurmQueue.h"
#include "host/sweep/nxSlurmStatus.h"
#include "host/sweep/nxSlurmWork.h"

// A sweep as jobs of Slurm: one task for each slice of its runs, with a results file of its own, and a job
// that merges these. All that is known of it stands in its folder and in Slurm's queue, so that any process
// on any machine that sees both can go on with it. Operations give null, or what is wrong and what helps.
class nxSlurmSweep
{
public:
    // How many runs the results file of a slice holds; none: not known.
    using CountRuns = std::function<std::optional<unsigned long long>(const std::filesystem::path&)>;

    explicit nxSlurmSweep(const std::filesystem::path& folder) : _folder(folder), _queue(_folder) {}

    // Submits what is neither done nor in the queue, and the merge. The first time `work.slices` is what the
    // sweep is cut into; later it is as it was, and the rest of `work` must be the same. Tells on `out` what
    // it did.
    [[nodiscard]] std::optional<std::string> Submit(nxSlurmWork work, const nxSlurmOptions& options,
                                                    bool restarts, std::ostream& out);
    [[nodiscard]] std::optional<std::string> GetStatus(nxSlurmStatus& status, const CountRuns& count = {});
    // Here and now. `finishes`: makes what is missing, too. `status` is what the sweep ended with.
    [[nodiscard]] std::optional<std::string> Merge(bool finishes, int& status);
    [[nodiscard]] std::optional<std::string> Cancel(std::ostream& out);

private:
    [[nodiscard]] std::optional<std::string> _Open();
    [[nodiscard]] std::optional<std::string> _Begin(nxSlurmWork& work, bool restarts);
    [[nodiscard]] std::optional<std::string> _SubmitSlices(const std::vector<unsigned int>& slices,
                                                           const nxSlurmOptions& options,
                                                           std::vector<std::string>& jobs, std::ostream& out);
    [[nodiscard]] std::optional<std::string> _SubmitMerge(const std::vector<std::string>& after,
                                                          const nxSlurmOptions& options, std::ostream& out);
    [[nodiscard]] std::optional<std::string> _MergeSlices(bool finishes, int& status) const;
    void _CountQueue(nxSlurmStatus& status) const;
    void _CountSlices(nxSlurmStatus& status, const CountRuns& count) const;
    std::vector<unsigned int> _GetUnmade() const;
    bool _IsMerged() const;

    nxSlurmFolder _folder;
    nxSlurmQueue _queue;
    nxSlurmWork _work;
};

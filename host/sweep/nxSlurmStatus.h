#pragma once

#include <optional>
#include <string>
#include <vector>

// How far a sweep on a cluster is. A plain record.
struct nxSlurmStatus
{
    // Of the merge: not submitted, waiting or running, done, or ended with an error.
    enum class Merge { None, Pending, Running, Done, Failed };

    std::string folder = {}, output = {};
    // Each slice is counted once: as done, else as Slurm has it, else as failed where its task told why, else
    // as lost.
    unsigned int slices = 0, done = 0, running = 0, pending = 0, failed = 0, lost = 0;
    unsigned long long runs = 0;                      // of the sweep; 0: not known
    std::optional<unsigned long long> runsDone = {};  // none: not known
    std::vector<std::string> jobs = {};               // that wait or run, without the merge
    std::string mergeJob = {};
    Merge merge = Merge::None;
    std::string mergeFault = {};             // why it failed
    std::vector<unsigned int> missing = {};  // slices that failed or are lost
    std::string why = {};                    // of the first of them that told; empty: none did
    std::string log = {};                    // where more stands about the first of them
    std::string reason = {};                 // why the first task that waits does so, in Slurm's words
    std::string queueFault = {};             // why Slurm could not be asked; empty: it was

    bool IsQueued() const { return running + pending > 0; }
    // What a person is to do next, in one sentence.
    std::string GetNext() const;
    // For a person, and as a JSON object; both end with a line break.
    std::string GetText() const;
    std::string GetJson() const;
};

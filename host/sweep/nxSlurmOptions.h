#pragma once

#include <string>
#include <vector>

// What the jobs of a sweep ask of Slurm. An empty text, and 0, leave it to the cluster.
struct nxSlurmOptions
{
    std::string partition = {}, time = {}, mem = {}, account = {}, qos = {};  // as sbatch takes them
    unsigned int cpusPerTask = 1;
    unsigned int slices = 0;               // 0: as many as make one take some ten minutes
    unsigned int arraySize = 1000;         // at most so many slices
    unsigned int throttle = 0;             // so many of them at a time; 0: any number
    std::vector<std::string> others = {};  // further options of sbatch, as they are

    static constexpr unsigned int MostSlices =
        10'000;  // whose files still fit on the command line of the merge

    // For sbatch.
    std::vector<std::string> GetArguments() const;
    // Of so many runs, each of which takes so many seconds of a core; below or at 0: not known.
    unsigned int GetSlices(unsigned long long runs, double secondsPerRun) const;
};

#pragma once

#include <CLI/CLI.hpp>
#include <string>

#include "host/sweep/nxSlurmOptions.h"
#include "host/sweep/nxSlurmSweep.h"

// `sweep` on a cluster that Slurm runs: its options, the submission, and the commands for a sweep that was
// submitted.

struct SlurmArguments
{
    bool isAsked = false;     // --slurm
    std::string folder = {};  // empty: the results file with ".slurm" at its end
    nxSlurmOptions options;
};

// What the sweep itself knows before it runs.
struct SweepToSubmit
{
    std::string output = {};  // the results file
    std::string inputs = {};  // a hash of script, data and plan
    unsigned long long runs = 0;
    double secondsPerRun = 0;  // of a core
    bool restarts = false;
};

// --slurm and what goes with it, under a heading of its own.
void AddSlurmOptions(CLI::App& sweep, SlurmArguments& arguments);
// Submits the command line that `sweep` has parsed. Gives the exit status, after it has told what is wrong.
int SubmitSweep(const CLI::App& sweep, const SlurmArguments& arguments, const SweepToSubmit& what);
// status, merge and cancel. `sweep` may require no option and no script of its own, and its callback does
// nothing when one of these was given. `count` may be empty.
void AddClusterCommands(CLI::App& sweep, int& status, const nxSlurmSweep::CountRuns& count = {});

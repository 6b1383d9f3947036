#pragma once

#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <vector>

#include "apps/algoserver/runOptions.h"
#include "host/sweep/nxPlanEntry.h"
#include "host/sweep/nxSweepRuns.h"

// What the runs of a sweep have in common, from the arguments of its command line.
class SweepRuns
{
public:
    RunArguments run;

    SweepRuns() { run.sandbox.isStrict = true; }
    // For nxSweep: the options of a run with others in place of these.
    nxSweepRuns::Make GetMake() const;
    // Adds the options that are about runs.
    void AddOptions(CLI::App& command);
    // From the arguments that a file of results keeps; null, or what is wrong with them.
    [[nodiscard]] std::optional<std::string> SetFromArguments(const std::vector<std::string>& arguments);
};

// Adds the command "sweep" and, when it is given, runs it; status becomes the exit status. arguments: all of
// the command line, without the program.
void AddSweepCommand(CLI::App& app, const std::vector<std::string>& arguments, int& status);

// The cluster's part of `algoserver sweep` around a stand-in for the rest, fake_sweep.py.

#include <unistd.h>

#include <iostream>

#include "apps/algoserver/sweepCluster.h"
#include "host/sweep/nxSlurmCall.h"

namespace {

std::vector<std::string> GetFakeArguments(int argc, char** argv)
{
    std::vector<std::string> arguments = {NX_TEST_DIR "/fake_sweep.py"};
    arguments.insert(arguments.end(), argv + 1, argv + argc);
    return arguments;
}

}  // namespace

int main(int argc, char** argv)
{
    CLI::App app("A sweep on a cluster", "cluster_sweep");
    CLI::App& sweep = *app.add_subcommand("sweep");
    std::string script, data, plan, slice, jobs;
    SweepToSubmit what{"sweep.db"};
    std::vector<std::string> takes;
    bool isCount = false;
    sweep.add_option("script", script);
    sweep.add_option("--data", data);
    sweep.add_option("--plan", plan);
    sweep.add_option("--slice", slice);
    sweep.add_option("--jobs", jobs);
    sweep.add_option("-o,--output", what.output);
    sweep.add_option("--take", takes);
    sweep.add_flag("--count", isCount);
    sweep.add_flag("--restart", what.restarts);
    SlurmArguments slurm;
    AddSlurmOptions(sweep, slurm);
    int status = 0;
    AddClusterCommands(sweep, status);
    CLI11_PARSE(app, argc, argv);
    if (!sweep.get_subcommands().empty()) return status;
    std::vector<std::string> arguments = GetFakeArguments(argc, argv);
    if (!slurm.isAsked) {
        std::vector<char*> pointers;
        for (std::string& argument : arguments)
            pointers.push_back(argument.data());
        pointers.push_back(nullptr);
        execv(pointers.front(), pointers.data());
        return 127;
    }
    std::string count;
    if (const auto fault =
            nxSlurmCall::Run({arguments.front(), "sweep", script, "--plan", plan, "--count"}, count))
    {
        std::cerr << *fault << "\n";
        return 2;
    }
    what.runs = std::stoull(count);
    what.secondsPerRun = 60;
    return SubmitSweep(sweep, slurm, what);
}

#pragma once

#include <CLI/CLI.hpp>
#include <string>

#include "apps/algoserver/arguments.h"
#include "host/run/nxRunArguments.h"

// What a run is told on the command line, for all commands that make runs.
struct RunArguments
{
    nxRunOptions options;
    nxRunArguments jobs;
    std::string onError = "stop";
    std::string barTime;
    unsigned int memoryLimit = 0;  // MiB
    SandboxArguments sandbox;

    // Fills the options with what the texts say. Null, or what is wrong, with its place. Once.
    [[nodiscard]] std::optional<std::string> Finish();
};

// Scripts and what they are given.
void AddScripts(CLI::App& run, RunArguments& arguments);
void AddData(CLI::App& run, RunArguments& arguments, bool isRequired);
void AddExchange(CLI::App& run, RunArguments& arguments);
// The money of the jobs, and how it is counted.
void AddAccount(CLI::App& run, nxRunOptions& options);
void AddRoundTrips(CLI::App& run, nxRunOptions& options);
CLI::Option* AddStore(CLI::App& run, nxRunOptions& options);

// The options that add() adds stand under that heading of --help.
template <class Add>
void AddGroup(CLI::App& command, const std::string& heading, Add add)
{
    const std::size_t before = command.get_options().size();
    add();
    std::vector<CLI::Option*> options = command.get_options();
    for (std::size_t i = before; i < options.size(); ++i)
        options[i]->group(heading);
}

#pragma once

#include <CLI/CLI.hpp>
#include <chrono>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/run/nxRunArguments.h"

// What the commands have in common on the command line.

// An option that may stand several times, with one value each time: what follows may be a script.
template <class Value>
CLI::Option* AddRepeated(CLI::App& command, const char* names, std::vector<Value>& values, const char* help)
{
    return command.add_option(names, values, help)
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->allow_extra_args(false);
}

// --name, --param and --params.
void AddJobOptions(CLI::App& command, nxJobArguments& jobs);

// What the scripts find of Lua's libraries, and how long a call of them may take.
struct SandboxArguments
{
    bool isStrict = false;
    std::optional<double> callbackLimit = std::nullopt;  // seconds; 0: none

    std::chrono::nanoseconds GetCallbackLimit(bool isGuarded) const;
};
// --sandbox, of which strict is told as given, and --callback-limit.
void AddSandbox(CLI::App& command, SandboxArguments& arguments, const std::string& strict,
                const std::string& withoutLimit);

// --seed: a number that 64 bits hold, which the library would cut silently.
CLI::Option* AddSeed(CLI::App& command, unsigned long long& seed, const char* help);

// A number from `least` to `most`, both included; `name` is what the text is none of.
CLI::Validator IsNumber(double least, double most, const std::string& name);

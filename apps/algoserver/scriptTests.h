#pragma once

#include <string>
#include <vector>

#include "apps/algoserver/runOptions.h"

struct ScriptTestArguments
{
    std::vector<std::string> files;
    std::string filter;     // a pattern of the shell that names match; empty: all
    double limit = 10.0;    // seconds that a test may take
    std::string junitFile;  // empty: none
};

// --test and what goes with it; `data` is the option that a run without tests must have.
void AddScriptTests(CLI::App& run, ScriptTestArguments& arguments, CLI::Option& data);
// Runs the tests of the files, a line each. The exit status: 1 when one has failed, 2 when none could be run.
int RunScriptTests(const ScriptTestArguments& tests, const RunArguments& arguments);

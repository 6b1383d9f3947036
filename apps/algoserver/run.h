#pragma once

#include <CLI/CLI.hpp>
#include <string>

#include "base/enums/nxLogLevelEnum.h"
#include "host/run/nxRunOptions.h"

// How a run is made, beside what it is.
struct RunManner
{
    bool isInEnvelope = false;
    bool isStrict = false;
    bool tellsFindings = false;  // before the run, which waits for them
    std::string logLevel = "error";
};

// Makes a run whose options are whole, to its end; gives the exit status.
int MakeRun(const RunManner& manner, nxRunOptions options);

// Where the log of the scripts and the result go.
void AddOutputs(CLI::App& run, nxRunOptions& options, std::string& logLevel);
nxLogLevelEnum GetLogLevel(const std::string& name);

// Adds the command "run" and, when it is given, runs it; status becomes the exit status.
void AddRunCommand(CLI::App& app, int& status);

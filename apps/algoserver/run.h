#pragma once

#include <CLI/CLI.hpp>
#include <string>

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

// Adds the command "run" and, when it is given, runs it; status becomes the exit status.
void AddRunCommand(CLI::App& app, int& status);

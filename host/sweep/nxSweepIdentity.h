#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/run/nxRunOptions.h"
#include "host/sweep/nxPlan.h"

// What the results of a sweep follow from, so that a file of results is not gone on with after something has
// changed: scripts and data by their SHA-256, settings, parameters and plan. Static functions only.
class nxSweepIdentity
{
public:
    // Of the options that all runs have, and of each with one value of those that runs differ in. Reads all
    // the files. A text in JSON.
    static std::string Make(const nxPlan& plan, const std::vector<nxRunOptions>& all);
    // What is the first to differ, for a person; empty: they are the same.
    static std::string FindChange(const std::string& before, const std::string& now);
};

#pragma once

#include <optional>
#include <string>

#include "host/jobs/nxJobSelection.h"
#include "host/jobs/nxParameterSet.h"

// What one job is started with.
struct nxJobOptions
{
    std::string script;  // its file
    std::string name;    // unlike that of every other job
    nxParameterSet parameters;
    std::optional<nxJobSelection> selection;
    std::string account;
};

#pragma once

#include <string>

#include "host/report/nxRunStatistics.h"
#include "host/run/nxRunOptions.h"

// Why a run that nobody watched did not go its whole way, in one line; empty when it did. errors: what it
// wrote to standard error.
std::string nxFindRunFailure(const nxRunStatistics& statistics, nxRunResult result,
                             const std::string& errors);

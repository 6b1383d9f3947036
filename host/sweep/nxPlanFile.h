#pragma once

#include <string>
#include <vector>

#include "host/feed/nxFeedError.h"
#include "host/sweep/nxPlanEntry.h"

// Reads a plan of many runs from a TOML file: at its top the keys of nxPlan with a text, a number, a truth or
// a list of texts each, and the tables "parameters" and "options" with what each of them goes through.
namespace nxPlanFile {
// Appends to `entries`, each with its place. False: `error` tells why, and the entries are undefined.
[[nodiscard]] bool Read(const std::string& path, std::vector<nxPlanEntry>& entries, nxFeedError& error);
}  // namespace nxPlanFile

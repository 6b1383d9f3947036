#pragma once

#include <string>
#include <utility>
#include <vector>

#include "host/run/nxRunOptions.h"

// Every option that changes what a run comes to, by its name and as a text, also where it has its default;
// but for scripts, parameters, data, seed and capital. What is read from a file is told by its SHA-256.
std::vector<std::pair<std::string, std::string>> nxGetRunSettings(const nxRunOptions& options);

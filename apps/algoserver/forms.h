#pragma once

#include <CLI/CLI.hpp>

#include "host/feed/nxFormArguments.h"

// The options that tell of files in none of our own formats.
void AddFormOptions(CLI::App& command, nxFormArguments& form);

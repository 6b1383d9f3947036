#pragma once

#include <CLI/CLI.hpp>

// Adds the command "debug" and, when it is given, carries it out; status becomes the exit status.
void AddDebugCommand(CLI::App& app, int& status);

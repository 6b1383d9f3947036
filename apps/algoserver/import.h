#pragma once

namespace CLI {
class App;
}

// `algoserver import`. Sets status to the process's exit status when the command was given.
void AddImportCommand(CLI::App& app, int& status);

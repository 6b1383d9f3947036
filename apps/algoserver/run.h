#pragma once

namespace CLI {
class App;
}

// `algoserver run`. Sets status to the process's exit status when the command was given.
void AddRunCommand(CLI::App& app, int& status);

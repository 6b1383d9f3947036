#pragma once

namespace CLI {
class App;
}

// `algoserver check`. Sets status to the process's exit status when the command was given.
void AddCheckCommand(CLI::App& app, int& status);

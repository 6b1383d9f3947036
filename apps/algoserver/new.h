#pragma once

namespace CLI {
class App;
}

// `algoserver new`. Sets status to the process's exit status when the command was given.
void AddNewCommand(CLI::App& app, int& status);

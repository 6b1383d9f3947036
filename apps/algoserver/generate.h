#pragma once

namespace CLI {
class App;
}

// `algoserver generate`. Sets status to the process's exit status when the command was given.
void AddGenerateCommand(CLI::App& app, int& status);

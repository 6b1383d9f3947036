#pragma once

namespace CLI {
class App;
}

// `algoserver types`. Sets status to the process's exit status when the command was given.
void AddTypesCommand(CLI::App& app, int& status);

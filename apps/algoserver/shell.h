#pragma once

#include <string>

namespace CLI {
class App;
}

// "run, sweep and check", without hidden ones.
std::string ListCommands(const CLI::App& app);

// `help`, `completion`, `doctor` and the hidden `man`, after all other commands. `app` outlives the parsing.
void AddShellCommands(CLI::App& app, int& status);

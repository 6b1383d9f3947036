#pragma once

namespace CLI {
class App;
}

// `algoserver layouts`. Sets status to the process's exit status when the command was given.
void AddLayoutsCommand(CLI::App& app, int& status);

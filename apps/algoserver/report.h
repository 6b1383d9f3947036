#pragma once

namespace CLI {
class App;
}

// `algoserver report`. Sets status to the process's exit status when the command was given.
void AddReportCommand(CLI::App& app, int& status);

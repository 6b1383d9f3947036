#pragma once

namespace CLI {
class App;
}

void AddDoctorCommand(CLI::App& app, int& status);

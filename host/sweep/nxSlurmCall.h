#pragma once

#include <optional>
#include <string>
#include <vector>

// Calls another program and waits for its end. No shell is between: an argument may hold any characters.
namespace nxSlurmCall {
// `arguments` begins with the program's name, which is looked for in PATH. `output` gets its standard output
// without the last line break. Null, or what went wrong, with the program's own words.
[[nodiscard]] std::optional<std::string> Run(const std::vector<std::string>& arguments, std::string& output);
// The same with this process's own input and outputs. Gives the exit status, or 128 and the signal, as a
// shell does.
[[nodiscard]] std::optional<std::string> RunHere(const std::vector<std::string>& arguments, int& status);
}  // namespace nxSlurmCall

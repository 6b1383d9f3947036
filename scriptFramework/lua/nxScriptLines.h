#pragma once

#include <string>
#include <vector>

// The lines of a Lua text that hold code, counted from 1, sorted; only at those a debugger is told of a line.
// Empty for a text that does not compile, of which error tells why.
std::vector<unsigned int> nxGetLinesWithCode(const std::string& text, std::string& error);

#pragma once

#include <string>
#include <vector>

// A row of a file of behaviour: what is done, and what it comes to. Such a file has lines "what => outcome",
// of which the part before the arrow may begin on earlier lines. Lines "--- section" and "=== section" stand
// before the rows of a section; empty lines and those that begin with # tell nothing.
struct nxRow
{
    std::string section;  // with its --- or ===
    std::string what;
    std::string outcome;
    int line = 0;  // of the arrow
};

// The rows of a file below tests/data.
std::vector<nxRow> nxReadRows(const std::string& name);

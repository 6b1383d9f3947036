#pragma once

#include <compare>
#include <string>

// One thing that is wrong in a script. A plain value; findings sort by their place.
struct nxScriptFinding
{
    std::string file;
    unsigned int line = 0;       // from 1; 0 for the script as a whole
    unsigned int column = 0;     // in characters, from 1; 0 where only the line is known
    unsigned int endColumn = 0;  // the last character on that line; 0 where it is not known
    std::string code;            // of its nxFindingRule
    std::string message;         // for people

    auto operator<=>(const nxScriptFinding&) const = default;
};

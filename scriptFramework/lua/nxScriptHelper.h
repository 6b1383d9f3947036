#pragma once

#include <string>
#include <vector>

// Tells how a script text was assembled from pieces, so that a line number of the assembled text can be told
// back in the author's terms. A plain value: the host fills it in and hands it over before it loads a script.
struct nxScriptHelper
{
    struct Module
    {
        std::string name;
        unsigned int firstLine = 0;
        unsigned int lastLine = 0;  // inclusive
    };

    std::vector<Module> modules;
    // Lines of the assembled text that stand before the author's own script. The line at which the script
    // begins, counted from 1, is the offset itself, and still counts as before the script.
    unsigned int lineOffset = 0;

    // A line of the assembled text in the author's terms: "12", or "8:util" for line 8 of a module. Without
    // modules, as it is.
    std::string Tell(unsigned int line) const;
};

#pragma once

#include <optional>
#include <string>

// A failure of a script, in the author's own files and lines.
struct nxScriptFailure
{
    struct Location
    {
        std::string file;
        unsigned int line = 0;
        std::string text;  // the source line, without its indentation
    };
    // "FILE:LINE: what went wrong"; of the script's helpers that the library supplies, "prelude.lua:LINE:
    // ..."; what the engine said when no line is known.
    std::string message;
    std::optional<Location> location;
};

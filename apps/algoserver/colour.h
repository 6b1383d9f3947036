#pragma once

#include <unistd.h>

#include <cstdlib>
#include <string>
#include <string_view>

// Whether text for that descriptor may be coloured: on a terminal that can, unless the user wants none
// (NO_COLOR).
inline bool ShowsColours(int descriptor)
{
    const char* const refused = std::getenv("NO_COLOR");
    const char* const terminal = std::getenv("TERM");
    return isatty(descriptor) != 0 && (refused == nullptr || *refused == '\0') && terminal != nullptr &&
           std::string_view(terminal) != "dumb";
}

enum class Colour { Red = 31, Green = 32, Yellow = 33 };

inline std::string Paint(Colour colour, const std::string& text)
{
    return "\033[" + std::to_string(static_cast<int>(colour)) + "m" + text + "\033[0m";
}

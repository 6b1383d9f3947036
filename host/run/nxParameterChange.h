#pragma once

#include <optional>
#include <string>

// A parameter that gets another value during a run.
struct nxParameterChange
{
    long long time = 0;              // recorded, in nanoseconds since 1970-01-01 UTC
    std::optional<std::size_t> job;  // its index; none: every job
    std::string name;
    std::string value;
    std::string tag;
};

#pragma once

#include <string>
#include <utility>
#include <vector>

#include "host/results/nxResultRun.h"

// What a summary on a terminal tells of a result: its ten measures that matter most, in lines of two, and a
// picture of its equity where standard output is a terminal that shows it.
class nxResultLines
{
public:
    // Label and text of each line; none for a result without fills.
    static std::vector<std::pair<const char*, std::string>> Get(const nxResultData& data,
                                                                const nxResultRun& run);
};

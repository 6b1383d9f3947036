#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/jobs/nxJobOptions.h"

// Names as a person writes them for one job or for all: "JOB/NAME" or "NAME".
struct nxParameterName
{
    std::optional<std::size_t> job;  // its index; none: every job
    std::string name;

    // Null, or why not: no job of that name, or nothing behind it.
    [[nodiscard]] std::optional<std::string> SetFromText(std::string_view text,
                                                         const std::vector<nxJobOptions>& jobs);
};

// "[JOB/]NAME[:TYPE]=VALUE", where the value goes to the end of the text.
struct nxParameterText
{
    nxParameterName name;
    std::string type;  // empty: not given
    std::string value;

    [[nodiscard]] std::optional<std::string> SetFromText(const std::string& text,
                                                         const std::vector<nxJobOptions>& jobs);
};

#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "host/feed/nxFileForm.h"

// What a command line tells of files in none of our own formats, as texts; empty ones were not given.
struct nxFormArguments
{
    std::string layout, columns, product, zone, date, dateOrder, priceScale;

    // Null, or what is wrong, with the option.
    [[nodiscard]] std::optional<std::string> Apply(nxFileFormOptions& form) const;
};

// Periods as texts, [PRODUCT=]PERIOD, by product; "" is every other. Null, or what is wrong.
[[nodiscard]] std::optional<std::string> nxSetBarPeriods(
    const std::vector<std::string>& texts, std::map<std::string, long long, std::less<>>& periods);

#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "indicators/nxIndicatorType.h"
#include "indicators/nxTechnicalIndicator.h"

// Every indicator that a script can ask for by its type. docs/indicators.md describes them for authors of
// scripts. May be used by any thread.
class nxIndicatorCatalogue
{
public:
    using Parameters = std::map<std::string, std::string>;

    // A new indicator without bars. The keys "name" and "type" in the parameters are ignored. Null, with a
    // text for the script's author in `error`, for an unknown type, an unknown parameter or a value that
    // makes no sense.
    static std::unique_ptr<nxTechnicalIndicator> Create(const std::string& type, const Parameters& parameters,
                                                        std::string& error);

    // All types with their parameters and result lines, family by family.
    static const std::vector<nxIndicatorType>& GetTypes();
};

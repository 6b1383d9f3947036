#include "indicators/nxIndicatorCatalogue.h"

#include <algorithm>
#include <iterator>

#include "indicators/nxIndicatorFamilies.h"
#include "indicators/nxSteppedIndicator.h"

const std::vector<nxIndicatorType>& nxIndicatorCatalogue::GetTypes()
{
    static const std::vector<nxIndicatorType> types = [] {
        std::vector<nxIndicatorType> all;
        for (const auto family :
             {nxMovingAverageTypes, nxOscillatorTypes, nxVolatilityTypes, nxTrendTypes, nxVolumeTypes})
        {
            std::ranges::move(family(), std::back_inserter(all));
        }
        return all;
    }();
    return types;
}

std::unique_ptr<nxTechnicalIndicator> nxIndicatorCatalogue::Create(const std::string& type,
                                                                   const Parameters& parameters,
                                                                   std::string& error)
{
    const auto& types = GetTypes();
    const auto found =
        std::ranges::find(types, type, [](const nxIndicatorType& each) { return std::string(each.name); });
    if (found == types.end()) {
        error = "unknown type " + type + ", known are";
        for (const nxIndicatorType& each : types)
            error += std::string(&each == &types[0] ? " " : ", ") + each.name;
        return nullptr;
    }
    nxIndicatorArguments arguments(*found);
    if (!arguments.Set(parameters, error)) return nullptr;
    return std::make_unique<nxSteppedIndicator>(*found, arguments);
}

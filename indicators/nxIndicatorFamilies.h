#pragma once

#include <vector>

#include "indicators/nxIndicatorType.h"

// The types of the catalogue by family, each family in a source of its own.
std::vector<nxIndicatorType> nxMovingAverageTypes();
std::vector<nxIndicatorType> nxOscillatorTypes();
std::vector<nxIndicatorType> nxVolatilityTypes();
std::vector<nxIndicatorType> nxTrendTypes();
std::vector<nxIndicatorType> nxVolumeTypes();

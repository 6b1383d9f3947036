#pragma once

#include <limits>

// What a block gives before it has seen enough. Handed on to a further block it is left out there, so blocks
// chain without counting each other's warm-up.
inline constexpr double nxNoResult = std::numeric_limits<double>::quiet_NaN();

#pragma once

#include <optional>
#include <string>

#include "base/values/nxDecimal.h"
#include "base/values/nxValueWrapper.h"

// What a job was launched on. A value; what was not given is empty or null.
struct nxJobSelection
{
    std::string product;
    std::string side;  // BUY or SELL
    nxVolume volume;
    nxDecimal price;
    std::string spread;

    // Reads "product=SIM,side=BUY,volume=5,price=100.25,spread=...", each key once at most and one at least.
    // Null, or why not.
    [[nodiscard]] std::optional<std::string> SetFromText(const std::string& text);
};

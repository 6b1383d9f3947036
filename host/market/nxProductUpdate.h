#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/market/nxProductDescription.h"

// What a product file that was written anew during a run changes of the products the run began with. Of a
// strategy that is the priceOffset and its legs' ratios, of any product its description; the rest is built
// into what the run holds already.
struct nxProductUpdate
{
    nxProductUpdate(const std::vector<nxProductDescription>& before,
                    const std::vector<nxProductDescription>& now);

    std::optional<std::string> refusal;          // why it cannot be taken; the rest is empty then
    std::vector<std::string> changes;            // as told to a person
    std::vector<nxProductDescription> products;  // in the order of `before`
};

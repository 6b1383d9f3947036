#pragma once

#include <string>
#include <vector>

#include "base/records/nxGenericProductID.h"
#include "host/feed/nxProductDescription.h"

// The described products of a run as the definitions that scripts read of strategies, in nxProductCache. That
// cache is one for the process: of two runs side by side both are to describe a strategy alike, or one shows
// the other's. Owned by the server; takes out what it put in when it dies.
class nxProductDefinitions
{
public:
    // What the run's products are found under.
    static nxGenericProductID GetIdentity(const std::string& name, bool isStrategy);

    nxProductDefinitions() = default;
    nxProductDefinitions(const nxProductDefinitions&) = delete;
    nxProductDefinitions& operator=(const nxProductDefinitions&) = delete;
    ~nxProductDefinitions();

    // Puts them in, or brings those that are there up to date.
    void Publish(const std::vector<nxProductDescription>& products);
};

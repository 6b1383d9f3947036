#pragma once

class nxPrice;

// A host's decision which prices are worth building a price object for. The library neither derives from it
// nor calls it.
class nxPriceConstructFilter
{
public:
    nxPriceConstructFilter() = default;
    nxPriceConstructFilter(const nxPriceConstructFilter&) = default;
    nxPriceConstructFilter& operator=(const nxPriceConstructFilter&) = default;

    virtual bool ShouldConstruct(const nxPrice& price) = 0;

protected:
    ~nxPriceConstructFilter() = default;
};

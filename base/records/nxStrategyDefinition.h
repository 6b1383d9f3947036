#pragma once

#include <vector>

#include "base/records/nxProductDefinition.h"
#include "base/records/nxStrategyLeg.h"

// A strategy's static data: a product's, and its legs.
class nxStrategyDefinition : public nxProductDefinition
{
public:
    nxStrategyDefinition* CopyInstance() const override { return new nxStrategyDefinition(*this); }

    unsigned int GetStrategyLegCount() const { return static_cast<unsigned int>(_legs.size()); }
    // The leg at `index`, from 0, or null beyond the last. Good until a leg is added or the definition dies.
    nxStrategyLeg* GetStrategyLeg(unsigned int index)
    {
        return index < _legs.size() ? &_legs[index] : nullptr;
    }
    const nxStrategyLeg* GetStrategyLeg(unsigned int index) const
    {
        return index < _legs.size() ? &_legs[index] : nullptr;
    }
    void AddStrategyLeg(const nxStrategyLeg& leg) { _legs.push_back(leg); }

    // What the strategy's price has on top of its legs' prices.
    const nxDecimal& GetSyntheticStrategyPriceOffset() const { return _syntheticStrategyPriceOffset; }
    void SetSyntheticStrategyPriceOffset(const nxDecimal& offset) { _syntheticStrategyPriceOffset = offset; }

private:
    std::vector<nxStrategyLeg> _legs;
    nxDecimal _syntheticStrategyPriceOffset;
};

#pragma once

#include "base/enums/nxStrategyTypeEnum.h"
#include "base/records/nxProductID.h"

// The identity of a strategy: a product's, with the way its legs are put together and the type of the legs.
class nxStrategyID : public nxProductID
{
public:
    nxStrategyID() = default;
    nxStrategyID(const std::string& name, const nxStrategyTypeEnum& strategyType,
                 const nxProductTypeEnum& legProductType, const std::string& exchange = {})
        : nxProductID(name, nxProductType_Strategy, exchange),
          _strategyType(strategyType),
          _legProductType(legProductType)
    {
    }

    const nxStrategyTypeEnum& GetStrategyType() const { return _strategyType; }
    const nxProductTypeEnum& GetLegProductType() const { return _legProductType; }

private:
    nxStrategyTypeEnum _strategyType;
    nxProductTypeEnum _legProductType;
};

#pragma once

#include <string>

#include "base/records/nxPrice.h"
#include "scriptFramework/job/nxAlgoJobObject.h"
#include "scriptFramework/job/nxQuietJobInterface.h"
#include "scriptFramework/market/nxAlgoPriceObject.h"

// A started job over a price that does not change.
class nxBenchJob
{
public:
    explicit nxBenchJob(const std::string& script, const nxScriptLimits& limits = {},
                        nxScriptPulse* pulse = nullptr);

    nxAlgoJobObject& GetObject() { return _object; }
    nxAlgoJobInterface* GetHost() { return &_host; }
    nxAlgoPriceObject& GetPrice() { return _priceObject; }

private:
    nxQuietJobInterface _host;
    nxAlgoJobObject _object{&_host};
    nxPrice _price;
    nxAlgoPriceObject _priceObject{&_host, &_price, &_price, 1};
};

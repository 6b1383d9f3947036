#pragma once

#include <string>

struct nxExchangeOrder;

// Looks at orders before they get into the market. Called on the run's thread, inside the exchange.
class nxOrderGate
{
public:
    // Why an order must not be in the market with these terms, or be amended to them; empty when it may.
    virtual std::string FindObstacle(const nxExchangeOrder& order) = 0;

protected:
    ~nxOrderGate() = default;
};

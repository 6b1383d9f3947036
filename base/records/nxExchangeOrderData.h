#pragma once

#include <string>

// What an exchange adds to an order for its own use; carried along and not read here.
struct nxExchangeOrderData
{
    std::string exchangeOrderID;
    std::string exchangeText;
};

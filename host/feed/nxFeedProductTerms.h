#pragma once

#include <string>

#include "base/values/nxDecimal.h"

// What is known of a product before its data are read. Null sizes are found out from the data.
struct nxFeedProductTerms
{
    std::string name;
    nxDecimal tickSize;  // above 0 where given
    nxDecimal lotSize;   // above 0 where given: the recorded size of one lot
};

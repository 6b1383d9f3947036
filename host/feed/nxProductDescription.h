#pragma once

#include <string>
#include <vector>

#include "base/enums/nxBuySellEnum.h"
#include "base/enums/nxCurrencyEnum.h"
#include "base/values/nxDecimal.h"
#include "host/feed/nxTradingHours.h"

/** One leg of a described strategy. */
struct nxProductLegDescription
{
    std::string product;
    nxBuySellEnum side{nxBuySell_Buy};
    nxDecimal priceRatio = nxDecimalOne;
    nxDecimal tradeRatio = nxDecimalOne;
};

/** What a product file says about one product. What it leaves out is null, empty or undefined. The replay
   uses name, tick size, lot size, point value, currency, exchange and trading hours; the rest is kept for
   those who ask. */
struct nxProductDescription
{
    std::string name;
    nxDecimal tickSize;    // above 0 where given, as are lot size and point value
    nxDecimal lotSize;     // the recorded size of one lot
    nxDecimal pointValue;  // money for a move of 1 in the price of one lot
    nxCurrencyEnum currency;
    std::string exchange;
    std::string description;
    nxTradingHours tradingHours;
    nxDecimal makerFee;  // negative: a rebate
    nxDecimal takerFee;
    bool feeIsRate = false;  // fees are a share of the money that changes hands, not a sum for each lot
    std::vector<nxProductLegDescription> legs;
};

#pragma once

#include <memory>
#include <string>
#include <vector>

#include "base/enums/nxCurrencyEnum.h"
#include "base/values/nxDecimal.h"
#include "host/feed/nxFeedProductTerms.h"
#include "host/feed/nxSide.h"
#include "host/market/nxTradingHours.h"

// One leg of a described strategy: what is done with its product when the strategy is bought.
struct nxProductLegDescription
{
    std::string product;
    nxSide side = nxSide::Buy;
    nxDecimal priceRatio = nxDecimalOne;  // above 0: the leg's share in the strategy's price
    nxDecimal tradeRatio = nxDecimalOne;  // a whole number: its lots in one lot of the strategy

    bool operator==(const nxProductLegDescription&) const = default;
};

// The fees from that many lots traded on.
struct nxFeeTier
{
    unsigned long long from = 0;
    nxDecimal makerFee;
    nxDecimal takerFee;

    bool operator==(const nxFeeTier&) const = default;
};

// What a product file says about one product. What it leaves out is null, empty or undefined.
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
    nxDecimal minimumFee;    // of an order, whatever its fills come to
    std::vector<nxFeeTier> feeTiers;  // ascend; below the first one the fees above hold
    bool feeTiersByMonth = false;     // lots count from the begin of the month in UTC, else of the run
    nxDecimal dailyVolatility;        // how far a day moves the price, as a part of it; null: as the data say
    nxDecimal dailyVolume;            // lots traded on a day; the same
    nxDecimal initialMargin;          // of a lot; null: not known
    nxDecimal maintenanceMargin;      // null: the initial one
    bool marginIsRate = false;        // both are a part of the value
    std::vector<nxProductLegDescription> legs;  // two at least, for a strategy; else none
    nxDecimal priceOffset;                      // of a strategy: what its price has on top of its legs'

    [[nodiscard]] bool IsStrategy() const { return !legs.empty(); }
};

// Those of a run, which all who need them share: there may be thousands. Never null.
using nxProductDescriptions = std::shared_ptr<const std::vector<nxProductDescription>>;

// What the feed has to know of them, in their order.
[[nodiscard]] std::vector<nxFeedProductTerms> nxGetFeedTerms(
    const std::vector<nxProductDescription>& products);

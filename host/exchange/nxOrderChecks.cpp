#include "host/exchange/nxOrderChecks.h"

#include <fmt/format.h>

#include <algorithm>

#include "host/exchange/nxOrderExpiries.h"

namespace {

constexpr unsigned int LargestVolume = 1'000'000'000;
constexpr unsigned int MostTicks = 1'000'000;

const char* FindVolumeFault(const nxVolume& volume)
{
    if (!volume.IsValid()) return "the order has no volume";
    if (volume.GetValue() == 0) return "the volume is 0";
    if (volume.GetValue() > LargestVolume) return "the volume is above 1000000000";
    return nullptr;
}

const char* FindIcebergFault(const nxOrderKind& kind, const nxOrderTerms& terms)
{
    const unsigned int least = nxOrderTerms::GetOr(terms.icebergMinPeak, 0);
    if (kind.isMarket) return "an ICEBERG order is a LIMIT order";
    if (least == 0) return "an ICEBERG order needs an icebergMinPeakSize above 0";
    if (nxOrderTerms::GetOr(terms.icebergMaxPeak, least) < least)
        return "icebergMaxPeakSize is below icebergMinPeakSize";
    if (least > terms.volume.GetValue()) return "the peak is larger than the order";
    if (nxOrderTerms::GetOr(terms.icebergThreshold, 0) >= least)
        return "icebergThreshold is not below icebergMinPeakSize";
    return nullptr;
}

const char* FindBracketFault(const nxOrderTerms& terms)
{
    const unsigned int profit = nxOrderTerms::GetOr(terms.bracketProfit, 0);
    const unsigned int stopLoss = nxOrderTerms::GetOr(terms.bracketStopLoss, 0);
    if (profit == 0 && stopLoss == 0) return "a BRACKET order needs bracketProfit or bracketStopLoss";
    if (std::max({profit, stopLoss, nxOrderTerms::GetOr(terms.bracketStopLimit, 0)}) > MostTicks)
        return "a bracket reaches at most 1000000 ticks";
    return nullptr;
}

}  // namespace

const char* nxOrderChecks::FindFault(const nxOrderKind& kind, const nxOrderTerms& terms)
{
    const bool isIceberg = kind.execution == nxOrderExecution::Iceberg;
    const bool isBracket = kind.execution == nxOrderExecution::Bracket;
    const bool isDated = kind.duration == nxOrderDuration::Date;
    if (const char* fault = FindVolumeFault(terms.volume)) return fault;
    if (kind.isMarket && terms.price.IsValid()) return "a MARKET order has no price";
    if (!kind.isMarket && !terms.price.IsValid()) return "a LIMIT order needs a price";
    if (kind.IsStop() && !terms.stopPrice.IsValid()) return "a stop order needs a stopPrice";
    if (!kind.IsStop() && terms.stopPrice.IsValid())
        return "only STOP and TRAILING_STOP orders have a stopPrice";
    if (kind.IsImmediate() && kind.duration != nxOrderDuration::Day) return "an IOC or FOK order is GFD";
    if (kind.IsForOpening() && kind.execution != nxOrderExecution::None)
        return "an order for the opening is a plain MARKET or LIMIT order";
    if (isIceberg) {
        if (const char* fault = FindIcebergFault(kind, terms)) return fault;
    } else if (terms.icebergMinPeak.IsValid() || terms.icebergMaxPeak.IsValid() ||
               terms.icebergThreshold.IsValid())
    {
        return "only ICEBERG orders have peaks";
    }
    if (isBracket) {
        if (const char* fault = FindBracketFault(terms)) return fault;
    } else if (terms.bracketProfit.IsValid() || terms.bracketStopLoss.IsValid()) {
        return "only BRACKET orders have a bracketProfit or bracketStopLoss";
    }
    if (isDated && !terms.expiry.IsValid()) return "a GTD order needs an expiryDate";
    if (!isDated && terms.expiry.IsValid()) return "only GTD orders have an expiryDate";
    return nullptr;
}

nxOrderChecks::Refusal nxOrderChecks::FindRefusal(const nxExchangeOrder& order, const nxOrderTerms& given,
                                                  const nxDecimal& tick, long long now)
{
    if (const char* fault = FindFault(order.kind, order.terms)) return {nxError_OrderTermsInvalid, fault};
    for (const nxDecimal* price : {&given.price, &given.stopPrice}) {
        if (!price->IsValid() || !tick.IsValid()) continue;
        nxDecimal rounded = *price;
        rounded.Round(tick, nxRoundingMethodEnum(nxRoundingMethod_Nearest));
        if (rounded != *price)
            return {nxError_OrderPriceOffTick, fmt::format("{} is no multiple of the tick size {}",
                                                           price->GetAsString(), tick.GetAsString())};
    }
    if (order.terms.expiry.IsValid() && nxOrderExpiries::GetEnd(order.terms.expiry) <= now)
        return {nxError_OrderDateInPast, "the expiryDate is in the past"};
    if (order.executed > order.terms.volume.GetValue())
        return {nxError_OrderIsExecuted, fmt::format("{} of the order are executed already", order.executed)};
    return {};
}

nxOrderChecks::Refusal nxOrderChecks::FindEnd(const nxExchangeOrder& order)
{
    if (order.IsAlive()) return {};
    return {nxError_OrderIsOver,
            order.status == nxOrderStatus_Filled ? "the order is filled" : "the order is no longer working"};
}

nxOrderChecks::Refusal nxOrderChecks::GetSelfTrade(unsigned int other)
{
    return {nxError_OrderMeetsOwn, fmt::format("it would trade with the own order {}", other)};
}

const char* nxOrderChecks::GetEndOfImmediate(const nxExchangeOrder& order)
{
    if (order.kind.duration == nxOrderDuration::Open) return "the opening is over";
    return order.kind.execution == nxOrderExecution::FillOrKill ? "it could not be filled at once"
                                                                : "the rest could not be filled at once";
}

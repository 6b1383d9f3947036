#include "host/market/nxProductUpdate.h"

#include <fmt/format.h>

#include <algorithm>

namespace {

const nxProductDescription* Find(const std::vector<nxProductDescription>& products, const std::string& name)
{
    const auto found = std::ranges::find(products, name, &nxProductDescription::name);
    return found == products.end() ? nullptr : &*found;
}

// The key that may not change and did; null when there is none.
const char* FindFixed(const nxProductDescription& before, const nxProductDescription& now)
{
    const struct
    {
        const char* key;
        bool isSame;
    } keys[] = {
        {"tickSize", before.tickSize == now.tickSize},
        {"lotSize", before.lotSize == now.lotSize},
        {"pointValue", before.pointValue == now.pointValue},
        {"currency", before.currency == now.currency},
        {"exchange", before.exchange == now.exchange},
        {"tradingHours", before.tradingHours == now.tradingHours},
        {"makerFee", before.makerFee == now.makerFee},
        {"takerFee", before.takerFee == now.takerFee},
        {"feeIsRate", before.feeIsRate == now.feeIsRate},
        {"minimumFee", before.minimumFee == now.minimumFee},
        {"feeTiers", before.feeTiers == now.feeTiers},
        {"feeTierPeriod", before.feeTiersByMonth == now.feeTiersByMonth},
        {"dailyVolatility", before.dailyVolatility == now.dailyVolatility},
        {"dailyVolume", before.dailyVolume == now.dailyVolume},
        {"initialMargin", before.initialMargin == now.initialMargin},
        {"maintenanceMargin", before.maintenanceMargin == now.maintenanceMargin},
        {"marginIsRate", before.marginIsRate == now.marginIsRate},
        {"a leg's product", std::ranges::equal(before.legs, now.legs, {}, &nxProductLegDescription::product,
                                               &nxProductLegDescription::product)},
        {"a leg's side", std::ranges::equal(before.legs, now.legs, {}, &nxProductLegDescription::side,
                                            &nxProductLegDescription::side)},
    };
    const auto found = std::ranges::find_if(keys, [](const auto& row) { return !row.isSame; });
    return found == std::end(keys) ? nullptr : found->key;
}

std::optional<std::string> FindRefusal(const std::vector<nxProductDescription>& before,
                                       const std::vector<nxProductDescription>& now)
{
    for (const nxProductDescription& product : now)
        if (Find(before, product.name) == nullptr)
            return "product \"" + product.name + "\" cannot be added during a run";
    for (const nxProductDescription& known : before) {
        const nxProductDescription* const found = Find(now, known.name);
        if (found == nullptr) return "product \"" + known.name + "\" cannot be taken out during a run";
        if (const char* key = FindFixed(known, *found))
            return fmt::format("{} of \"{}\" cannot change during a run", key, known.name);
    }
    return std::nullopt;
}

}  // namespace

nxProductUpdate::nxProductUpdate(const std::vector<nxProductDescription>& before,
                                 const std::vector<nxProductDescription>& now)
    : refusal(FindRefusal(before, now))
{
    if (refusal) return;
    const auto tell = [&](const std::string& what, const nxDecimal& old, const nxDecimal& value) {
        if (old != value)
            changes.push_back(fmt::format("{} is {}, was {}", what,
                                          value.IsValid() ? value.GetAsString() : "none",
                                          old.IsValid() ? old.GetAsString() : "none"));
    };
    for (const nxProductDescription& known : before) {
        const nxProductDescription& product = *Find(now, known.name);
        products.push_back(product);
        if (product.description != known.description)
            changes.push_back(known.name + ": description is \"" + product.description + "\"");
        tell(known.name + ": priceOffset", known.priceOffset, product.priceOffset);
        for (std::size_t i = 0; i < known.legs.size(); ++i) {
            const std::string leg = known.name + ": leg " + known.legs[i].product + ": ";
            tell(leg + "priceRatio", known.legs[i].priceRatio, product.legs[i].priceRatio);
            tell(leg + "tradeRatio", known.legs[i].tradeRatio, product.legs[i].tradeRatio);
        }
    }
}

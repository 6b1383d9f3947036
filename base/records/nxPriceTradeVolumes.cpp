#include "base/records/nxPriceTradeVolumes.h"

#include <algorithm>
#include <cstdint>

nxVolume nxPriceTradeVolumes::GetTradeVolume(const nxDecimal& price) const
{
    const auto found = _prices.find(price);
    return found == _prices.end() ? nxVolume() : found->second;
}

void nxPriceTradeVolumes::AddTrade(const nxDecimal& price, const nxVolume& volume)
{
    if (!price.IsValid() || !volume.IsValid()) return;
    constexpr std::uint64_t greatest = nxVolume::NoChangeValue - 1;
    nxVolume& total = _prices.try_emplace(price, 0u).first->second;
    total.SetValue(
        static_cast<unsigned int>(std::min(std::uint64_t{total.GetValue()} + volume.GetValue(), greatest)));
}

void nxPriceTradeVolumes::ApplyUpdate(const nxPriceTradeVolumes& update)
{
    if (&update == this) {
        ApplyUpdate(nxPriceTradeVolumes(update));
        return;
    }
    if (!update._text.empty()) _text = update._text;
    const bool replaces = update._updateType == nxPriceTradeVolumesUpdateType_Snapshot ||
                          update._updateType == nxPriceTradeVolumesUpdateType_Reset;
    if (replaces) _prices.clear();
    for (const auto& [price, volume] : update._prices)
        AddTrade(price, volume);
}

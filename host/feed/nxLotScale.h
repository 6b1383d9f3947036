#pragma once

#include <array>
#include <memory>
#include <string>

#include "base/values/nxDecimal.h"

// Turns recorded sizes into whole lots, exactly. A value; the division is prepared once for each count of
// decimal places, so a size costs one division of 64 bits at most.
class nxLotScale
{
public:
    static constexpr unsigned int MaxLots = 0xFFFFFFFD;  // the two above are marks

    // One lot is one unit.
    nxLotScale();
    // `lotSize` is valid and above 0.
    explicit nxLotScale(const nxDecimal& lotSize);

    [[nodiscard]] const nxDecimal& GetLotSize() const { return _lotSize; }

    // size / lot size for the size mantissa / 10^places, which is not negative. False when that is no whole
    // number or above MaxLots.
    [[nodiscard]] bool GetLots(long long mantissa, unsigned char places, unsigned int& lots) const
    {
        const Ratio& ratio = (*_ratios)[places];
        unsigned long long product = 0;
        if (__builtin_mul_overflow(static_cast<unsigned long long>(mantissa), ratio.multiplier, &product))
            return _GetLotsSlow(mantissa, ratio, lots);
        lots = static_cast<unsigned int>(product);
        if (ratio.divisor == 1) [[likely]]  // a division takes longer than all else here
            return product <= MaxLots;
        const unsigned long long count = product / ratio.divisor;
        lots = static_cast<unsigned int>(count);
        return count <= MaxLots && count * ratio.divisor == product;
    }

    // The nearest whole number, at least 1 of a size above 0 and at most MaxLots.
    [[nodiscard]] unsigned int GetRounded(long long mantissa, unsigned char places) const;

    // Why GetLots refused the size, and the lot size that would fit it and a size with `knownPlaces`
    // decimals.
    [[nodiscard]] std::string GetRefusal(long long mantissa, unsigned char places,
                                         unsigned char knownPlaces) const;

private:
    struct Ratio
    {
        unsigned long long multiplier = 1;
        unsigned long long divisor = 1;
    };

    static bool _GetLotsSlow(long long mantissa, const Ratio& ratio, unsigned int& lots);

    using Ratios = std::array<Ratio, nxDecimal::MaxDecimalPlaces + 1>;

    nxDecimal _lotSize;
    std::shared_ptr<const Ratios> _ratios;  // of copies the same, since a run may know thousands of products
};

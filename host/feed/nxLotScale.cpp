#include "host/feed/nxLotScale.h"

#include <algorithm>
#include <climits>
#include <numeric>

#include "base/values/nxInt128.h"
#include "base/values/nxPowersOfTen.h"

nxLotScale::nxLotScale()
{
    static const nxLotScale one(nxDecimalOne);  // every product begins with it
    *this = one;
}

nxLotScale::nxLotScale(const nxDecimal& lotSize) : _lotSize(lotSize)
{
    const auto ratios = std::make_shared<Ratios>();
    _lotSize.Normalise(0);
    const auto size = static_cast<unsigned long long>(_lotSize.GetMantissa());
    const unsigned int sizePlaces = _lotSize.GetDecimalPlaces();
    const auto getPower = [](unsigned int exponent) {
        return static_cast<unsigned long long>(nxPowersOfTen[exponent]);
    };
    for (unsigned int places = 0; places < ratios->size(); ++places) {
        const unsigned long long up = getPower(sizePlaces - std::min(places, sizePlaces));
        const unsigned long long down = getPower(places - std::min(places, sizePlaces));
        const unsigned long long common = std::gcd(up * 1ULL, size);
        const nxUInt128 divisor = static_cast<nxUInt128>(size / common) * down;
        // No recorded size reaches 2^64 - 1, so where the divisor does not fit only 0 is a whole number of
        // lots, as it should be.
        (*ratios)[places] = {up / common,
                             divisor > ULLONG_MAX ? ULLONG_MAX : static_cast<unsigned long long>(divisor)};
    }
    _ratios = ratios;
}

bool nxLotScale::_GetLotsSlow(long long mantissa, const Ratio& ratio, unsigned int& lots)
{
    const nxUInt128 product = static_cast<nxUInt128>(mantissa) * ratio.multiplier;
    const nxUInt128 count = product / ratio.divisor;
    lots = static_cast<unsigned int>(count);
    return count <= MaxLots && count * ratio.divisor == product;
}

unsigned int nxLotScale::GetRounded(long long mantissa, unsigned char places) const
{
    const Ratio& ratio = (*_ratios)[places];
    const nxUInt128 product = static_cast<nxUInt128>(mantissa) * ratio.multiplier;
    const nxUInt128 count = (product + ratio.divisor / 2) / ratio.divisor;
    if (count > MaxLots) return MaxLots;
    return count == 0 && mantissa > 0 ? 1 : static_cast<unsigned int>(count);
}

std::string nxLotScale::GetRefusal(long long mantissa, unsigned char places, unsigned char knownPlaces) const
{
    const nxDecimal size = nxDecimal::FromMantissa(mantissa, places);
    nxDecimal significant = size;
    significant.Normalise(0);
    const Ratio& ratio = (*_ratios)[places];
    const bool isWhole = static_cast<nxUInt128>(mantissa) * ratio.multiplier % ratio.divisor == 0;
    std::string reason = "size " + size.GetAsString();
    reason += isWhole ? " is more than " + std::to_string(MaxLots) + " lots of " + _lotSize.GetAsString()
                      : " is not a whole number of lots of " + _lotSize.GetAsString();

    // The finest step of the recorded sizes keeps them all whole; a size too large for it needs the coarsest
    // that it is still a multiple of.
    unsigned int lots = 0;
    nxDecimal fitting = nxDecimal::FromMantissa(1, std::max(knownPlaces, significant.GetDecimalPlaces()));
    if (!nxLotScale(fitting).GetLots(mantissa, places, lots)) {
        fitting = nxDecimal::FromMantissa(1, significant.GetDecimalPlaces());
        while (fitting.GetMantissa() < LLONG_MAX / 10 && !nxLotScale(fitting).GetLots(mantissa, places, lots))
            fitting =
                fitting.GetDecimalPlaces() > 0
                    ? nxDecimal::FromMantissa(1, static_cast<unsigned char>(fitting.GetDecimalPlaces() - 1))
                    : nxDecimal::FromMantissa(fitting.GetMantissa() * 10, 0);
    }
    const bool fits = nxLotScale(fitting).GetLots(mantissa, places, lots);
    return reason + (fits ? "; lotSize = " + fitting.GetAsString() + " would fit"
                          : "; no lot size of a power of ten fits, --round-volumes rounds");
}

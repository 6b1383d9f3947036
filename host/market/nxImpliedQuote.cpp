#include "host/market/nxImpliedQuote.h"

#include <algorithm>
#include <limits>

#include "base/values/nxInt128.h"

namespace {

// A sum of products of two decimals, exact; once it does not fit it stays so.
class ExactSum
{
public:
    void Add(const nxDecimal& number, const nxDecimal& factor, bool isNegative)
    {
        nxDecimal left = number, right = factor;
        left.Normalise(0);
        right.Normalise(0);
        nxInt128 mantissa = nxInt128(left.GetMantissa()) * right.GetMantissa();
        unsigned int places = left.GetDecimalPlaces() + 0u + right.GetDecimalPlaces();
        if (isNegative) mantissa = -mantissa;
        _Widen(mantissa, places, _places);
        _Widen(_mantissa, _places, places);
        _fits = _fits && !__builtin_add_overflow(_mantissa, mantissa, &_mantissa);
    }

    // To a multiple of the tick: not above the sum, or not below it. Without a tick as it is.
    nxDecimal GetAsDecimal(const nxDecimal& tick, bool goesUp)
    {
        if (tick.IsValid()) _Round(tick, goesUp);
        for (; _places != 0 && _mantissa % 10 == 0; --_places)
            _mantissa /= 10;
        constexpr nxInt128 most = std::numeric_limits<long long>::max();
        if (!_fits || _places > nxDecimal::MaxDecimalPlaces || _mantissa > most || _mantissa < -most)
            return {};
        nxDecimal result =
            nxDecimal::FromMantissa(static_cast<long long>(_mantissa), static_cast<unsigned char>(_places));
        if (tick.IsValid()) result.Normalise(tick.GetDecimalPlaces());
        return result;
    }

private:
    void _Widen(nxInt128& mantissa, unsigned int& from, unsigned int to)
    {
        for (; from < to && _fits; ++from)
            _fits = !__builtin_mul_overflow(mantissa, nxInt128(10), &mantissa);
    }

    void _Round(const nxDecimal& tick, bool goesUp)
    {
        nxInt128 step = tick.GetMantissa();
        unsigned int places = tick.GetDecimalPlaces();
        _Widen(step, places, _places);
        _Widen(_mantissa, _places, places);
        if (!_fits) return;
        const nxInt128 rest = _mantissa % step;  // of the sign of the sum
        if (rest == 0) return;
        _mantissa -= rest;
        if (goesUp && rest > 0) _fits = !__builtin_add_overflow(_mantissa, step, &_mantissa);
        if (!goesUp && rest < 0) _fits = !__builtin_sub_overflow(_mantissa, step, &_mantissa);
    }

    nxInt128 _mantissa = 0;
    unsigned int _places = 0;
    bool _fits = true;
};

void SetSide(const nxStrategyTerms& terms, bool atVenue, nxSide side, nxDecimal& price, nxVolume& volume)
{
    ExactSum sum;
    unsigned int lots = std::numeric_limits<unsigned int>::max();
    bool hasVolume = true;
    for (const nxStrategyTerms::Leg& leg : terms.legs) {
        const nxMarketProduct& market = atVenue ? *leg.atVenue : *leg.market;
        const nxBestQuote best = market.GetBest(leg.side == nxSide::Buy ? side : nxGetOpposite(side));
        if (!best.price.IsValid()) return;
        sum.Add(best.price, leg.priceRatio, leg.side == nxSide::Sell);
        hasVolume = hasVolume && best.volume.IsValid();
        if (best.volume.IsValid()) lots = std::min(lots, best.volume.GetValue() / leg.tradeRatio);
    }
    if (lots == 0) return;
    if (terms.priceOffset.IsValid()) sum.Add(terms.priceOffset, nxDecimalOne, false);
    price = sum.GetAsDecimal(terms.tickSize, side == nxSide::Sell);
    if (price.IsValid() && hasVolume) volume = lots;
}

}  // namespace

nxImpliedQuote::nxImpliedQuote(const nxStrategyTerms& terms, bool atVenue)
{
    SetSide(terms, atVenue, nxSide::Buy, bid, bidVolume);
    SetSide(terms, atVenue, nxSide::Sell, ask, askVolume);
}

#include "host/feed/nxFeedProduct.h"

void nxFeedProduct::NoteQuote(const nxDecimal& bid, const nxDecimal& ask)
{
    if (bid.IsValid()) _bid = bid;
    if (ask.IsValid()) _ask = ask;
    if (!_bid.IsValid() || !_ask.IsValid() || _bid < _ask) return;
    ++(_bid == _ask ? _locked : _crossed);
}

unsigned char nxFeedProduct::_GetSignificantPlaces(const nxCsvNumber& number, unsigned char least)
{
    unsigned char places = number.places;
    for (long long rest = number.mantissa; places > least && rest % 10 == 0; rest /= 10)
        --places;
    return places;
}

void nxFeedProduct::_NoteFinerPrice(const nxCsvNumber& price)
{
    const unsigned char places = _GetSignificantPlaces(price, _pricePlaces);
    if (places == _pricePlaces) return;
    _pricePlaces = places;
    _tickSize = nxDecimal::FromMantissa(1, places);
}

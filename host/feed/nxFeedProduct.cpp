#include "host/feed/nxFeedProduct.h"

void nxFeedProduct::NoteQuote(const nxDecimal& bid, const nxDecimal& ask)
{
    // One after which there is a bid or an ask for the first time.
    if ((bid.IsValid() && !_bid.IsValid()) || (ask.IsValid() && !_ask.IsValid())) [[unlikely]]
        _NoteKnown();
    if (bid.IsValid()) _bid = bid;
    if (ask.IsValid()) _ask = ask;
    if (!_bid.IsValid() || !_ask.IsValid() || _bid < _ask) return;
    ++(_bid == _ask ? _tally.locked : _tally.crossed);
    _Note(Change::Tally);
}

void nxFeedProduct::Follow(const nxFeedProduct& other)
{
    nxFeedProductChanges* const changes = _changes;
    const unsigned char places = _pricePlaces;
    *this = other;
    _changes = changes;
    if (places <= _pricePlaces || _isTickGiven) return;
    _pricePlaces = places;
    _tickSize = nxDecimal::FromMantissa(1, places);
}

unsigned char nxFeedProduct::_GetSignificantPlaces(const nxDecimal& number, unsigned char least)
{
    unsigned char places = number.GetDecimalPlaces();
    for (long long rest = number.GetMantissa(); places > least && rest % 10 == 0; rest /= 10)
        --places;
    return places;
}

void nxFeedProduct::_NoteFinerPrice(const nxDecimal& price)
{
    const unsigned char places = _GetSignificantPlaces(price, _pricePlaces);
    if (places == _pricePlaces) return;
    _pricePlaces = places;
    _tickSize = nxDecimal::FromMantissa(1, places);
    _NoteKnown();
}

void nxFeedProduct::_NoteLargest(const nxDecimal& size)
{
    if (_largestSize < size) _largestSize = size;
}

void nxFeedProduct::FindLots(bool isRounding)
{
    if (_isDescribed || _hasFoundLots) return;
    const auto fits = [this](const nxDecimal& lot, unsigned int room) {
        return _largestSize.GetAsDouble() / lot.GetAsDouble() * room <= nxLotScale::MaxLots;
    };
    nxDecimal lot = nxDecimal::FromMantissa(1, _sizePlaces);
    if (!fits(lot, 1)) {
        if (!isRounding) return;  // the first size at fault is refused, with the cure
        constexpr unsigned int room = 16;
        for (unsigned char places = _sizePlaces; places > 0 && !fits(lot, room);)
            lot = nxDecimal::FromMantissa(1, --places);
        for (long long size = 1; !fits(lot, room);)
            lot = nxDecimal::FromMantissa(size *= 10, 0);
    }
    _lots = nxLotScale(lot);
    _NoteKnown();
    _hasFoundLots = lot != nxDecimalOne;
}

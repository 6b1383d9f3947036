#include "host/results/nxLotBook.h"

#include <algorithm>

namespace {

constexpr unsigned char SharePlaces = 10;

// The part of an amount that belongs to some of its lots, which leaves the rest to the others: all shares
// together are the amount.
nxExactAmount TakeShare(nxExactAmount& amount, unsigned long long part, unsigned long long whole)
{
    const nxExactAmount share = part == whole ? amount
                                              : amount.GetShare(static_cast<long long>(part),
                                                                static_cast<long long>(whole), SharePlaces);
    amount -= share;
    return share;
}

double GetAverage(const nxExactAmount& prices, unsigned long long volume)
{
    return prices.GetShare(1, static_cast<long long>(volume), SharePlaces).GetAsDouble();
}

nxExactAmount GetSigned(nxSide side, const nxExactAmount& amount)
{
    return side == nxSide::Buy ? amount : nxExactAmount() - amount;
}

nxExactAmount GetPositive(const nxExactAmount& amount)
{
    return amount.IsNegative() ? nxExactAmount() : amount;
}

}  // namespace

void nxLotBook::Add(const Fill& fill, const Take& take)
{
    unsigned long long left = fill.volume;
    nxExactAmount fee = fill.fee;
    while (left != 0 && !_lots.empty() && _side != fill.side) {
        const unsigned long long part = std::min(left, _lots.front().volume);
        const nxExactAmount share = TakeShare(fee, part, left);
        _Close(fill, part, share, take);
        left -= part;
    }
    if (left != 0) _Open(fill, left, fee);
    if (fill.isLast) CompleteOrder(fill.order, take);
}

void nxLotBook::_Open(const Fill& fill, unsigned long long volume, const nxExactAmount& fee)
{
    const nxExactAmount prices(fill.price, static_cast<long long>(volume));
    if (_lots.empty()) {
        _lowest.Clear();
        _highest.Clear();
        _side = fill.side;
    }
    if (_matching == nxMatching::Average && !_lots.empty()) {
        Lot& all = _lots.front();
        all.volume += volume;
        all.prices += prices;
        all.fee += fee;
    } else {
        _lots.push_back({++_latest, fill.order, fill.time, volume, prices, fee});
    }
}

void nxLotBook::_Close(const Fill& fill, unsigned long long volume, const nxExactAmount& fee,
                       const Take& take)
{
    Lot& lot = _lots.front();
    if (_pending && (_pending->trip.entryOrder != lot.order || _pending->trip.exitOrder != fill.order))
        Complete(take);
    if (!_pending) {
        _pending.emplace();
        nxRoundTrip& made = _pending->trip;
        made.product = _product;
        made.side = _side;
        made.entryTime = lot.time;
        made.entryOrder = lot.order;
        made.exitOrder = fill.order;
    }
    const auto lots = static_cast<long long>(volume);
    const nxExactAmount entry = TakeShare(lot.prices, volume, lot.volume);
    const nxExactAmount exit(fill.price, lots);
    const nxExactAmount fees = fee + TakeShare(lot.fee, volume, lot.volume);
    const auto getMoney = [&](const nxDecimal& price) {
        return GetSigned(_side, nxExactAmount(price, lots) - entry) * _pointValue;
    };
    // The exit is a price that the market came to, whatever the marks were.
    nxDecimal lowest = _lowest.GetSince(lot.number), highest = _highest.GetSince(lot.number);
    if (lowest.IsNull() || fill.price < lowest) lowest = fill.price;
    if (highest.IsNull() || fill.price > highest) highest = fill.price;
    nxRoundTrip& trip = _pending->trip;
    trip.volume += volume;
    trip.exitTime = fill.time;
    trip.fees += fees;
    trip.profit += GetSigned(_side, exit - entry) * _pointValue - fees;
    trip.mae += GetPositive(nxExactAmount() - getMoney(_side == nxSide::Buy ? lowest : highest));
    trip.mfe += GetPositive(getMoney(_side == nxSide::Buy ? highest : lowest));
    _pending->entryPrices += entry;
    _pending->exitPrices += exit;
    lot.volume -= volume;
    if (lot.volume == 0) _lots.pop_front();
}

void nxLotBook::Adjust(const nxAdjustment& adjustment, const Take& take)
{
    if (!adjustment.EndsOrders()) return;
    Complete(take);
    _lowest.Clear();
    _highest.Clear();
    const auto newLots = static_cast<unsigned long long>(adjustment.newLots);
    const auto oldLots = static_cast<unsigned long long>(adjustment.oldLots);
    unsigned long long before = 0, after = 0;
    for (Lot& lot : _lots) {
        if (adjustment.kind == nxAdjustmentKind::Roll) {
            lot.prices += nxExactAmount(adjustment.value, static_cast<long long>(lot.volume));
            continue;
        }
        // All together become as many as the account has; the part of a lot that is paid out takes its price
        // with it.
        before += lot.volume;
        const unsigned long long volume = before * newLots / oldLots - after;
        const unsigned long long whole = lot.volume * newLots;
        if (volume * oldLots < whole)
            static_cast<void>(TakeShare(lot.prices, whole - volume * oldLots, whole));
        after += volume;
        lot.volume = volume;
    }
    std::erase_if(_lots, [](const Lot& lot) { return lot.volume == 0; });
}

void nxLotBook::Complete(const Take& take)
{
    if (!_pending) return;
    nxRoundTrip& trip = _pending->trip;
    trip.entryPrice = GetAverage(_pending->entryPrices, trip.volume);
    trip.exitPrice = GetAverage(_pending->exitPrices, trip.volume);
    take(std::move(trip));
    _pending.reset();
}

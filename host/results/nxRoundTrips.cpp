#include "host/results/nxRoundTrips.h"

#include <algorithm>
#include <limits>

namespace {

constexpr std::array<nxExactAmount nxRoundTrip::*, 4> AmountsOfTrip = {
    &nxRoundTrip::profit, &nxRoundTrip::fees, &nxRoundTrip::mae, &nxRoundTrip::mfe};

}  // namespace

void nxRoundTrips::Add(const nxRoundTrip& trip)
{
    Row& row = _rows.emplace_back();
    row.exitTime = trip.exitTime;
    row.isWhole = trip.volume > std::numeric_limits<unsigned int>::max();
    for (std::size_t i = 0; i < Amounts && !row.isWhole; ++i) {
        const auto parts = (trip.*AmountsOfTrip[i]).GetParts();
        row.isWhole = !parts;
        if (!parts) break;
        row.mantissas[i] = parts->mantissa;
        row.places[i] = parts->places;
    }
    if (row.isWhole) {
        row.volume = static_cast<unsigned int>(_whole.size());
        _whole.push_back(trip);
        return;
    }
    row.entryTime = trip.entryTime;
    row.entryPrice = trip.entryPrice;
    row.exitPrice = trip.exitPrice;
    row.product = trip.product;
    row.volume = static_cast<unsigned int>(trip.volume);
    row.entryOrder = trip.entryOrder;
    row.exitOrder = trip.exitOrder;
    row.side = trip.side;
    row.hasExcursions = trip.hasExcursions;
}

void nxRoundTrips::Add(const nxRoundTrips& others)
{
    for (const nxRoundTrip& trip : others)
        Add(trip);
}

void nxRoundTrips::SortByExit()
{
    if (!std::ranges::is_sorted(_rows, {}, &Row::exitTime))
        std::ranges::stable_sort(_rows, {}, &Row::exitTime);
}

nxRoundTrip nxRoundTrips::operator[](std::size_t place) const
{
    const Row& row = _rows[place];
    if (row.isWhole) return _whole[row.volume];
    nxRoundTrip trip;
    trip.product = row.product;
    trip.side = row.side;
    trip.volume = row.volume;
    trip.entryTime = row.entryTime;
    trip.exitTime = row.exitTime;
    trip.entryPrice = row.entryPrice;
    trip.exitPrice = row.exitPrice;
    trip.hasExcursions = row.hasExcursions;
    trip.entryOrder = row.entryOrder;
    trip.exitOrder = row.exitOrder;
    for (std::size_t i = 0; i < Amounts; ++i)
        trip.*AmountsOfTrip[i] = nxExactAmount::FromParts({row.mantissas[i], row.places[i]});
    return trip;
}

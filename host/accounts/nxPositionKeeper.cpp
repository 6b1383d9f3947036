#include "host/accounts/nxPositionKeeper.h"

#include <algorithm>
#include <cstdlib>

namespace {

constexpr unsigned char AveragePlaces = 10;

nxDecimal GetAverage(const nxExactAmount& sum, unsigned long long volume)
{
    if (volume == 0) return {};
    return sum.GetShare(1, static_cast<long long>(volume), AveragePlaces).GetAsDecimal(AveragePlaces);
}

}  // namespace

nxDecimal nxPositionKeeper::Section::GetAveragePrice(nxSide side) const
{
    return GetAverage(prices[side], volume[side]);
}

void nxPositionKeeper::AddFill(nxSide side, const nxDecimal& price, unsigned int volume,
                               const nxExactAmount& fee)
{
    const nxExactAmount money(price, volume, _pointValue);
    const nxExactAmount sum(price, volume);
    for (Section* section : {&_total, &_day}) {
        section->volume[side] += volume;
        section->money[side] += money;
        section->prices[side] += sum;
        section->fees += fee;
    }
    _cash -= fee;
    side == nxSide::Buy ? _cash -= money : _cash += money;
    long long change = nxGetSigned(side, volume);
    if (_net != 0 && (_net < 0) != (change < 0)) {
        const long long closed = std::min(std::abs(_net), std::abs(change));
        _openSum -= _openSum.GetShare(closed, std::abs(_net), AveragePlaces);
        const long long signedClosed = change > 0 ? closed : -closed;
        _net += signedClosed;
        change -= signedClosed;
        if (_net == 0) _openSum = {};
    }
    _net += change;
    _openSum += nxExactAmount(price, change);
}

void nxPositionKeeper::Split(const nxAdjustment& split, long long lots)
{
    const long long part = lots * split.oldLots;
    const long long whole = _net * split.newLots;
    if (part == 0 || whole == 0)
        _openSum = {};
    else if (std::abs(part) < std::abs(whole))
        _openSum = _openSum.GetShare(part, whole, AveragePlaces);
    _net = lots;
}

void nxPositionKeeper::Roll(const nxDecimal& difference)
{
    _openSum += nxExactAmount(difference, _net);
    AddCash(nxExactAmount(difference, -_net, _pointValue));
}

void nxPositionKeeper::BeginDay(const nxDecimal& mark)
{
    _day = {};
    _dayCash = {};
    _dayBegin = _GetValue(mark);
}

nxDecimal nxPositionKeeper::GetOpenAveragePrice() const
{
    if (_net == 0) return {};
    return _openSum.GetShare(1, _net, AveragePlaces).GetAsDecimal(AveragePlaces);
}

nxExactAmount nxPositionKeeper::_GetValue(const nxDecimal& mark) const
{
    if (_net == 0) return {};
    return nxExactAmount(mark.IsValid() ? mark : GetOpenAveragePrice(), _net, _pointValue);
}

nxExactAmount nxPositionKeeper::GetTotalProfit(const nxDecimal& mark) const
{
    return _cash + _GetValue(mark);
}

nxExactAmount nxPositionKeeper::GetDayProfit(const nxDecimal& mark) const
{
    return _day.money.sell - _day.money.buy - _day.fees + _dayCash + _GetValue(mark) - _dayBegin;
}

nxExactAmount nxPositionKeeper::GetOpenProfit(const nxDecimal& mark) const
{
    if (_net == 0 || !mark.IsValid()) return {};
    return _GetValue(mark) - _GetValue({});
}

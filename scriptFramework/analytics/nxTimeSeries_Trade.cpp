#include "scriptFramework/analytics/nxTimeSeries_Trade.h"

#include <cmath>
#include <vector>

#include "base/time/nxTimeStamp.h"
#include "quant/nxMathCalculator.h"

namespace {

constexpr unsigned char ZeroPlaces = 4;
constexpr unsigned char CalculatedPlaces = 8;

void SetZero(nxDecimal& value)
{
    value.SetFromDouble(0.0, ZeroPlaces);
}

}  // namespace

void nxTimeSeries_Trade::AddTrade(const nxDecimal& price, const nxVolume& volume)
{
    const nxTimeStamp now;
    const Entry entry{now.GetTotalSecondsAsDouble(), price.GetAsDouble(), price, volume.GetValue(),
                      now.GetNanoseconds()};
    const nxMutexGuard guard(_mutex);
    // Also here, for windows that are seldom or never calculated.
    _Expire(entry.seconds);
    _entries.push_back(entry);
    _ChargeEntries();
}

void nxTimeSeries_Trade::SetAccount(const nxScriptCharge::Account& account)
{
    const nxMutexGuard guard(_mutex);
    _charge = nxScriptCharge(account);
}

// By the thousand, so that few trades come to the account.
void nxTimeSeries_Trade::_ChargeEntries()
{
    constexpr std::size_t step = 1024;
    const std::size_t charged = _charge.GetBytes() / sizeof(Entry);
    if (_entries.size() <= charged && _entries.size() + 2 * step > charged) return;
    _charge.SetAnyway((_entries.size() / step + 1) * step * sizeof(Entry));
}

void nxTimeSeries_Trade::EnableRegression()
{
    const nxMutexGuard guard(_mutex);
    _regressionEnabled = true;
}

void nxTimeSeries_Trade::Recalculate()
{
    const nxMutexGuard guard(_mutex);
    _Reset();
    if (_entries.empty()) return;
    _Expire(nxTimeStamp().GetTotalSecondsAsDouble());
    _ChargeEntries();
    if (_entries.empty()) return;
    _Summarise();
    if (_regressionEnabled) _FindSlope();
}

void nxTimeSeries_Trade::_Reset()
{
    for (nxDecimal* value : {&_min, &_max, &_range, &_average, &_averageVolume, &_vwap, &_standardDeviation,
                             &_first, &_last, &_slope})
        value->SetNull();
    _totalTraded = 0u;
    SetZero(_percentageChange);
    _size = 0;
}

void nxTimeSeries_Trade::_Expire(double now)
{
    while (!_entries.empty() && now - _entries.front().seconds > _duration)
        _entries.pop_front();
}

void nxTimeSeries_Trade::_Summarise()
{
    _size = static_cast<unsigned int>(_entries.size());
    double sum = 0.0;
    double weighted = 0.0;
    unsigned int volume = 0;
    for (const Entry& entry : _entries) {
        if (_first.IsNull()) _first = entry.price;
        if (_min.IsNull() || entry.price < _min) _min = entry.price;
        if (_max.IsNull() || entry.price > _max) _max = entry.price;
        sum += entry.priceAsDouble;
        volume += entry.volume;
        weighted += entry.priceAsDouble * entry.volume;
    }
    _last = _entries.back().price;
    _range = _max - _min;
    _FindDeviation(sum);
    _averageVolume.SetFromDouble(static_cast<double>(volume) / _size, CalculatedPlaces);
    if (weighted == 0.0) {
        SetZero(_vwap);
    } else {
        _vwap.SetFromDouble(weighted / volume, CalculatedPlaces);
    }
    _totalTraded = volume;
    if (_first != _last) {
        const double first = _first.GetAsDouble();
        _percentageChange.SetFromDouble((_last.GetAsDouble() - first) / first * 100.0, CalculatedPlaces);
    }
}

// Around the average as it is shown, rounded. Prices that sum up to 0, as those of a spread can, count as
// having neither average nor deviation.
void nxTimeSeries_Trade::_FindDeviation(double sum)
{
    if (sum == 0.0) {
        SetZero(_average);
        SetZero(_standardDeviation);
        return;
    }
    _average.SetFromDouble(sum / _size, CalculatedPlaces);
    const double average = _average.GetAsDouble();
    double squares = 0.0;
    for (const Entry& entry : _entries)
        squares += (entry.priceAsDouble - average) * (entry.priceAsDouble - average);
    _standardDeviation.SetFromDouble(std::sqrt(squares / _size), CalculatedPlaces);
}

void nxTimeSeries_Trade::_FindSlope()
{
    SetZero(_slope);
    if (_entries.size() < 2) return;
    std::vector<double> x, y, coefficients, residuals, fitted;
    x.reserve(_entries.size());
    y.reserve(_entries.size());
    // Where the line begins changes nothing of its slope, and times near 0 keep their nanoseconds.
    const auto getWhole = [](const Entry& entry) {
        return std::nearbyint(entry.seconds - entry.nanoseconds * 1e-9);
    };
    const double begin = getWhole(_entries.front());
    for (const Entry& entry : _entries) {
        x.push_back(getWhole(entry) - begin + entry.nanoseconds * 1e-9);
        y.push_back(entry.priceAsDouble);
    }
    if (nxMathCalculator::GetInstance().CalculateLinerRegression(x, y, coefficients, residuals, fitted) &&
        coefficients.size() == 2)
        _slope.SetFromDouble(coefficients[1], CalculatedPlaces);
}

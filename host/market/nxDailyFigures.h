#pragma once

#include <cmath>

// What the days of a product's data so far say of one of its days: how much is traded, and how far the price
// moves. A day counts once it is over. A value.
class nxDailyFigures
{
public:
    // close: the price of its last trade.
    void AddDay(double volume, double close)
    {
        ++_days;
        _volume += volume;
        if (_close > 0 && close > 0) {
            const double change = close / _close - 1;
            _squares += change * change;
            ++_changes;
        }
        _close = close;
    }
    // The next day goes on at prices that cannot be compared.
    void ForgetClose() { _close = 0; }

    // The mean; 0 while there is none.
    double GetVolume() const { return _days == 0 ? 0 : _volume / _days; }
    // The root of the mean square of the changes from close to close, as parts of the price; 0 while there is
    // none.
    double GetVolatility() const { return _changes == 0 ? 0 : std::sqrt(_squares / _changes); }

private:
    double _volume = 0;
    double _squares = 0;
    double _close = 0;  // of the day before
    int _days = 0;
    int _changes = 0;
};

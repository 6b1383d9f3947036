#pragma once

#include <cmath>

// A sum over a whole history that keeps beside it what rounding took away (Neumaier's): its error does not
// grow with the number of summands.
class nxCompensatedSum
{
public:
    double Push(double value)
    {
        const double sum = _sum + value;
        _lost += std::abs(_sum) < std::abs(value) ? (value - sum) + _sum : (_sum - sum) + value;
        _sum = sum;
        return _sum + _lost;
    }

private:
    double _sum = 0;
    double _lost = 0;
};

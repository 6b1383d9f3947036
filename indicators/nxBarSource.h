#pragma once

#include <array>

#include "indicators/nxIndicatorBar.h"

// Which value of a bar an indicator works on, as the parameter `source` names it.
class nxBarSource
{
public:
    static constexpr std::array names = {"close",   "open",     "high",    "low",   "median",
                                         "typical", "weighted", "average", "volume"};

    // Index is a place in `names`.
    explicit nxBarSource(unsigned int index = 0) : _index(index) {}

    double Get(const nxIndicatorBar& bar) const
    {
        switch (_index) {
            case 1:
                return bar.open;
            case 2:
                return bar.high;
            case 3:
                return bar.low;
            case 4:
                return (bar.high + bar.low) / 2;
            case 5:
                return bar.GetTypical();
            case 6:
                return (bar.high + bar.low + 2 * bar.close) / 4;
            case 7:
                return (bar.open + bar.high + bar.low + bar.close) / 4;
            case 8:
                return bar.volume;
            default:
                return bar.close;
        }
    }

private:
    unsigned int _index;
};

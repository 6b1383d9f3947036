#pragma once

// One bar as an indicator takes it in: prices, and the volume in lots.
struct nxIndicatorBar
{
    double open = 0;
    double high = 0;
    double low = 0;
    double close = 0;
    double volume = 0;

    double GetMedian() const { return (high + low) / 2; }
    double GetTypical() const { return (high + low + close) / 3; }
};

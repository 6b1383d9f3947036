#include "host/sweep/nxSearch.h"

#include <algorithm>
#include <cmath>
#include <numeric>

const nxSearch::Points& nxSearch::Ask()
{
    if (_open != 0) return _points;
    if (!_points.empty()) _Learn(_points, _values);
    _points = _Propose();
    _open = _points.size();
    _values.assign(_open, 0.0);
    _isTold.assign(_open, false);
    return _points;
}

void nxSearch::Tell(std::size_t point, double value)
{
    if (!_isTold[point]) --_open;
    _isTold[point] = true;
    _values[point] = value;
}

std::vector<std::size_t> nxSearch::_GetOrder(const std::vector<double>& values)
{
    std::vector<std::size_t> order(values.size());
    std::iota(order.begin(), order.end(), 0);
    std::ranges::stable_sort(order, [&](std::size_t a, std::size_t b) {
        return std::isnan(values[b]) ? !std::isnan(values[a]) : values[a] > values[b];
    });
    return order;
}

#include "scriptFramework/analytics/nxAlgoDataSeriesObject.h"

#include <algorithm>
#include <numeric>

#include "quant/nxMathCalculator.h"

using Self = nxAlgoDataSeriesObject;

constexpr nxLuaWrapper<Self>::FunctionType Self::Functions[] = {
    {"add", &Self::add},         {"get", &Self::get},       {"clear", &Self::clear},
    {"average", &Self::average}, {"stddev", &Self::stddev}, {"covariance", &Self::covariance},
    {"maxX", &Self::maxX},       {"maxY", &Self::maxY},     {"minX", &Self::minX},
    {"minY", &Self::minY},       {nullptr, nullptr},
};
static_assert(nxIsBoundTable(Self::Functions));

constexpr nxLuaWrapper<Self>::PropertyType Self::Properties[] = {
    {"size", &Self::Get_size, nullptr},
    {"slope", &Self::Get_slope, nullptr},
    {"capacity", &Self::Get_capacity, &Self::Set_capacity},
    {nullptr, nullptr, nullptr},
};
static_assert(nxIsBoundTable(Self::Properties));

void nxAlgoDataSeriesObject::_Compact()
{
    const auto dropped = static_cast<std::ptrdiff_t>(_dropped);
    _x.erase(_x.begin(), _x.begin() + dropped);
    _y.erase(_y.begin(), _y.begin() + dropped);
    _dropped = 0;
}

void nxAlgoDataSeriesObject::_CapacityCheck()
{
    if (_capacity == 0 || _GetSize() <= _capacity) return;
    _dropped = _x.size() - _capacity;
    if (_dropped >= _x.size() / 2) _Compact();
}

bool nxAlgoDataSeriesObject::_Grow(nxLuaResults& results)
{
    const std::size_t points = std::max<std::size_t>(2 * _x.capacity(), 16);
    if (!results.Sets(_charge, 2 * points * sizeof(double))) return false;
    _x.reserve(points);
    _y.reserve(points);
    return true;
}

bool nxAlgoDataSeriesObject::add(nxLuaParameters& parameters, nxLuaResults& results)
{
    if (parameters.Count() != 2)
        return results.Fail("Invalid arguments to DataSeries:add. Requires 2 arguments");
    const double x = parameters.Parameter(1).GetNumber();
    const double y = parameters.Parameter(2).GetNumber();
    if (_x.size() == _x.capacity() && !_Grow(results)) return false;
    _x.push_back(x);
    _y.push_back(y);
    _CapacityCheck();
    return true;
}

bool nxAlgoDataSeriesObject::get(nxLuaParameters& parameters, nxLuaResults& results)
{
    if (parameters.Count() != 1)
        return results.Fail("Invalid argument to DataSeries:get. Requires 1 parameter [index]");
    const unsigned int index = parameters.Parameter(1).GetUnsigned();
    if (index == 0 || index > _GetSize()) return results.Fail("Invalid index for DataSeries:get");
    results.Add(_x[_dropped + index - 1]);
    results.Add(_y[_dropped + index - 1]);
    return true;
}

bool nxAlgoDataSeriesObject::clear(nxLuaParameters&, nxLuaResults&)
{
    _x.clear();
    _y.clear();
    _dropped = 0;
    return true;
}

bool nxAlgoDataSeriesObject::average(nxLuaParameters&, nxLuaResults& results)
{
    const auto begin = static_cast<std::ptrdiff_t>(_dropped);
    const double count = static_cast<double>(std::max<std::size_t>(_GetSize(), 1));
    results.Add(std::accumulate(_x.begin() + begin, _x.end(), 0.0) / count);
    results.Add(std::accumulate(_y.begin() + begin, _y.end(), 0.0) / count);
    return true;
}

bool nxAlgoDataSeriesObject::stddev(nxLuaParameters&, nxLuaResults& results)
{
    _Compact();
    double x = 0.0;
    double y = 0.0;
    if (!nxMathCalculator::GetInstance().CalculateStandardDeviation(_x, _y, x, y))
        return results.Fail("stddev not supported on dataSeries");
    results.Add(x);
    results.Add(y);
    return true;
}

bool nxAlgoDataSeriesObject::covariance(nxLuaParameters&, nxLuaResults& results)
{
    _Compact();
    double covariance = 0.0;
    if (!nxMathCalculator::GetInstance().CalculateCovariance(_x, _y, covariance))
        return results.Fail("covariance not supported on dataSeries");
    results.Add(covariance);
    return true;
}

template <class IsBetter>
bool nxAlgoDataSeriesObject::_AddExtreme(nxLuaResults& results, IsBetter isBetter, bool firstGivesX)
{
    if (_GetSize() == 0) {
        results.Add(0.0);
        results.Add(0.0);
        return true;
    }
    std::size_t best = _dropped;
    for (std::size_t i = _dropped + 1; i < _x.size(); ++i)
        if (isBetter(i, best)) best = i;
    results.Add(_x[best]);
    results.Add(firstGivesX && best == _dropped ? _x[best] : _y[best]);
    return true;
}

bool nxAlgoDataSeriesObject::maxX(nxLuaParameters&, nxLuaResults& results)
{
    return _AddExtreme(
        results, [this](std::size_t i, std::size_t best) { return _x[i] > _x[best]; }, true);
}

bool nxAlgoDataSeriesObject::maxY(nxLuaParameters&, nxLuaResults& results)
{
    return _AddExtreme(results, [this](std::size_t i, std::size_t best) { return _y[i] > _y[best]; });
}

bool nxAlgoDataSeriesObject::minX(nxLuaParameters&, nxLuaResults& results)
{
    return _AddExtreme(results, [this](std::size_t i, std::size_t best) { return _x[i] < _x[best]; });
}

bool nxAlgoDataSeriesObject::minY(nxLuaParameters&, nxLuaResults& results)
{
    return _AddExtreme(results, [this](std::size_t i, std::size_t best) { return _y[i] < _y[best]; });
}

bool nxAlgoDataSeriesObject::Get_size(nxLuaResults& results)
{
    results.Add(static_cast<double>(_GetSize()));
    return true;
}

bool nxAlgoDataSeriesObject::Get_slope(nxLuaResults& results)
{
    results.Add(_GetSlope());
    return true;
}

bool nxAlgoDataSeriesObject::Get_capacity(nxLuaResults& results)
{
    results.Add(static_cast<double>(_capacity));
    return true;
}

bool nxAlgoDataSeriesObject::Set_capacity(const nxLuaParameter& value)
{
    const double capacity = value.GetNumber();
    _capacity = capacity < 0.0 ? 0 : nxLuaTruncate(capacity);
    _CapacityCheck();
    return true;
}

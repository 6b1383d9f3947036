#include "indicators/nxSteppedIndicator.h"

#include <algorithm>
#include <cmath>

#include "indicators/blocks/nxNoResult.h"

namespace {

// An infinity or NaN makes every sum with it one; else the sum is one only where it is too large.
bool IsFinite(const nxIndicatorBar& bar)
{
    if (std::isfinite(bar.open + bar.high + bar.low + bar.close + bar.volume)) [[likely]]
        return true;
    return std::isfinite(bar.open) && std::isfinite(bar.high) && std::isfinite(bar.low) &&
           std::isfinite(bar.close) && std::isfinite(bar.volume);
}

}  // namespace

nxSteppedIndicator::nxSteppedIndicator(const nxIndicatorType& type, const nxIndicatorArguments& arguments)
    : _type(type),
      _arguments(arguments),
      _formula(type.create(arguments)),
      _newest(type.lines.size(), nxNoResult),
      _realTime(type.lines.size(), nxNoResult)
{
    for (const nxIndicatorLine& line : type.lines) {
        _barsBack.push_back(line.barsBack ? arguments.GetCount(line.barsBack) : 0);
        _names.push_back(line.name);
    }
}

std::vector<std::string> nxSteppedIndicator::GetResultNames() const
{
    std::vector<std::string> names;
    for (const nxIndicatorLine& line : _type.lines)
        names.emplace_back(line.name);
    return names;
}

std::size_t nxSteppedIndicator::_FindLine(const std::string& name) const
{
    std::size_t line = 0;
    while (line < _names.size() && _names[line] != name)
        ++line;
    return line;
}

bool nxSteppedIndicator::GetNamedResult(unsigned int index, const std::string& name, double& result) const
{
    const std::size_t line = _FindLine(name);
    if (line == _names.size() || index >= _GetSize() || index < _barsBack[line]) return false;
    const unsigned int back = index - _barsBack[line];
    // Most scripts ask for the newest.
    const double value = back == 0 ? _newest[line] : _results[(_GetSize() - 1 - back) * _names.size() + line];
    if (!std::isfinite(value)) return false;
    result = value;
    return true;
}

bool nxSteppedIndicator::GetRealTimeResult(const std::string& name, double& result) const
{
    const std::size_t line = _FindLine(name);
    // A line that belongs to earlier bars knows nothing of the one under construction.
    if (!_hasRealTime || line == _names.size() || _barsBack[line] > 0) return false;
    if (!std::isfinite(_realTime[line])) return false;
    result = _realTime[line];
    return true;
}

void nxSteppedIndicator::CalculateNewResult(const Values& open, const Values& high, const Values& low,
                                            const Values& close, const Values& volume, unsigned int count)
{
    count = static_cast<unsigned int>(std::min<std::size_t>(count, close.size()));
    if (count < _size) {
        _formula = _type.create(_arguments);
        _results.Clear();
        _size = 0;
    }
    for (; _size < count; ++_size) {
        std::fill(_newest.begin(), _newest.end(), nxNoResult);
        const nxIndicatorBar bar{open[_size], high[_size], low[_size], close[_size], volume[_size]};
        if (IsFinite(bar)) _formula->Step(bar, _newest.data());
        for (const double value : _newest)
            _results.Append(value);
    }
}

void nxSteppedIndicator::CalculateRealTime(const Values& open, const Values& high, const Values& low,
                                           const Values& close, const Values& volume)
{
    _hasRealTime = !close.empty();
    if (!_hasRealTime) return;
    const auto completed = static_cast<unsigned int>(close.size() - 1);
    if (_size != completed) CalculateNewResult(open, high, low, close, volume, completed);
    std::fill(_realTime.begin(), _realTime.end(), nxNoResult);
    const nxIndicatorBar bar{open.back(), high.back(), low.back(), close.back(), volume.back()};
    if (IsFinite(bar)) _formula->Try(bar, _realTime.data());
}

#include "host/results/nxDrawdowns.h"

#include <algorithm>

void nxDrawdowns::_Fall(long long time, const nxExactAmount& depth)
{
    if (!_current) {
        _current = nxDrawdown{_peakTime.value_or(time), time, std::nullopt, _peak, depth};
    } else if ((_current->depth - depth).IsNegative()) {
        _current->depth = depth;
        _current->trough = time;
    }
}

void nxDrawdowns::_Recover(long long time)
{
    _current->to = time;
    _mostOfCapital = std::max(_mostOfCapital, _GetShare(*_current));
    _Keep(*_current);
    _current.reset();
}

void nxDrawdowns::_Keep(const nxDrawdown& drawdown)
{
    const auto place = std::ranges::find_if(
        _deepest, [&](const nxDrawdown& other) { return (other.depth - drawdown.depth).IsNegative(); });
    _deepest.insert(place, drawdown);
    if (_deepest.size() > MostKept) _deepest.pop_back();
}

double nxDrawdowns::_GetShare(const nxDrawdown& drawdown) const
{
    return _capital > 0.0 ? drawdown.depth.GetAsDouble() / (_capital + drawdown.peak.GetAsDouble()) : 0.0;
}

std::vector<nxDrawdown> nxDrawdowns::GetDeepest() const
{
    nxDrawdowns all = *this;
    if (_current) all._Keep(*_current);
    return all._deepest;
}

double nxDrawdowns::GetMostOfCapital() const
{
    return _current ? std::max(_mostOfCapital, _GetShare(*_current)) : _mostOfCapital;
}

#pragma once

#include <optional>
#include <utility>
#include <vector>

#include "base/values/nxExactAmount.h"

// A fall of the profit below its highest, and how long it took to come back.
struct nxDrawdown
{
    long long from = 0;           // when the highest was reached, at first
    long long trough = 0;         // when it was deepest
    std::optional<long long> to;  // when the highest was reached again; none: not until the end
    nxExactAmount peak;           // that highest
    nxExactAmount depth;
};

// The deepest drawdowns of a profit that is looked at again and again. It begins with 0 as its highest. A
// value of bounded size.
class nxDrawdowns
{
public:
    static constexpr std::size_t MostKept = 5;

    // Capital of 0: none, and no share of it.
    explicit nxDrawdowns(double capital = 0.0) : _capital(capital) {}

    // As they were, the deepest first; nothing is looked at any more.
    nxDrawdowns(std::vector<nxDrawdown> deepest, double mostOfCapital)
        : _capital(0.0), _deepest(std::move(deepest)), _mostOfCapital(mostOfCapital)
    {
    }

    // The profit is that from then on.
    void See(long long time, const nxExactAmount& profit)
    {
        _depth = _peak - profit;
        if (!_depth.IsNegative() && !_depth.IsZero()) return _Fall(time, _depth);
        if (_current || !_peakTime || _depth.IsNegative()) _peakTime = time;
        if (_current) _Recover(time);
        _depth = {};
        _peak = profit;
    }
    // How far it is below its highest now.
    const nxExactAmount& GetDepth() const { return _depth; }
    // The deepest first; of two alike the earlier.
    std::vector<nxDrawdown> GetDeepest() const;
    // The largest of all depths by the capital with the profit that it fell from; 0 without capital.
    double GetMostOfCapital() const;

private:
    void _Fall(long long time, const nxExactAmount& depth);
    void _Recover(long long time);
    void _Keep(const nxDrawdown& drawdown);
    double _GetShare(const nxDrawdown& drawdown) const;

    double _capital;
    nxExactAmount _peak;
    nxExactAmount _depth;
    std::optional<long long> _peakTime;  // none before the first look
    std::optional<nxDrawdown> _current;
    std::vector<nxDrawdown> _deepest;
    double _mostOfCapital = 0.0;  // of those that are over
};

#include "host/sweep/nxOverfitting.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace {

// Sums of a run over some days, of distances from its mean over all days, so that squares keep their digits.
struct Sums
{
    double days = 0.0, distances = 0.0, squares = 0.0;

    void Add(const Sums& other)
    {
        days += other.days;
        distances += other.distances;
        squares += other.squares;
    }
    double GetRatio(double meanOfAll) const
    {
        const double variance = (squares - distances * distances / days) / (days - 1.0);
        // What is left of rounding is no movement.
        if (!(variance > 1e-13 * squares / days)) return 0.0;
        return (meanOfAll + distances / days) / std::sqrt(variance);
    }
};

class Validation
{
public:
    Validation(const nxReturnMatrix& returns, std::size_t blocks)
        : _runs(returns.GetRuns()), _blocks(blocks), _means(_runs), _sums(blocks * _runs)
    {
        const std::size_t days = returns.GetDays();
        for (std::size_t day = 0; day < days; ++day)
            for (std::size_t run = 0; run < _runs; ++run)
                _means[run] += returns.At(day, run);
        for (double& mean : _means)
            mean /= static_cast<double>(days);
        for (std::size_t block = 0; block < blocks; ++block)
            for (std::size_t day = block * days / blocks; day < (block + 1) * days / blocks; ++day)
                for (std::size_t run = 0; run < _runs; ++run) {
                    const double distance = returns.At(day, run) - _means[run];
                    _sums[block * _runs + run].Add({1.0, distance, distance * distance});
                }
    }

    std::vector<double> GetRatios(unsigned int half) const
    {
        std::vector<Sums> sums(_runs);
        for (std::size_t block = 0; block < _blocks; ++block) {
            if ((half >> block & 1) == 0) continue;
            for (std::size_t run = 0; run < _runs; ++run)
                sums[run].Add(_sums[block * _runs + run]);
        }
        std::vector<double> ratios(_runs);
        for (std::size_t run = 0; run < _runs; ++run)
            ratios[run] = sums[run].GetRatio(_means[run]);
        return ratios;
    }

private:
    std::size_t _runs, _blocks;
    std::vector<double> _means;
    std::vector<Sums> _sums;  // block after block
};

double GetLogit(const std::vector<double>& ratios, double chosen)
{
    const auto below = std::ranges::count_if(ratios, [&](double ratio) { return ratio < chosen; });
    const auto same = std::ranges::count(ratios, chosen);
    const double rank = static_cast<double>(below) + (static_cast<double>(same) + 1.0) / 2.0;
    return std::log(rank / (static_cast<double>(ratios.size()) + 1.0 - rank));
}

}  // namespace

std::optional<nxOverfitting> nxOverfitting::Find(const nxReturnMatrix& returns, std::size_t blocks)
{
    if (returns.GetRuns() < 2 || returns.GetDays() < 2 * blocks) return std::nullopt;
    const Validation validation(returns, blocks);
    const unsigned int all = (1u << blocks) - 1;
    nxOverfitting found;
    double logits = 0.0;
    std::size_t low = 0, losing = 0;
    const auto judge = [&](const std::vector<double>& inside, const std::vector<double>& outside) {
        const double chosen =
            outside[static_cast<std::size_t>(std::ranges::max_element(inside) - inside.begin())];
        const double logit = GetLogit(outside, chosen);
        ++found.halves;
        logits += logit;
        low += logit <= 0.0;
        losing += chosen < 0.0;
    };
    // Each half with the first block, and the one without it that is its other half.
    for (unsigned int half = 1; half <= all; half += 2) {
        if (static_cast<std::size_t>(std::popcount(half)) != blocks / 2) continue;
        const std::vector<double> first = validation.GetRatios(half),
                                  second = validation.GetRatios(all & ~half);
        judge(first, second);
        judge(second, first);
    }
    const auto halves = static_cast<double>(found.halves);
    found.probability = static_cast<double>(low) / halves;
    found.loss = static_cast<double>(losing) / halves;
    found.meanLogit = logits / halves;
    return found;
}

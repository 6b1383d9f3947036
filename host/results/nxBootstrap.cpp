#include "host/results/nxBootstrap.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

// G. L. Steele, D. Lea and C. H. Flood, "Fast Splittable Pseudorandom Number Generators", 2014.
class SplitMix
{
public:
    explicit SplitMix(unsigned long long seed) : _state(seed) {}

    // Uniform in [0, 1), of 53 bits.
    double GetNext()
    {
        unsigned long long mixed = _state += 0x9E3779B97F4A7C15ull;
        mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9ull;
        mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EBull;
        return static_cast<double>((mixed ^ (mixed >> 31)) >> 11) * 0x1p-53;
    }
    std::size_t GetBelow(std::size_t limit)
    {
        return static_cast<std::size_t>(GetNext() * static_cast<double>(limit));
    }

private:
    unsigned long long _state;
};

// The cube root rounded to the nearest, in integers.
std::size_t GetBlockLength(std::size_t days)
{
    std::size_t length = 1;
    while ((2 * length + 1) * (2 * length + 1) * (2 * length + 1) <= 8 * days)
        ++length;
    return length;
}

}  // namespace

std::optional<std::pair<double, double>> nxBootstrap::GetInterval(
    std::span<const double> days, unsigned long long seed,
    const std::function<double(std::span<const double>)>& statistic)
{
    constexpr std::size_t resamples = 1000;
    if (days.size() < LeastDays) return std::nullopt;
    const double chanceOfNewBlock = 1.0 / static_cast<double>(GetBlockLength(days.size()));
    SplitMix random(seed);
    std::vector<double> drawn(days.size()), found;
    for (std::size_t i = 0; i < resamples; ++i) {
        std::size_t place = random.GetBelow(days.size());
        for (double& day : drawn) {
            day = days[place];
            // The day after the last one is the first.
            place = random.GetNext() < chanceOfNewBlock ? random.GetBelow(days.size())
                                                        : (place + 1) % days.size();
        }
        const double value = statistic(drawn);
        if (std::isfinite(value)) found.push_back(value);
    }
    if (found.size() < resamples / 2) return std::nullopt;
    std::ranges::sort(found);
    // One part in forty is cut off at each end.
    const std::size_t cut = found.size() / 40;
    return std::pair(found[cut], found[found.size() - 1 - cut]);
}

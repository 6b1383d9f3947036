#include "host/results/nxBootstrap.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "host/results/nxStationaryResampler.h"

std::optional<std::pair<double, double>> nxBootstrap::GetInterval(
    std::span<const double> days, unsigned long long seed,
    const std::function<double(std::span<const double>)>& statistic)
{
    constexpr std::size_t resamples = 1000;
    if (days.size() < LeastDays) return std::nullopt;
    nxStationaryResampler resampler(days.size(), seed);
    std::vector<std::size_t> places(days.size());
    std::vector<double> drawn(days.size()), found;
    for (std::size_t i = 0; i < resamples; ++i) {
        resampler.Draw(places);
        std::ranges::transform(places, drawn.begin(), [&](std::size_t place) { return days[place]; });
        const double value = statistic(drawn);
        if (std::isfinite(value)) found.push_back(value);
    }
    if (found.size() < resamples / 2) return std::nullopt;
    std::ranges::sort(found);
    // One part in forty is cut off at each end.
    const std::size_t cut = found.size() / 40;
    return std::pair(found[cut], found[found.size() - 1 - cut]);
}

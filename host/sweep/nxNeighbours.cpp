#include "host/sweep/nxNeighbours.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

#include "host/results/nxDayStatistics.h"

namespace {

using Places = std::vector<unsigned long long>;

bool IsNeighbour(const std::vector<nxDimension>& dimensions, const Places& a, const Places& b)
{
    unsigned long long steps = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (a[i] == b[i]) continue;
        if (!dimensions[i].IsOrdered()) return false;
        steps += a[i] < b[i] ? b[i] - a[i] : a[i] - b[i];
        if (steps > 1) return false;
    }
    return steps == 1;
}

double GetMedian(std::span<const double> values)
{
    std::vector<double> known;
    std::ranges::copy_if(values, std::back_inserter(known), [](double value) { return !std::isnan(value); });
    std::ranges::sort(known);
    return (known[(known.size() - 1) / 2] + known[known.size() / 2]) / 2.0;
}

std::vector<double> GetRanks(const std::vector<double>& numbers)
{
    std::vector<std::size_t> order(numbers.size());
    std::iota(order.begin(), order.end(), 0);
    std::ranges::sort(order, {}, [&](std::size_t i) { return numbers[i]; });
    std::vector<double> ranks(numbers.size());
    for (std::size_t begin = 0, end = 0; begin < order.size(); begin = end) {
        while (end < order.size() && numbers[order[end]] == numbers[order[begin]])
            ++end;
        for (std::size_t i = begin; i < end; ++i)
            ranks[order[i]] = static_cast<double>(begin + end + 1) / 2.0;
    }
    return ranks;
}

}  // namespace

std::optional<nxNeighbours> nxNeighbours::Find(const std::vector<nxDimension>& dimensions,
                                               const std::vector<Places>& places,
                                               std::span<const double> values)
{
    const auto isLess = [](double a, double b) { return std::isnan(a) ? !std::isnan(b) : a < b; };
    const auto best = std::ranges::max_element(values, isLess);
    if (best == values.end() || std::isnan(*best)) return std::nullopt;
    const Places& peak = places[static_cast<std::size_t>(best - values.begin())];
    std::vector<double> around;
    for (std::size_t i = 0; i < values.size(); ++i)
        if (!std::isnan(values[i]) && IsNeighbour(dimensions, peak, places[i])) around.push_back(values[i]);
    if (around.empty()) return std::nullopt;
    const double median = GetMedian(values), mean = nxStatistics::GetMean(around);
    const double stability =
        *best > median ? (mean - median) / (*best - median) : std::numeric_limits<double>::quiet_NaN();
    return nxNeighbours{around.size(), mean, *std::ranges::min_element(around), stability};
}

double nxGetRankCorrelation(std::span<const double> a, std::span<const double> b)
{
    std::vector<double> first, second;
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (std::isnan(a[i]) || std::isnan(b[i])) continue;
        first.push_back(a[i]);
        second.push_back(b[i]);
    }
    if (first.size() < 3) return std::numeric_limits<double>::quiet_NaN();
    const std::vector<double> x = GetRanks(first), y = GetRanks(second);
    const double middle = (static_cast<double>(x.size()) + 1.0) / 2.0;
    double both = 0.0, squaresX = 0.0, squaresY = 0.0;
    for (std::size_t i = 0; i < x.size(); ++i) {
        both += (x[i] - middle) * (y[i] - middle);
        squaresX += (x[i] - middle) * (x[i] - middle);
        squaresY += (y[i] - middle) * (y[i] - middle);
    }
    return both / std::sqrt(squaresX * squaresY);
}

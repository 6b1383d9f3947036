#include "host/sweep/nxTreeParzenSearch.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <span>

#include "host/sweep/nxNormal.h"

namespace {

constexpr double GoodShare = 0.15;

double GetNormalDensity(double x)
{
    return std::exp(-0.5 * x * x) / std::sqrt(2.0 * std::numbers::pi);
}

}  // namespace

double nxTreeParzenSearch::Axis::Snap(double share) const
{
    if (count == 0) return share;
    const auto values = static_cast<double>(count);
    return (std::min(std::floor(share * values), values - 1.0) + 0.5) / values;
}

// How points lie along one dimension.
struct nxTreeParzenSearch::Density
{
    Density(const Axis& theAxis, std::vector<double> points) : axis(theAxis)
    {
        if (axis.isOrdered) {
            _SetKernels(std::move(points));
            return;
        }
        weights.assign(axis.count, 1.0);
        for (const double point : points)
            weights[_GetPlace(point)] += 1.0;
        sum = static_cast<double>(axis.count + points.size());
    }

    double Get(double x) const
    {
        if (!axis.isOrdered) return weights[_GetPlace(x)] / sum;
        double density = 0.0;
        for (const Kernel& kernel : kernels)
            density += GetNormalDensity((x - kernel.middle) / kernel.width) /
                       (kernel.width * (kernel.high - kernel.low));
        return density / static_cast<double>(kernels.size());
    }

    double Draw(nxSplitMix& random) const
    {
        if (!axis.isOrdered) {
            double rest = random.GetNext() * sum;
            std::size_t place = 0;
            while (place + 1 < weights.size() && rest >= weights[place])
                rest -= weights[place++];
            return (static_cast<double>(place) + 0.5) / static_cast<double>(axis.count);
        }
        const Kernel& kernel = kernels[random.GetBelow(kernels.size())];
        const double share = kernel.low + (random.GetNext() + 0x1p-54) * (kernel.high - kernel.low);
        const double x = kernel.middle + kernel.width * nxNormal::GetQuantile(share);
        return axis.Snap(std::clamp(x, 0.0, 1.0 - 0x1p-53));
    }

private:
    // A normal distribution within 0 and 1, and the probabilities of these two ends.
    struct Kernel
    {
        Kernel(double theMiddle, double theWidth)
            : middle(theMiddle),
              width(theWidth),
              low(nxNormal::GetProbability(-middle / width)),
              high(nxNormal::GetProbability((1.0 - middle) / width))
        {
        }
        double middle, width, low, high;
    };

    void _SetKernels(std::vector<double> points)
    {
        std::ranges::sort(points);
        const double narrowest = 1.0 / std::min(100.0, 1.0 + static_cast<double>(points.size()));
        for (std::size_t i = 0; i < points.size(); ++i) {
            const double left = points[i] - (i == 0 ? 0.0 : points[i - 1]);
            const double right = (i + 1 == points.size() ? 1.0 : points[i + 1]) - points[i];
            kernels.emplace_back(points[i], std::clamp(std::max(left, right), narrowest, 1.0));
        }
        kernels.emplace_back(0.5, 1.0);
    }
    std::size_t _GetPlace(double share) const
    {
        return static_cast<std::size_t>(share * static_cast<double>(axis.count));
    }

    const Axis& axis;
    std::vector<Kernel> kernels;
    std::vector<double> weights;  // of values without an order
    double sum = 0.0;
};

nxTreeParzenSearch::nxTreeParzenSearch(const std::vector<nxDimension>& dimensions, std::size_t generation,
                                       unsigned long long seed)
    : _generation(generation), _random(seed)
{
    for (const nxDimension& dimension : dimensions)
        _axes.push_back({dimension.GetCount(), dimension.IsOrdered()});
}

nxSearch::Points nxTreeParzenSearch::_Propose()
{
    Points points(_generation, std::vector<double>(_axes.size()));
    if (_points.size() < Startup) {
        for (std::vector<double>& point : points)
            for (std::size_t i = 0; i < _axes.size(); ++i)
                point[i] = _axes[i].Snap(_random.GetNext());
        return points;
    }
    const std::vector<std::size_t> order = _GetOrder(_values);
    const auto goods = static_cast<std::size_t>(std::ceil(GoodShare * static_cast<double>(order.size())));
    const auto getDensity = [&](std::size_t axis, std::span<const std::size_t> chosen) {
        std::vector<double> along;
        for (const std::size_t i : chosen)
            along.push_back(_points[i][axis]);
        return Density(_axes[axis], std::move(along));
    };
    std::vector<Density> good, bad;
    for (std::size_t i = 0; i < _axes.size(); ++i) {
        good.push_back(getDensity(i, std::span(order).first(goods)));
        bad.push_back(getDensity(i, std::span(order).subspan(goods)));
    }
    for (std::vector<double>& point : points)
        point = _Choose(good, bad);
    return points;
}

std::vector<double> nxTreeParzenSearch::_Choose(const std::vector<Density>& good,
                                                const std::vector<Density>& bad)
{
    std::vector<double> best, point(_axes.size());
    double most = -HUGE_VAL;
    for (std::size_t draw = 0; draw < Draws; ++draw) {
        double score = 0.0;
        for (std::size_t i = 0; i < _axes.size(); ++i) {
            point[i] = good[i].Draw(_random);
            score += std::log(good[i].Get(point[i])) - std::log(bad[i].Get(point[i]));
        }
        if (!best.empty() && score <= most) continue;
        most = score;
        best = point;
    }
    return best;
}

void nxTreeParzenSearch::_Learn(const Points& points, const std::vector<double>& values)
{
    _points.insert(_points.end(), points.begin(), points.end());
    _values.insert(_values.end(), values.begin(), values.end());
}

#include "host/sweep/nxRealityCheck.h"

#include <algorithm>
#include <cmath>

#include "host/results/nxBootstrap.h"
#include "host/results/nxDayStatistics.h"
#include "host/results/nxStationaryResampler.h"

namespace {

using Numbers = std::vector<double>;

// Of each run the deviation of sqrt(n) * mean under the stationary bootstrap.
Numbers GetDeviations(const nxReturnMatrix& returns, const Numbers& means)
{
    const std::size_t days = returns.GetDays(), runs = returns.GetRuns();
    const auto n = static_cast<double>(days);
    const double chanceToGoOn = 1.0 - 1.0 / static_cast<double>(nxStationaryResampler::GetBlockLength(days));
    Numbers variances(runs), covariances(runs);
    for (std::size_t lag = 0; lag < days; ++lag) {
        const auto i = static_cast<double>(lag);
        const double weight =
            lag == 0
                ? 1.0
                : 2.0 * ((n - i) / n * std::pow(chanceToGoOn, i) + i / n * std::pow(chanceToGoOn, n - i));
        if (weight < 1e-17) continue;  // far from both ends: no digit of the sum
        std::ranges::fill(covariances, 0.0);
        for (std::size_t day = lag; day < days; ++day) {
            const std::span<const double> later = returns.GetDay(day), earlier = returns.GetDay(day - lag);
            for (std::size_t run = 0; run < runs; ++run)
                covariances[run] += (later[run] - means[run]) * (earlier[run] - means[run]);
        }
        for (std::size_t run = 0; run < runs; ++run)
            variances[run] += weight * covariances[run] / n;
    }
    for (double& variance : variances)
        variance = variance > 0.0 ? std::sqrt(variance) : 0.0;
    return variances;
}

class Check
{
public:
    explicit Check(const nxReturnMatrix& returns)
        : _returns(returns), _root(std::sqrt(static_cast<double>(returns.GetDays())))
    {
        const auto days = static_cast<double>(returns.GetDays());
        const double threshold = -std::sqrt(2.0 * std::log(std::log(days)));
        for (std::size_t run = 0; run < returns.GetRuns(); ++run)
            _means.push_back(nxStatistics::GetMean(returns.GetRun(run)));
        _deviations = GetDeviations(returns, _means);
        for (std::size_t run = 0; run < returns.GetRuns(); ++run) {
            _consistent.push_back(_root * _means[run] < threshold * _deviations[run] ? 0.0 : _means[run]);
            _lower.push_back(std::max(_means[run], 0.0));
        }
    }

    double GetWhite(const Numbers& means) const
    {
        double most = -HUGE_VAL;
        for (std::size_t run = 0; run < means.size(); ++run)
            most = std::max(most, _root * means[run]);
        return most;
    }
    double GetWhiteOf(const Numbers& resampled) const
    {
        double most = -HUGE_VAL;
        for (std::size_t run = 0; run < resampled.size(); ++run)
            most = std::max(most, _root * (resampled[run] - _means[run]));
        return most;
    }
    double GetSpa(const Numbers& means, const Numbers& centres) const
    {
        double most = 0.0;
        for (std::size_t run = 0; run < means.size(); ++run)
            if (_deviations[run] > 0.0)
                most = std::max(most, _root * (means[run] - centres[run]) / _deviations[run]);
        return most;
    }

    // The means of all runs over the days that were drawn.
    void Resample(std::span<const std::size_t> places, Numbers& means) const
    {
        Numbers weights(_returns.GetDays());
        for (const std::size_t place : places)
            weights[place] += 1.0;
        means.assign(_returns.GetRuns(), 0.0);
        for (std::size_t day = 0; day < weights.size(); ++day) {
            if (weights[day] == 0.0) continue;
            const std::span<const double> row = _returns.GetDay(day);
            for (std::size_t run = 0; run < row.size(); ++run)
                means[run] += weights[day] * row[run];
        }
        for (double& mean : means)
            mean /= static_cast<double>(_returns.GetDays());
    }

    const Numbers& GetMeans() const { return _means; }
    const Numbers& GetConsistent() const { return _consistent; }
    const Numbers& GetLower() const { return _lower; }

private:
    const nxReturnMatrix& _returns;
    double _root;
    Numbers _means, _deviations, _consistent, _lower;
};

}  // namespace

std::optional<nxRealityCheck> nxRealityCheck::Find(const nxReturnMatrix& returns, unsigned long long seed,
                                                   std::size_t resamples)
{
    if (returns.GetDays() < nxBootstrap::LeastDays || returns.GetRuns() == 0) return std::nullopt;
    const Check check(returns);
    nxRealityCheck found;
    found.whiteStatistic = check.GetWhite(check.GetMeans());
    found.spaStatistic = check.GetSpa(check.GetMeans(), Numbers(returns.GetRuns()));

    nxStationaryResampler resampler(returns.GetDays(), seed);
    std::vector<std::size_t> places(returns.GetDays());
    Numbers means;
    std::size_t white = 0, spa = 0, lower = 0, upper = 0;
    for (std::size_t i = 0; i < resamples; ++i) {
        resampler.Draw(places);
        check.Resample(places, means);
        white += check.GetWhiteOf(means) >= found.whiteStatistic;
        spa += check.GetSpa(means, check.GetConsistent()) >= found.spaStatistic;
        lower += check.GetSpa(means, check.GetLower()) >= found.spaStatistic;
        upper += check.GetSpa(means, check.GetMeans()) >= found.spaStatistic;
    }
    const auto share = [&](std::size_t count) {
        return static_cast<double>(count) / static_cast<double>(resamples);
    };
    found.white = share(white);
    found.spa = share(spa);
    found.spaLower = share(lower);
    found.spaUpper = share(upper);
    return found;
}

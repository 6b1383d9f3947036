#pragma once

#include <functional>
#include <optional>
#include <span>
#include <utility>

// Where a statistic of days in their order may lie: the stationary bootstrap (D. N. Politis and J. P. Romano,
// "The Stationary Bootstrap", 1994), which draws blocks of days, so that days that hang together stay so.
// Every machine draws the same.
class nxBootstrap
{
public:
    static constexpr std::size_t LeastDays = 10;

    // The percentile interval of 95 %. None for fewer days, and where most of the resamples have no such
    // statistic, which is not a number for them.
    static std::optional<std::pair<double, double>> GetInterval(
        std::span<const double> days, unsigned long long seed,
        const std::function<double(std::span<const double>)>& statistic);
};

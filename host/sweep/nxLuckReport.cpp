#include "host/sweep/nxLuckReport.h"

#include <fmt/format.h>

#include <cmath>
#include <vector>

#include "host/sweep/nxSharpeLuck.h"

namespace {

constexpr double Confidence = 0.95;
constexpr double LonelyPeak = 0.5;  // of nxNeighbours::stability

std::string Join(const std::vector<std::string>& parts)
{
    std::string text;
    for (std::size_t i = 0; i < parts.size(); ++i)
        text += (i == 0 ? "" : i + 1 == parts.size() ? " and " : ", ") + parts[i];
    return text;
}

// None of these shares is surely nothing or the whole.
std::string Percent(double share)
{
    if (share < 0.005) return "less than 1 %";
    if (share > 0.995) return "more than 99 %";
    return fmt::format("{:.0f} %", 100.0 * share);
}

}  // namespace

nxLuckReport nxLuckReport::Make(const nxReturnMatrix& returns, std::size_t best, unsigned long long tried,
                                unsigned long long seed)
{
    nxLuckReport report;
    report.tried = tried;
    report.days = returns.GetDays();
    std::vector<double> ratios;
    for (std::size_t run = 0; run < returns.GetRuns(); ++run) {
        const double ratio = nxSharpeLuck::GetRatio(returns.GetRun(run));
        if (!std::isnan(ratio)) ratios.push_back(ratio);
    }
    const std::vector<double> own = returns.GetRun(best);
    report.sharpe = nxSharpeLuck::GetRatio(own);
    report.probabilistic = nxSharpeLuck::GetProbabilistic(own, 0.0);
    report.bestOfLuck = nxSharpeLuck::GetBestOfLuck(ratios, tried);
    report.deflated = nxSharpeLuck::GetProbabilistic(own, report.bestOfLuck);
    report.overfitting = nxOverfitting::Find(returns);
    report.realityCheck = nxRealityCheck::Find(returns, seed);
    return report;
}

std::string nxLuckReport::GetVerdict() const
{
    const std::string best = tried == 1 ? "The only run" : fmt::format("The best of {} runs", tried);
    if (days < FewDays)
        return fmt::format("{} cannot be told from luck: {} too few.", best,
                           days == 1 ? "1 day is" : fmt::format("{} days are", days));
    if (std::isnan(deflated) || !realityCheck)
        return fmt::format("{} cannot be told from luck: over {} days it hardly moved.", best, days);
    std::vector<std::string> doubts;
    if (deflated < Confidence)
        doubts.push_back(
            fmt::format("after all that was tried its Sharpe ratio is above 0 with a confidence of {} only",
                        Percent(deflated)));
    if (realityCheck->spa > 1.0 - Confidence)
        doubts.push_back(
            fmt::format("runs without any skill do as well in {} of the cases", Percent(realityCheck->spa)));
    if (overfitting && overfitting->probability > 0.5)
        doubts.push_back(fmt::format(
            "what is best on half of the days is below the middle on the others in {} of the cases",
            Percent(overfitting->probability)));
    if (neighbours && neighbours->stability < LonelyPeak)
        doubts.push_back("its neighbours do much worse than it does");
    if (rankCorrelation <= 0.0) doubts.push_back("what was good in sample was not good out of sample");
    if (!doubts.empty()) return fmt::format("{} may well be luck: {}.", best, Join(doubts));
    return fmt::format(
        "{} is more than luck: after all that was tried its Sharpe ratio is above 0 with a confidence of {}, "
        "and runs "
        "without any skill do as well in {} of the cases.",
        best, Percent(deflated), Percent(realityCheck->spa));
}

#include "host/sweep/nxSweepSummary.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <map>

#include "host/report/nxResultText.h"
#include "host/results/nxMeasures.h"

namespace {

using State = nxSweepJudge::State;
using Role = nxSweepPart::Role;

std::string Number(double value)
{
    return std::isnan(value) ? "-" : fmt::format("{:.4g}", value);
}

// Of a minimised objective its own sign.
std::string Objective(const nxSweepTable& table, double value)
{
    return Number(table.plan.IsMinimised() ? -value : value);
}

std::string Percent(double share)
{
    return std::isnan(share) ? "-" : fmt::format("{:.1f} %", 100 * share);
}

double Get(const nxSweepOutcome& outcome, const char* measure)
{
    return outcome.measures[static_cast<std::size_t>(&nxMeasure::Get(measure) - nxMeasure::GetAll().data())];
}

std::string Money(double amount)
{
    return std::isnan(amount) ? "-" : fmt::format("{:.2f}", amount);
}

std::string Duration(double seconds)
{
    const auto whole = static_cast<long long>(std::ceil(seconds));
    return fmt::format("{}:{:02}:{:02}", whole / 3600, whole / 60 % 60, whole % 60);
}

void WriteTop(std::ostream& out, const nxSweepTable& table, const nxSweepJudge& judge)
{
    constexpr std::size_t most = 10;
    std::vector<std::size_t> order;
    for (std::size_t i = 0; i < table.points.size(); ++i)
        if (!std::isnan(judge.GetPoints()[i].objective)) order.push_back(i);
    std::ranges::stable_sort(order, std::ranges::greater(),
                             [&](std::size_t i) { return judge.GetPoints()[i].objective; });
    if (order.size() > most) order.resize(most);
    if (order.empty()) return;
    out << fmt::format("{:>8}  {:>12}  {:>12}  {:>8}  {}\n", "run", "objective", "net profit", "trips",
                       "with");
    for (const std::size_t i : order) {
        // Of several parts the figures of one would mislead.
        const nxSweepOutcome* const outcome =
            judge.GetSplits().empty() ? table.Find(i, table.GetParts(Role::Whole).front()) : nullptr;
        out << fmt::format("{:>8}  {:>12}  {:>12}  {:>8}  {}\n", i,
                           Objective(table, judge.GetPoints()[i].objective),
                           outcome == nullptr ? "" : Money(Get(*outcome, "netProfit")),
                           outcome == nullptr ? "" : fmt::format("{:.0f}", Get(*outcome, "roundTrips")),
                           nxSweepSummary::Describe(table, i));
    }
}

void WriteSplits(std::ostream& out, const nxSweepTable& table, const nxSweepJudge& judge)
{
    if (judge.GetSplits().empty()) return;
    out << fmt::format("{:<24}  {:>10}  {:>10}  {}\n", "test", "train", "test", "chosen by the train");
    for (std::size_t i = 0; i < judge.GetSplits().size(); ++i) {
        const nxSweepJudge::Split& split = judge.GetSplits()[i];
        const nxDaySpan days = table.parts[table.GetParts(Role::Test, i).front()].span;
        out << fmt::format("{} to {}  {:>10}  {:>10}  {}\n", nxResultText::GetDate(days.from),
                           nxResultText::GetDate(days.to - 1), Objective(table, split.inSample),
                           Objective(table, split.outOfSample),
                           split.chosen ? nxSweepSummary::Describe(table, *split.chosen) : "none");
    }
    const nxSweepJudge::Equity walk = judge.GetWalk();
    if (!walk.profits.empty())
        out << fmt::format("walk        profit {} over the {} days of the tests, one after the other\n",
                           Money(walk.profits.back()), walk.days.size());
}

void WriteVariants(std::ostream& out, const nxSweepTable& table, std::size_t best)
{
    for (const std::size_t part : table.GetParts(Role::Holdout))
        if (const nxSweepOutcome* const outcome = table.Find(best, part)) {
            const nxDaySpan days = table.parts[part].span;
            out << fmt::format("held out    {} to {}: {}\n", nxResultText::GetDate(days.from),
                               nxResultText::GetDate(days.to - 1),
                               outcome->HasFailed()
                                   ? outcome->failure
                                   : fmt::format("objective {}, net profit {}",
                                                 Objective(table, table.GetObjective(best, part)),
                                                 Money(Get(*outcome, "netProfit"))));
        }
    const std::vector<std::size_t> variants = table.GetParts(Role::Variant);
    if (variants.size() < 2) return;
    out << fmt::format("{:<14}  {:>12}  {:>12}  {:>12}\n", "the best under", "objective", "net profit",
                       "fees");
    for (const std::size_t part : variants)
        if (const nxSweepOutcome* const outcome = table.Find(best, part)) {
            if (outcome->HasFailed())
                out << fmt::format("{:<14}  {}\n", table.parts[part].name, outcome->failure);
            else
                out << fmt::format("{:<14}  {:>12}  {:>12}  {:>12}\n", table.parts[part].name,
                                   Objective(table, table.GetObjective(best, part)),
                                   Money(Get(*outcome, "netProfit")), Money(Get(*outcome, "fees")));
        }
}

void WriteLuck(std::ostream& out, const nxLuckReport& luck)
{
    out << fmt::format("luck        {} tried, {} days; deflated Sharpe ratio {}", luck.tried, luck.days,
                       Percent(luck.deflated));
    if (luck.overfitting) out << fmt::format("; overfitting {}", Percent(luck.overfitting->probability));
    if (luck.realityCheck)
        out << fmt::format("; SPA p {:.3f}, reality check p {:.3f}", luck.realityCheck->spa,
                           luck.realityCheck->white);
    if (luck.neighbours) out << fmt::format("; stability {}", Number(luck.neighbours->stability));
    out << fmt::format("; rank correlation {}\n", Number(luck.rankCorrelation));
    out << "verdict     " << luck.GetVerdict() << "\n";
}

}  // namespace

std::string nxSweepSummary::Describe(const nxSweepTable& table, std::size_t point)
{
    std::string text;
    for (std::size_t i = 0; i < table.points[point].values.size(); ++i)
        text += fmt::format("{}{}={}", text.empty() ? "" : " ", table.plan.GetDimensions()[i].GetShortName(),
                            table.points[point].values[i]);
    return text.empty() ? "what all have" : text;
}

std::string nxSweepSummary::DescribeBest(const nxSweepTable& table, std::size_t point, double objective)
{
    return fmt::format("{} with {}", Objective(table, objective), Describe(table, point));
}

void nxSweepSummary::WritePlan(std::ostream& out, const nxSweepTable& table, const Estimate& estimate)
{
    constexpr std::size_t shown = 10;
    const std::size_t runs = estimate.points * estimate.parts;
    out << fmt::format("runs        {}", runs);
    if (estimate.parts > 1)
        out << fmt::format(" ({} points over {} parts of the time)", estimate.points, estimate.parts);
    out << "\n";
    for (std::size_t i = 0; i < std::min(shown, table.points.size()); ++i)
        out << fmt::format("{:<10}  {}\n", i, Describe(table, i));
    if (table.points.size() > shown)
        out << fmt::format("            and {} more\n", table.points.size() - shown);
    if (table.points.empty()) out << "            which the search finds as it goes\n";
    for (const nxSweepPart& part : table.parts)
        if (!part.span.IsEmpty())
            out << fmt::format("{:<10}  {} to {}\n", nxSweepPart::GetRoleName(part.role),
                               nxResultText::GetDate(part.span.from),
                               nxResultText::GetDate(part.span.to - 1));
    if (estimate.secondsOfRun == 0.0) return;
    const double seconds = estimate.secondsOfRun * static_cast<double>(runs) / estimate.workers;
    out << fmt::format("one run     {:.3g} s of processor time over all the data, {:.0f} MiB\n",
                       estimate.secondsOfRun, static_cast<double>(estimate.memoryOfRun) / (1 << 20));
    out << fmt::format("all         about {} at most, with {} process{}\n", Duration(seconds),
                       estimate.workers, estimate.workers == 1 ? "" : "es");
}

std::vector<std::string> nxSweepSummary::GetNotes(const nxSweepTable& table, const nxSweepJudge& judge)
{
    std::vector<std::string> notes;
    const std::size_t all = table.points.size();
    if (const std::size_t missing = judge.Count(State::Missing); missing != 0)
        notes.push_back(fmt::format("{} of {} runs are not done yet", missing, all));
    const auto method = table.plan.GetMethod();
    if ((method == nxPlan::Method::Random || method == nxPlan::Method::Sobol) && all < table.plan.GetRuns())
        notes.push_back(
            fmt::format("the plan asks for {} points, and there are {}", table.plan.GetRuns(), all));
    std::map<std::string, std::size_t> failures;
    for (const nxSweepJudge::Point& point : judge.GetPoints())
        if (point.state == State::Failed) ++failures[point.failure];
    for (const auto& [text, count] : failures)
        notes.push_back(fmt::format("{} of {} runs failed: {}", count, all, text));
    if (const std::size_t count = judge.Count(State::Constrained); count != 0)
        notes.push_back(
            fmt::format("{} of {} runs cannot be the best: a constraint does not hold, or what is maximised "
                        "is not known of them",
                        count, all));
    if (!judge.GetBest() && judge.Count(State::Missing) == 0)
        notes.push_back("no run can be the best; --maximise netProfit is known of each that goes through");
    return notes;
}

void nxSweepSummary::Write(std::ostream& out, const nxSweepTable& table, const nxSweepJudge& judge,
                           const nxLuckReport& luck)
{
    out << "--- sweep\n";
    out << fmt::format("runs        {} done, {} failed\n",
                       judge.Count(State::Done) + judge.Count(State::Constrained),
                       judge.Count(State::Failed));
    for (const std::string& note : GetNotes(table, judge))
        out << "note        " << note << "\n";
    WriteTop(out, table, judge);
    WriteSplits(out, table, judge);
    const auto best = judge.GetBest();
    if (!best) return;
    out << fmt::format("best        run {}: {}\n", *best, Describe(table, *best));
    WriteVariants(out, table, *best);
    WriteLuck(out, luck);
}

#include <fmt/format.h>

#include <cmath>
#include <functional>

#include "base/values/nxStringHelper.h"
#include "host/feed/nxFeedTime.h"
#include "host/results/nxDayStatistics.h"
#include "host/sweep/nxCovarianceSearch.h"
#include "host/sweep/nxLuckReport.h"
#include "host/sweep/nxPlanFile.h"
#include "host/sweep/nxPlanPoints.h"
#include "host/sweep/nxTreeParzenSearch.h"
#include "tests/host/nxHostFixture.h"
#include "tests/support/nxRowFile.h"

namespace {

const std::vector<std::string> Measures = {"sharpe", "orders"};

class nxSweepTest : public ::testing::Test
{
protected:
    // What is wrong with the plan, or nothing.
    std::string Read(const std::string& text)
    {
        std::vector<nxPlanEntry> entries;
        nxFeedError error;
        const std::string path = files.Write("PLAN", text);
        if (!nxPlanFile::Read(path, entries, error)) return files.Hide(error.GetText());
        return files.Hide(plan.SetFromEntries(entries, Measures).value_or(""));
    }

    // The plan's first points.
    std::string GetPoints()
    {
        nxPlanPoints points(plan);
        std::string list;
        nxPlanPoint point;
        unsigned long long count = 0;
        for (; count < 12 && points.Next(point); ++count)
            list += fmt::format(" {}", fmt::join(point.values, ","));
        if (plan.GetMethod() == nxPlan::Method::Grid)
            return fmt::format("{} of {}:{}", points.CountAllowed(), points.GetGridSize(), list);
        if (points.GetGridSize() == 0) return fmt::format("{} drawn:{}", count, list);
        return fmt::format("{} drawn of {}, {} refused:{}", count, points.GetGridSize(), points.GetRefused(),
                           list);
    }

    nxHostRun files;
    nxPlan plan;
};

std::string Write(const nxDaySpan& span)
{
    return nxFeedTime::GetDateAsString(span.from) + "-" + nxFeedTime::GetDateAsString(span.to);
}

std::string Split(const std::string& text)
{
    nxTimeSplits splits;
    const std::vector<std::string> words = nxGetWords(text);
    const auto getDay = [](const std::string& date) {
        long long time = 0;
        EXPECT_EQ(nxFeedTime::SetFromText(date, time), nullptr);
        return nxFeedTime::GetDay(time);
    };
    for (std::size_t i = 3; i < words.size(); i += 2) {
        const std::string &key = words[i], &value = words[i + 1];
        std::optional<std::string> fault;
        if (key == "walk") fault = splits.SetWalk(value);
        if (key == "folds") fault = splits.SetFolds(value);
        if (key == "purge") fault = splits.SetPurge(value);
        if (key == "embargo") fault = splits.SetEmbargo(value);
        if (key == "holdout") fault = splits.SetHoldout(value);
        if (key == "anchored") splits.SetAnchored(value == "true");
        if (fault) return *fault;
    }
    nxTimeSplits::Parts parts;
    if (const auto fault = splits.Check()) return fault->second;
    if (const auto fault = splits.Split({getDay(words[1]), getDay(words[2]) + 1}, parts)) return *fault;
    std::string told;
    for (const nxTimeSplit& split : parts.splits) {
        std::vector<std::string> train;
        for (const nxDaySpan& span : split.train)
            train.push_back(Write(span));
        told += fmt::format("{}{} / {}", told.empty() ? "" : " | ", fmt::join(train, ","),
                            split.test.IsEmpty() ? "none" : Write(split.test));
    }
    return told + (parts.holdout.IsEmpty() ? "" : " | held out " + Write(parts.holdout));
}

// Normal returns by a generator that is the same everywhere; run 7 has that much more each day.
nxReturnMatrix MakeReturns(std::size_t days, std::size_t runs, double signal)
{
    nxReturnMatrix returns(days, runs);
    nxSplitMix random(11);
    for (std::size_t day = 0; day < days; ++day)
        for (std::size_t run = 0; run < runs; ++run) {
            const double size = std::sqrt(-2.0 * std::log(1.0 - random.GetNext()));
            returns.At(day, run) =
                0.01 * (size * std::cos(6.283185307179586 * random.GetNext())) + (run == 7 ? signal : 0.0);
        }
    return returns;
}

}  // namespace

TEST_F(nxSweepTest, Expressions)
{
    nxExpectRows("sweep/expressions.txt", [](const std::string& text) {
        const bool isTruth = text.starts_with("? ");
        nxExpression expression;
        const auto kind = isTruth ? nxExpression::Kind::Truth : nxExpression::Kind::Number;
        const auto fault =
            expression.SetFromText(isTruth ? text.substr(2) : text, {"fast", "slow", "one/x", "none"}, kind);
        if (fault) return *fault;
        const double value = expression.Evaluate(std::vector<double>{10, 50, 0.3, std::nan("")});
        return fmt::format("{}: {}", std::isnan(value) ? "unknown" : nxStringHelper::GetAsString(value),
                           expression.GetNormalForm());
    });
    const auto refuse = [](const std::string& text) {
        return nxExpression().SetFromText(text, {}, nxExpression::Kind::Number).value_or("fine");
    };
    EXPECT_EQ(refuse(std::string(100'000, '(')), "is nested too deeply");
    EXPECT_EQ(refuse(std::string(100'000, '-')), "is nested too deeply");
    std::string tower = "1";
    for (int i = 0; i < 100; ++i)
        tower = "1+(" + tower + ")";
    EXPECT_EQ(refuse(tower), "has too many operands at once");
}

TEST_F(nxSweepTest, Plans)
{
    nxExpectRows("sweep/plans.txt", [this](const std::string& text) {
        const std::string fault = Read(text);
        return fault.empty() ? GetPoints() : fault;
    });
}

TEST_F(nxSweepTest, Splits)
{
    nxExpectRows("sweep/splits.txt", Split);
}

TEST_F(nxSweepTest, PlansThatAskForTheSameHaveOneHashHoweverTheyAreWritten)
{
    const std::string text =
        "random = 9\nconditions = ['a<b', 'b > 2']\nmaximise='sharpe'\n[parameters]\na='1:9:2'\nb='0.5:2'\n";
    EXPECT_EQ(Read(text), "");
    const std::string hash = plan.GetHash();
    EXPECT_EQ(
        Read(
            "maximise = ' (sharpe) '\nconditions=['(b) > 2', '(a < b)']\nrandom='9'\nseed = 1\n[parameters]\n"
            "a='1:9.00:2.0'\nb=' 0.50 :2'\n"),
        "");
    EXPECT_EQ(plan.GetHash(), hash);

    const std::pair<const char*, const char*> changes[] = {
        {"random = 9", "random = 8"},    {"random", "sobol"}, {"a<b", "a<=b"},
        {"maximise", "minimise"},        {"1:9:2", "1:10:2"}, {"'0.5:2'", "'0.5:2:log'"},
        {"random", "folds = 3\nrandom"}, {"b='", "'b:int'='"}};
    for (const auto& [from, to] : changes) {
        std::string changed = text;
        EXPECT_EQ(Read(changed.replace(changed.find(from), std::string_view(from).size(), to)), "");
        EXPECT_NE(plan.GetHash(), hash) << to;
    }
}

TEST_F(nxSweepTest, RandomPointsOfAGridAreAllDifferentAndComeFromAllOfIt)
{
    EXPECT_EQ(Read("random = 1000\n[parameters]\na='1:10:1'\nb='1:100:1'\n"), "");
    std::set<std::vector<std::string>> seen;
    nxPlanPoints points(plan);
    std::size_t early = 0;
    for (nxPlanPoint point; points.Next(point); seen.insert(point.values))
        early += seen.size() < 200 && point.values[0] <= "5";
    EXPECT_EQ(seen.size(), 1000u);
    EXPECT_NEAR(static_cast<double>(early), 120.0, 25.0);  // "10" is among them
}

TEST_F(nxSweepTest, TheBestOfRandomRunsIsCalledLuckAndAPlantedSignalIsNot)
{
    const nxReturnMatrix random = MakeReturns(400, 20, 0.0), planted = MakeReturns(400, 20, 0.004);
    const auto getBest = [](const nxReturnMatrix& returns) {
        std::size_t best = 0;
        for (std::size_t run = 1; run < returns.GetRuns(); ++run)
            if (nxStatistics::GetMean(returns.GetRun(run)) > nxStatistics::GetMean(returns.GetRun(best)))
                best = run;
        return best;
    };
    nxLuckReport luck = nxLuckReport::Make(random, getBest(random), 20, 1);
    EXPECT_LT(luck.deflated, 0.9);
    EXPECT_NEAR(luck.overfitting->probability, 0.5, 0.25);
    EXPECT_GT(luck.realityCheck->white, 0.1);
    EXPECT_GT(luck.realityCheck->spa, 0.1);
    EXPECT_TRUE(
        luck.GetVerdict().starts_with("The best of 20 runs may well be luck: after all that was tried "))
        << luck.GetVerdict();

    EXPECT_EQ(getBest(planted), 7u);
    nxLuckReport signal = nxLuckReport::Make(planted, 7, 20, 1);
    EXPECT_LT(signal.overfitting->probability, 0.05);
    EXPECT_LT(signal.realityCheck->white, 0.05);
    EXPECT_EQ(signal.GetVerdict(),
              "The best of 20 runs is more than luck: after all that was tried its Sharpe ratio is above 0 "
              "with a confidence of "
              "more than 99 %, and runs without any skill do as well in less than 1 % of the cases.");
    signal.neighbours = nxNeighbours{2, 0.1, 0.0, 0.2};
    EXPECT_EQ(signal.GetVerdict(),
              "The best of 20 runs may well be luck: its neighbours do much worse than it does.");
}

TEST_F(nxSweepTest, APeakIsJudgedByThePointsOneStepAway)
{
    nxDimension number, text;
    EXPECT_EQ(number.SetFromText(nxDimension::Kind::Parameter, "n", "1:5:1"), std::nullopt);
    EXPECT_EQ(text.SetFromText(nxDimension::Kind::Parameter, "t", "a,b"), std::nullopt);
    std::vector<std::vector<unsigned long long>> places;
    for (unsigned long long t = 0; t < 2; ++t)
        for (unsigned long long n = 0; n < 5; ++n)
            places.push_back({n, t});
    const auto find = [&](std::vector<double> values) {
        return nxNeighbours::Find({number, text}, places, values);
    };
    const auto plateau = find({0, 9, 10, 9, 0, 0, 0, 0, 0, 0}),
               lonely = find({0, 0, 10, 0, 0, 8, 8, 8, 8, 8});
    EXPECT_EQ(plateau->count, 2u);
    EXPECT_EQ(plateau->stability, 0.9);
    EXPECT_EQ(lonely->stability, (0.0 - 8.0) / (10.0 - 8.0));
    EXPECT_FALSE(find(std::vector<double>(10, std::nan(""))));
    EXPECT_FALSE(find({std::nan(""), 5, std::nan(""), 0, 0, 0, 0, 0, 0, 0}));
}

namespace {

// The best value that a search finds of a bent valley with its top 0 at (0.3, 0.7, ...), of which text "b" is
// 1 better. Told backwards or forwards.
double Search(nxSearch& search, std::size_t runs, bool isBackwards, bool hasText = false)
{
    double best = -HUGE_VAL;
    for (std::size_t run = 0; run < runs;) {
        const nxSearch::Points points = search.Ask();
        for (std::size_t i = 0; i < points.size(); ++i, ++run) {
            const std::size_t point = isBackwards ? points.size() - 1 - i : i;
            const double x = points[point][0] - 0.3, y = points[point][1] - 0.7 - 2.0 * x * x;
            double value = -(x * x) - 20.0 * y * y;
            if (hasText && points[point][2] < 0.5) value -= 1.0;
            search.Tell(point, points[point][0] > 0.95 ? std::nan("") : value);
            if (points[point][0] <= 0.95) best = std::max(best, value);
        }
    }
    return best;
}

}  // namespace

TEST_F(nxSweepTest, SearchesFindTheTopWhateverTheOrderOfTheAnswers)
{
    EXPECT_EQ(
        Read("search='tpe'\nruns=200\nmaximise='sharpe'\n[parameters]\nx='0:1'\ny='0:1:0.01'\nt='a,b,c'\n"),
        "");
    const std::vector<nxDimension>& all = plan.GetDimensions();
    const std::vector<nxDimension> numbers(all.begin(), all.begin() + 2);
    const std::vector<nxDimension> smooth(2, all[0]);
    nxTreeParzenSearch forwards(all, 8, 3), backwards(all, 8, 3);
    const double found = Search(forwards, 200, false, true);
    EXPECT_EQ(found, Search(backwards, 200, true, true));
    EXPECT_GT(found, -0.005);
    nxCovarianceSearch one(smooth, 0, 3), other(smooth, 9, 4), again(smooth, 9, 4), coarse(numbers, 0, 3);
    EXPECT_GT(Search(one, 600, false), -1e-12);
    EXPECT_EQ(Search(other, 600, true), Search(again, 600, false));
    EXPECT_GT(Search(coarse, 600, false), -0.002);
}

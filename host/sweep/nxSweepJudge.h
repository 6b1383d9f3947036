#pragma once

#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "host/sweep/nxLuckReport.h"
#include "host/sweep/nxSweepTable.h"

// What the runs of a sweep say together: which point is the best, how it did where it was not chosen, and how
// far it may be luck. Computed from the table, which outlives it; the same table gives the same findings.
class nxSweepJudge
{
public:
    explicit nxSweepJudge(const nxSweepTable& table);

    enum class State : unsigned char { Missing, Done, Failed, Constrained };
    struct Point
    {
        State state = State::Missing;
        std::string failure;
        // What the best is looked for by: over the data, or the mean of the trains, by their days.
        double objective = std::numeric_limits<double>::quiet_NaN();
        // See GetSampleNames.
        double inSample = std::numeric_limits<double>::quiet_NaN();
        double outOfSample = std::numeric_limits<double>::quiet_NaN();
    };
    struct Split
    {
        std::optional<std::size_t> chosen;  // the best of its trains
        double inSample = std::numeric_limits<double>::quiet_NaN();
        double outOfSample = std::numeric_limits<double>::quiet_NaN();
    };
    // Profits at the ends of days, since the first of them began.
    struct Equity
    {
        std::vector<long long> days;
        std::vector<double> profits;
    };

    const std::vector<Point>& GetPoints() const { return _points; }
    const std::vector<Split>& GetSplits() const { return _splits; }
    // Of several splits: of a walk what the latest train chose, of folds the highest mean of the tests.
    std::optional<std::size_t> GetBest() const { return _best; }
    std::size_t Count(State state) const;
    // Of the chosen points, over the tests one after the other. Empty without splits.
    Equity GetWalk() const;
    // Of the best one over the data that are not held out. Empty where that was not run.
    Equity GetEquity() const;
    // What the two samples of a point are.
    std::pair<const char*, const char*> GetSampleNames() const;
    // Takes a while for thousands of points.
    nxLuckReport FindLuck(unsigned long long seed) const;

private:
    void _JudgePoint(std::size_t point);
    void _JudgeSplits();
    void _SampleHalves(Point& point, const nxSweepOutcome& outcome) const;
    double _GetMean(std::size_t point, nxSweepPart::Role role, bool isStrict,
                    std::optional<std::size_t> split = {}) const;
    std::optional<std::size_t> _FindHighest(const std::vector<double>& values) const;
    // The daily profits, or returns where there is capital, of a point over all parts of the sample.
    std::map<long long, double> _GetReturns(std::size_t point) const;
    Equity _Join(const std::vector<nxSweepTask>& pieces) const;

    const nxSweepTable& _table;
    const std::vector<std::size_t> _wholes, _tests;
    std::vector<Point> _points;
    std::vector<Split> _splits;
    std::vector<double> _chosenBy;  // values of the points, of which the best has the highest
    std::optional<std::size_t> _best;
};

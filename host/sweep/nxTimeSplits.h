#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// Days of the calendar as counts since 1970-01-01 UTC, the first one and the one after the last.
struct nxDaySpan
{
    long long from = 0, to = 0;

    bool IsEmpty() const { return from >= to; }
    friend bool operator==(const nxDaySpan&, const nxDaySpan&) = default;
};

// Where parameters are chosen, and where the chosen ones are judged. The spans of `train` are in the order of
// time; they and the test have no day in common.
struct nxTimeSplit
{
    std::vector<nxDaySpan> train;
    nxDaySpan test;
};

// A length of time by the calendar: 10d, 2w, 6m, 1y.
struct nxCalendarLength
{
    int months = 0, days = 0;

    [[nodiscard]] bool SetFromText(std::string_view text);
    // That many times later; a day that a month does not have becomes its last one.
    long long GetLater(long long day, int times) const;
    bool IsSet() const { return months != 0 || days != 0; }
};

// How the time of the data is parted. A value.
class nxTimeSplits
{
public:
    // Each null, or what is wrong with the text.
    // "6m:1m", train and test: each test follows its train, and the next test begins where the one before
    // ends.
    [[nodiscard]] std::optional<std::string> SetWalk(std::string_view text);
    // As many tests of equal length as the text says; all other time trains.
    [[nodiscard]] std::optional<std::string> SetFolds(std::string_view text);
    // What does not train on either side of a test, for what a run knows and holds reaches so far, and in
    // addition after it. M. Lopez de Prado, "Advances in Financial Machine Learning", 2018, 7.4.
    [[nodiscard]] std::optional<std::string> SetPurge(std::string_view text);
    [[nodiscard]] std::optional<std::string> SetEmbargo(std::string_view text);
    // "20%" of the days, rounded up, or a length: the end of the data, which nothing else sees.
    [[nodiscard]] std::optional<std::string> SetHoldout(std::string_view text);
    // Each train of a walk begins with the data.
    void SetAnchored(bool isAnchored) { _isAnchored = isAnchored; }

    bool IsWalk() const { return _train.IsSet(); }
    bool HasSplits() const { return IsWalk() || _folds != 0; }
    // Some of the data are not for all runs.
    bool NeedDays() const { return HasSplits() || _holdoutLength.IsSet() || _holdoutPercent > 0.0; }
    // The splits of data of these days, and what is held out. A walk ends with the last test that is whole.
    // Where nothing is asked for there is one split without a test. Null, or why the data do not do.
    struct Parts
    {
        std::vector<nxTimeSplit> splits;
        nxDaySpan holdout;
    };
    [[nodiscard]] std::optional<std::string> Split(nxDaySpan data, Parts& parts) const;

    // What does not go together: the plan's key that it is about, and why. Null: nothing.
    [[nodiscard]] std::optional<std::pair<const char*, const char*>> Check() const;
    std::string GetNormalForm() const;

    // The midnight UTC with which a day begins, in nanoseconds since 1970.
    static long long GetTime(long long day);

private:
    void _Walk(nxDaySpan data, std::vector<nxTimeSplit>& splits) const;
    void _Fold(nxDaySpan data, std::vector<nxTimeSplit>& splits) const;
    long long _GetHoldoutBegin(nxDaySpan data) const;

    nxCalendarLength _train, _test;  // of a walk
    bool _isAnchored = false;
    unsigned int _folds = 0;
    nxCalendarLength _purge, _embargo, _holdoutLength;
    double _holdoutPercent = 0.0;
};

#include "host/sweep/nxTimeSplits.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>

#include "base/time/nxTime.h"
#include "base/values/nxStringHelper.h"

namespace {

constexpr const char* NoLength = "\"{}\" is no length of time such as 10d, 2w, 6m or 1y";
constexpr int LongestLength = 36'600;

std::optional<std::string> SetLength(std::string_view text, nxCalendarLength& length)
{
    return length.SetFromText(text) ? std::nullopt : std::optional(fmt::format(fmt::runtime(NoLength), text));
}

std::string GetText(const nxCalendarLength& length)
{
    return fmt::format("{}m{}d", length.months, length.days);
}

}  // namespace

bool nxCalendarLength::SetFromText(std::string_view text)
{
    int count = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, count);
    if (error != std::errc() || rest + 1 != end || count <= 0 || count > LongestLength) return false;
    const bool isMonths = *rest == 'm' || *rest == 'y';
    if (!isMonths && *rest != 'd' && *rest != 'w') return false;
    const int unit = *rest == 'y' ? 12 : *rest == 'w' ? 7 : 1;
    if (count * unit > LongestLength / (isMonths ? 30 : 1)) return false;
    *this = isMonths ? nxCalendarLength{count * unit, 0} : nxCalendarLength{0, count * unit};
    return true;
}

long long nxCalendarLength::GetLater(long long day, int times) const
{
    using namespace std::chrono;
    const year_month_day begin{sys_days(std::chrono::days(day))};
    year_month_day later = begin + std::chrono::months(months * times);
    if (!later.ok()) later = later.year() / later.month() / last;
    return sys_days(later).time_since_epoch().count() + static_cast<long long>(days) * times;
}

std::optional<std::string> nxTimeSplits::SetWalk(std::string_view text)
{
    const std::size_t colon = text.find(':');
    if (colon == text.npos) return fmt::format("\"{}\" is no TRAIN:TEST such as 6m:1m", text);
    if (const auto reason = SetLength(text.substr(0, colon), _train)) return reason;
    return SetLength(text.substr(colon + 1), _test);
}

std::optional<std::string> nxTimeSplits::SetFolds(std::string_view text)
{
    unsigned int folds = 0;
    if (!nxStringHelper::SetFromString(text, folds).IsSuccess() || folds < 2 || folds > 1000)
        return fmt::format("\"{}\" is no count of folds from 2 to 1000", text);
    _folds = folds;
    return std::nullopt;
}

std::optional<std::string> nxTimeSplits::SetPurge(std::string_view text)
{
    return SetLength(text, _purge);
}

std::optional<std::string> nxTimeSplits::SetEmbargo(std::string_view text)
{
    return SetLength(text, _embargo);
}

std::optional<std::string> nxTimeSplits::SetHoldout(std::string_view text)
{
    _holdoutPercent = 0.0;
    _holdoutLength = {};
    if (!text.ends_with('%')) return SetLength(text, _holdoutLength);
    double percent = 0.0;
    if (!nxStringHelper::SetFromString(text.substr(0, text.size() - 1), percent, '.').IsSuccess() ||
        !(percent > 0.0 && percent < 100.0))
        return fmt::format("\"{}\" is no share above 0% and below 100%", text);
    _holdoutPercent = percent;
    return std::nullopt;
}

std::optional<std::pair<const char*, const char*>> nxTimeSplits::Check() const
{
    if (_train.IsSet() && _folds != 0) return {{"folds", "folds are given together with walk"}};
    if (_isAnchored && !_train.IsSet()) return {{"anchored", "anchored is given without walk"}};
    if (_purge.IsSet() && _folds == 0 && !_train.IsSet())
        return {{"purge", "purge is given without walk or folds"}};
    if (_embargo.IsSet() && _folds == 0)
        return {{"embargo", "embargo is given without folds; a walk never trains after a test"}};
    return std::nullopt;
}

long long nxTimeSplits::_GetHoldoutBegin(nxDaySpan data) const
{
    if (_holdoutLength.IsSet()) {
        // The last day from which the length reaches no farther than the data.
        long long begin = data.to - _holdoutLength.days;
        while (_holdoutLength.months != 0 && begin > data.from && _holdoutLength.GetLater(begin, 1) > data.to)
            --begin;
        return begin;
    }
    const auto days = static_cast<double>(data.to - data.from);
    return data.to - static_cast<long long>(std::ceil(days * _holdoutPercent / 100.0 - 1e-9));
}

std::optional<std::string> nxTimeSplits::Split(nxDaySpan data, Parts& parts) const
{
    const long long end = _GetHoldoutBegin(data);
    parts = {{}, {end, data.to}};
    data.to = end;
    if (data.IsEmpty()) return "the held-out end takes all days of the data";
    if (_train.IsSet()) {
        _Walk(data, parts.splits);
        if (parts.splits.empty())
            return fmt::format("{} days of data are too few for one train and one test", data.to - data.from);
    } else if (_folds != 0) {
        if (data.to - data.from < _folds)
            return fmt::format("{} days of data are too few for {} folds", data.to - data.from, _folds);
        _Fold(data, parts.splits);
        if (std::ranges::any_of(parts.splits, [](const nxTimeSplit& split) { return split.train.empty(); }))
            return "purge and embargo leave no day to train on";
    } else {
        parts.splits.push_back({{data}, {data.to, data.to}});
    }
    return std::nullopt;
}

void nxTimeSplits::_Walk(nxDaySpan data, std::vector<nxTimeSplit>& splits) const
{
    // All from the first day, so that short months do not add up.
    for (int i = 0;; ++i) {
        const long long first = _test.GetLater(data.from, i);
        const long long begin = _train.GetLater(first, 1),
                        end = _train.GetLater(_test.GetLater(data.from, i + 1), 1);
        if (end > data.to) return;
        const nxDaySpan train{_isAnchored ? data.from : first, _purge.GetLater(begin, -1)};
        if (!train.IsEmpty()) splits.push_back({{train}, {begin, end}});
    }
}

void nxTimeSplits::_Fold(nxDaySpan data, std::vector<nxTimeSplit>& splits) const
{
    const long long days = data.to - data.from;
    for (long long i = 0; i < _folds; ++i) {
        nxTimeSplit split;
        split.test = {data.from + i * days / _folds, data.from + (i + 1) * days / _folds};
        const nxDaySpan before{data.from, _purge.GetLater(split.test.from, -1)};
        const nxDaySpan after{_embargo.GetLater(_purge.GetLater(split.test.to, 1), 1), data.to};
        for (const nxDaySpan& span : {before, after})
            if (!span.IsEmpty()) split.train.push_back(span);
        splits.push_back(std::move(split));
    }
}

std::string nxTimeSplits::GetNormalForm() const
{
    return fmt::format("walk {}:{} {} folds {} purge {} embargo {} holdout {} {}", GetText(_train),
                       GetText(_test), _isAnchored ? "anchored" : "rolling", _folds, GetText(_purge),
                       GetText(_embargo), GetText(_holdoutLength),
                       nxStringHelper::GetAsString(_holdoutPercent));
}

long long nxTimeSplits::GetTime(long long day)
{
    return day * nxTime::NanosecondsPerDay;
}

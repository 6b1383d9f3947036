#include "host/sweep/nxSweepOutcome.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <set>

#include "host/results/nxMeasures.h"
#include "host/run/nxRun.h"
#include "host/run/nxRunFailure.h"
#include "host/run/nxRunVariant.h"

namespace {

constexpr std::size_t LongestText = 1 << 16;

std::string GetName(const nxCurrencyEnum& currency)
{
    return currency.IsUndefined() ? std::string() : currency.GetAsString();
}

// The account that counts: that of all jobs together, where several have traded. Null: the run has traded
// nothing. False: it cannot be told which.
bool Choose(const nxResult& result, const std::string& currency, const nxResultData*& chosen,
            std::string& failure)
{
    std::set<std::string> currencies;
    for (const nxResultData& data : result.results) {
        currencies.insert(GetName(data.currency));
        // Those of all jobs come after those of each.
        if (currency.empty() || GetName(data.currency) == currency) chosen = &data;
    }
    if (!currency.empty() || currencies.size() < 2) return true;
    std::string names;
    for (const std::string& name : currencies)
        names += (names.empty() ? "" : ", ") + (name.empty() ? "none" : name);
    failure = fmt::format("the run has results in several currencies ({}); --currency tells which one counts",
                          names);
    return false;
}

// A run that has traded nothing has made 0 on each day.
nxResultData MakeEmpty(const nxResultRun& run)
{
    nxResultData data;
    for (const long long day : run.days)
        data.days.push_back({day, {}, std::numeric_limits<double>::quiet_NaN()});
    return data;
}

class Writer
{
public:
    template <class Number>
    void Add(Number number)
    {
        char bytes[sizeof number];
        std::memcpy(bytes, &number, sizeof number);
        _bytes.append(bytes, sizeof number);
    }
    void Add(const std::string& text)
    {
        const std::size_t size = std::min(text.size(), LongestText);
        Add(size);
        _bytes.append(text, 0, size);
    }
    template <class Element>
    void Add(const std::vector<Element>& list)
    {
        Add(list.size());
        for (const Element& element : list)
            Add(element);
    }
    std::string Take() { return std::move(_bytes); }

private:
    std::string _bytes;
};

class Reader
{
public:
    explicit Reader(std::string_view bytes) : _bytes(bytes) {}

    template <class Number>
    void Get(Number& number)
    {
        if (_bytes.size() < sizeof number) return Fail();
        std::memcpy(&number, _bytes.data(), sizeof number);
        _bytes.remove_prefix(sizeof number);
    }
    void Get(bool& truth)
    {
        unsigned char byte = 0;
        Get(byte);
        truth = byte != 0;
    }
    void Get(std::string& text)
    {
        std::size_t size = 0;
        Get(size);
        if (size > _bytes.size()) return Fail();
        text = _bytes.substr(0, size);
        _bytes.remove_prefix(size);
    }
    template <class Element>
    void Get(std::vector<Element>& list)
    {
        std::size_t count = 0;
        Get(count);
        // Each takes a number or a text's size at least.
        if (count > _bytes.size() / sizeof(std::size_t)) return Fail();
        list.resize(count);
        for (Element& element : list)
            Get(element);
    }
    bool IsWhole() const { return !_hasFailed && _bytes.empty(); }

private:
    void Fail()
    {
        _hasFailed = true;
        _bytes = {};
    }

    std::string_view _bytes;
    bool _hasFailed = false;
};

}  // namespace

nxSweepOutcome nxSweepOutcome::Of(const nxRun& run, const std::string& currency, const std::string& errors)
{
    const nxResult& result = run.GetResult();
    nxSweepOutcome outcome;
    outcome.end = run.GetEnd();
    outcome.unread = run.GetStatistics().unreadParameters;
    outcome.failure = nxFindRunFailure(run.GetStatistics(), run.GetOutcome(), errors);
    const nxRunReach reach(run.GetStatistics());
    outcome.hasBooks = reach.hasBooks;
    outcome.hasBars = reach.hasBars;
    const nxResultData* chosen = nullptr;
    if (!outcome.HasFailed()) Choose(result, currency, chosen, outcome.failure);
    if (outcome.HasFailed()) return outcome;
    const nxResultData empty = MakeEmpty(result.run);
    const nxMeasureBasis basis(chosen == nullptr ? empty : *chosen, result.run);
    for (const nxMeasure& measure : nxMeasure::GetAll())
        outcome.measures.push_back(measure.compute(basis));
    for (const nxResultDay& day : basis.data.days) {
        outcome.days.push_back(day.day);
        outcome.profits.push_back(day.profit.GetAsDouble());
    }
    return outcome;
}

bool nxSweepOutcome::IsSound() const
{
    constexpr long long farthest = 100'000;  // whose nanoseconds can be counted
    if (days.size() != profits.size() || !std::ranges::is_sorted(days)) return false;
    if (!days.empty() && (days.front() < -farthest || days.back() > farthest)) return false;
    return HasFailed() || measures.size() == nxMeasure::GetAll().size();
}

std::string nxSweepOutcome::Pack() const
{
    Writer writer;
    writer.Add(failure);
    writer.Add(end);
    writer.Add(measures);
    writer.Add(days);
    writer.Add(profits);
    writer.Add(seconds);
    writer.Add(memory);
    writer.Add(hasBooks);
    writer.Add(hasBars);
    writer.Add(unread);
    return writer.Take();
}

std::optional<nxSweepOutcome> nxSweepOutcome::Unpack(std::string_view bytes)
{
    nxSweepOutcome outcome;
    Reader reader(bytes);
    reader.Get(outcome.failure);
    reader.Get(outcome.end);
    reader.Get(outcome.measures);
    reader.Get(outcome.days);
    reader.Get(outcome.profits);
    reader.Get(outcome.seconds);
    reader.Get(outcome.memory);
    reader.Get(outcome.hasBooks);
    reader.Get(outcome.hasBars);
    reader.Get(outcome.unread);
    if (!reader.IsWhole() || !outcome.IsSound()) return std::nullopt;
    return outcome;
}

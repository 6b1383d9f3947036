#include "host/report/nxRunSummary.h"

#include <fmt/format.h>
#include <sys/resource.h>

#include <algorithm>
#include <string_view>

#include "host/feed/nxFeedTime.h"
#include "host/report/nxResultLines.h"

namespace {

std::string GroupThousands(unsigned long long number)
{
    std::string text = std::to_string(number);
    for (std::size_t place = text.size(); place > 3; place -= 3)
        text.insert(place - 3, ",");
    return text;
}

std::string Count(unsigned long long number, const char* one, const char* many)
{
    return GroupThousands(number) + " " + (number == 1 ? one : many);
}

std::string GetPlace(const nxJobStatistics::Failure& failure)
{
    if (!failure.callback) return "while the script was loaded";
    return std::string("in ") + nxGetCallbackName(*failure.callback);
}

std::string JoinEvents(const nxRunStatistics& statistics)
{
    std::string text;
    const auto add = [&](unsigned long long number, const char* one, const char* many) {
        if (number != 0) text += (text.empty() ? "" : ", ") + Count(number, one, many);
    };
    add(statistics.quotes, "quote", "quotes");
    add(statistics.trades, "trade", "trades");
    add(statistics.depthChanges, "depth change", "depth changes");
    if (statistics.depthRows != statistics.depthChanges)
        text += " (from " + Count(statistics.depthRows, "depth row)", "depth rows)");
    add(statistics.bars, "bar", "bars");
    add(statistics.impliedQuotes, "implied quote", "implied quotes");
    add(statistics.timers, "timer", "timers");
    add(statistics.parameterChanges, "parameter change", "parameter changes");
    return text.empty() ? "none" : text;
}

// Rows of the summary, the label in front of the first of those that share one.
class Rows
{
public:
    // With several jobs each row about a job bears its name.
    Rows(std::ostream& out, const nxRunStatistics& statistics) : _out(out)
    {
        if (statistics.jobs.size() == 1) return;
        for (const nxJobStatistics& job : statistics.jobs)
            _nameWidth = std::max(_nameWidth, job.name.size() + 2);
    }

    std::ostream& Begin(const char* label, const std::string& job)
    {
        const bool isSame = _label == label;
        _label = label;
        _out << fmt::format("{:<12}", isSame ? "" : label);
        if (_nameWidth != 0) _out << fmt::format("{:<{}}", job, _nameWidth);
        return _out;
    }

private:
    std::ostream& _out;
    std::string_view _label;
    std::size_t _nameWidth = 0;
};

std::string Money(const nxExactAmount& amount)
{
    constexpr unsigned char places = 8;  // those that the rounded averages leave exact
    nxDecimal number = amount.GetAsDecimal(places);
    number.Normalise(0);
    return number.GetAsString();
}

std::string Percent(unsigned long long part, unsigned long long whole)
{
    return fmt::format("{:.1f}%", 100.0 * static_cast<double>(part) / static_cast<double>(whole));
}

// Nothing for a run without orders.
void WriteTrading(Rows& rows, const nxRunStatistics& statistics)
{
    const auto hasTraded = [](const nxJobStatistics& job) { return job.trading.orders != 0; };
    for (const nxJobStatistics& job : statistics.jobs) {
        if (!hasTraded(job)) continue;
        const nxTradingStatistics& trading = job.trading;
        std::ostream& out = rows.Begin("orders", job.name);
        out << Count(trading.orders, "order", "orders") << ", " << Count(trading.fills, "fill", "fills")
            << ", volume " << GroupThousands(trading.volume);
        if (trading.volume != 0) out << ", maker share " << Percent(trading.makerVolume, trading.volume);
        if (trading.assumedVolume != 0)
            out << ", assumed beyond the best price " << Percent(trading.assumedVolume, trading.volume);
        if (trading.selfTrades != 0) out << ", self-trades prevented " << GroupThousands(trading.selfTrades);
        if (trading.selfVolume != 0)
            out << ", self-traded volume besides " << GroupThousands(trading.selfVolume);
        out << "\n";
    }
    for (const nxJobStatistics& job : statistics.jobs) {
        for (const nxTradingStatistics::Money& money : job.trading.money) {
            std::ostream& out = rows.Begin("profit", job.name);
            if (!money.currency.IsUndefined()) out << money.currency.GetAsString() << " ";
            out << Money(money.profit) << ": realised " << Money(money.profit - money.open) << ", open "
                << Money(money.open) << ", fees in it " << Money(money.fees);
            if (!money.impact.IsZero()) out << ", impact in it " << Money(money.impact);
            if (!money.cash.IsZero()) out << ", funding, dividends and splits in it " << Money(money.cash);
            if (!money.carry.IsZero()) out << ", carry of rolls beside it " << Money(money.carry);
            out << ", largest drawdown " << Money(money.drawdown);
            if (money.hasBars)
                out << " by closes, " << Money(money.worstDrawdown) << " by the worst of high and low";
            out << "\n";
        }
    }
}

// What the orders of each job and currency come to.
void WriteMeasures(Rows& rows, const nxResult& result)
{
    for (const nxResultData& data : result.results)
        for (const auto& [label, text] : nxResultLines::Get(data, result.run))
            rows.Begin(label, data.job ? result.jobs[*data.job].name : "all") << text << "\n";
}

void WriteFailureRow(std::ostream& out, const nxJobStatistics::Failure& failure)
{
    out << failure.what.message << " (" << GetPlace(failure);
    if (failure.callback) out << ", " << Count(failure.count, "time", "times");
    if (failure.callback && failure.firstTime)
        out << ", first at " << nxFeedTime::GetAsString(*failure.firstTime);
    out << ")\n";
}

}  // namespace

void nxRunSummary::WriteCounts(std::ostream& out, const nxRunStatistics& statistics, const std::string& end,
                               const nxResult& result)
{
    out << "--- summary\n";
    out << "end         " << end << "\n";
    if (statistics.GetRowEventCount() != 0)
        out << "recorded    " << nxFeedTime::GetAsString(statistics.firstTime) << " to "
            << nxFeedTime::GetAsString(statistics.lastTime) << "\n";
    out << "events      " << JoinEvents(statistics) << "\n";
    Rows rows(out, statistics);
    if (statistics.jobs.size() > 1)
        for (const nxJobStatistics& job : statistics.jobs)
            rows.Begin("job", job.name) << job.end << "\n";
    for (const nxJobStatistics& job : statistics.jobs) {
        for (std::size_t i = 0; i < nxCallbackNames.size(); ++i) {
            const nxJobStatistics::Callback& callback = job.callbacks[i];
            if (!callback.defined) continue;
            const std::string count = GroupThousands(callback.count);
            const std::string_view name = nxCallbackNames[i];
            constexpr std::size_t width = 30;  // of name and count
            rows.Begin("callbacks", job.name)
                << name
                << fmt::format("{:>{}}", count,
                               std::max(width, name.size() + 1 + count.size()) - name.size());
            if (callback.failures != 0) out << "  " << GroupThousands(callback.failures) << " failed";
            out << "\n";
        }
    }
    WriteTrading(rows, statistics);
    WriteMeasures(rows, result);
    for (const nxJobStatistics& job : statistics.jobs)
        for (const std::string& text : job.exits)
            rows.Begin("on exit", job.name) << text << "\n";
    for (const nxJobStatistics& job : statistics.jobs)
        for (const nxJobStatistics::Failure& failure : job.failures)
            WriteFailureRow(Rows(out, statistics).Begin("failure", job.name), failure);
    for (const std::string& remark : statistics.remarks)
        out << "data        " << remark << "\n";
    for (const std::string& note : statistics.notes)
        out << "note        " << note << "\n";
    for (const nxJobStatistics& job : statistics.jobs)
        for (const std::string& note : job.notes)
            rows.Begin("note", job.name) << note << "\n";
    for (const nxJobStatistics& job : statistics.jobs)
        if (!job.nothingDelivered.empty())
            Rows(out, statistics).Begin("no events", job.name) << job.nothingDelivered << "\n";
}

void nxRunSummary::WriteEnvelope(std::ostream& out, const std::vector<Model>& models)
{
    std::vector<std::vector<std::string>> rows = {{"model", "job", "currency", "orders", "fills", "volume",
                                                   "fees", "realised", "open", "profit", "drawdown"}};
    bool hasCurrency = false;
    for (const Model& model : models) {
        for (const nxJobStatistics& job : model.statistics.jobs) {
            const nxTradingStatistics& trading = job.trading;
            std::vector<nxTradingStatistics::Money> money = trading.money;
            if (money.empty()) money.emplace_back();
            for (const nxTradingStatistics::Money& sum : money) {
                const bool isDefined = !sum.currency.IsUndefined();
                hasCurrency = hasCurrency || isDefined;
                rows.push_back({model.name, job.name, isDefined ? sum.currency.GetAsString() : "",
                                GroupThousands(trading.orders), GroupThousands(trading.fills),
                                GroupThousands(trading.volume), Money(sum.fees), Money(sum.profit - sum.open),
                                Money(sum.open), Money(sum.profit), Money(sum.drawdown)});
            }
        }
    }
    out << "--- envelope\n";
    std::vector<std::size_t> widths(rows.front().size());
    for (const auto& row : rows)
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], row[i].size());
    constexpr std::size_t job = 1, currency = 2;
    for (const auto& row : rows) {
        out << fmt::format("{:<10}", row.front());
        for (std::size_t i = 1; i < row.size(); ++i) {
            if ((i == job && models.front().statistics.jobs.size() == 1) || (i == currency && !hasCurrency))
                continue;
            out << "  "
                << (i <= currency ? fmt::format("{:<{}}", row[i], widths[i])
                                  : fmt::format("{:>{}}", row[i], widths[i]));
        }
        out << "\n";
    }
    for (const Model& model : models)
        if (!model.failure.empty()) out << "failure     " << model.name << ": " << model.failure << "\n";
}

void nxRunSummary::WriteSpeed(std::ostream& err, const nxRunStatistics& statistics)
{
    const double seconds = static_cast<double>(statistics.wallNanoseconds) * 1e-9;
    const unsigned long long events = statistics.GetEventCount();
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    err << fmt::format(
        "--- speed\nrun         {:.3f} s, {} events per second, peak memory {:.1f} MiB\n", seconds,
        seconds > 0 ? GroupThousands(static_cast<unsigned long long>(static_cast<double>(events) / seconds))
                    : "-",
        static_cast<double>(usage.ru_maxrss) / 1024.0);
    Rows rows(err, statistics);
    std::size_t width = 16;
    for (const nxJobStatistics& job : statistics.jobs)
        for (std::size_t i = 0; i < nxCallbackNames.size(); ++i)
            if (job.callbacks[i].count != 0)
                width = std::max(width, std::string_view(nxCallbackNames[i]).size());
    for (const nxJobStatistics& job : statistics.jobs) {
        for (std::size_t i = 0; i < nxCallbackNames.size(); ++i) {
            const nxJobStatistics::Callback& callback = job.callbacks[i];
            if (!callback.defined || callback.count == 0) continue;
            rows.Begin("script", job.name)
                << fmt::format("{:<{}}  about {:>8.3f} s, {:>8.0f} ns each\n", nxCallbackNames[i], width,
                               callback.GetMeanNanoseconds() * static_cast<double>(callback.count) * 1e-9,
                               callback.GetMeanNanoseconds());
        }
    }
}

void nxRunSummary::WriteFailure(std::ostream& err, const nxJobStatistics::Failure& failure,
                                const std::string& job)
{
    err << failure.what.message << "\n";
    if (failure.what.location && !failure.what.location->text.empty())
        err << fmt::format("{:>6} | {}\n", failure.what.location->line, failure.what.location->text);
    err << "       " << GetPlace(failure);
    if (!job.empty()) err << " of " << job;
    if (failure.callback && failure.firstTime) err << " at " << nxFeedTime::GetAsString(*failure.firstTime);
    err << "\n";
}

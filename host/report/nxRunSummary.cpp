#include "host/report/nxRunSummary.h"

#include <fmt/format.h>
#include <sys/resource.h>

#include "host/feed/nxFeedTime.h"

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

std::string GetPlace(const nxRunStatistics::Failure& failure)
{
    if (!failure.callback) return "while the script was loaded";
    return std::string("in ") + nxCallbackNames[static_cast<std::size_t>(*failure.callback)];
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
    add(statistics.timers, "timer", "timers");
    return text.empty() ? "none" : text;
}

}  // namespace

void nxRunSummary::WriteCounts(std::ostream& out, const nxRunStatistics& statistics, const std::string& end)
{
    out << "--- summary\n";
    out << "end         " << end << "\n";
    if (statistics.GetEventCount() != statistics.timers)
        out << "recorded    " << nxFeedTime::GetAsString(statistics.firstTime) << " to "
            << nxFeedTime::GetAsString(statistics.lastTime) << "\n";
    out << "events      " << JoinEvents(statistics) << "\n";
    const char* label = "callbacks   ";
    for (std::size_t i = 0; i < nxCallbackNames.size(); ++i) {
        const nxRunStatistics::Callback& callback = statistics.callbacks[i];
        if (!callback.defined) continue;
        out << label << fmt::format("{:<16}{:>14}", nxCallbackNames[i], GroupThousands(callback.count));
        if (callback.failures != 0) out << "  " << GroupThousands(callback.failures) << " failed";
        out << "\n";
        label = "            ";
    }
    for (const nxRunStatistics::Failure& failure : statistics.failures) {
        out << "failure     " << failure.what.message << " (" << GetPlace(failure);
        if (failure.callback) out << ", " << Count(failure.count, "time", "times");
        if (failure.callback && failure.firstTime)
            out << ", first at " << nxFeedTime::GetAsString(*failure.firstTime);
        out << ")\n";
    }
    for (const std::string& remark : statistics.remarks)
        out << "data        " << remark << "\n";
    if (!statistics.nothingDelivered.empty()) out << "no events   " << statistics.nothingDelivered << "\n";
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
    const char* label = "script      ";
    for (std::size_t i = 0; i < nxCallbackNames.size(); ++i) {
        const nxRunStatistics::Callback& callback = statistics.callbacks[i];
        if (!callback.defined || callback.count == 0) continue;
        err << label
            << fmt::format("{:<16}{:>10.3f} s {:>10.0f} ns each\n", nxCallbackNames[i],
                           static_cast<double>(callback.nanoseconds) * 1e-9,
                           static_cast<double>(callback.nanoseconds) / static_cast<double>(callback.count));
        label = "            ";
    }
}

void nxRunSummary::WriteFailure(std::ostream& err, const nxRunStatistics::Failure& failure)
{
    err << failure.what.message << "\n";
    if (failure.what.location && !failure.what.location->text.empty())
        err << fmt::format("{:>6} | {}\n", failure.what.location->line, failure.what.location->text);
    err << "       " << GetPlace(failure);
    if (failure.callback && failure.firstTime) err << " at " << nxFeedTime::GetAsString(*failure.firstTime);
    err << "\n";
}

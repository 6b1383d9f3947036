#include "host/report/nxResultLines.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string_view>

#include "host/report/nxResultSections.h"

namespace {

std::string GetDuration(double seconds)
{
    constexpr double minute = 60.0, hour = 3600.0, day = 86400.0;
    if (seconds >= day) return fmt::format("{:.1f} d", seconds / day);
    if (seconds >= hour) return fmt::format("{:.1f} h", seconds / hour);
    if (seconds >= minute) return fmt::format("{:.1f} min", seconds / minute);
    return fmt::format("{:.1f} s", seconds);
}

// A terminal, and one that takes UTF-8.
bool CanDraw()
{
    if (isatty(STDOUT_FILENO) == 0) return false;
    for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        const char* const value = std::getenv(name);
        if (value == nullptr || *value == '\0') continue;
        const std::string_view text = value;
        return text.find("UTF-8") != text.npos || text.find("utf8") != text.npos;
    }
    return false;
}

// The closes of equally many buckets each, between the least and the most.
std::string Draw(const std::vector<nxEquityBucket>& equity)
{
    constexpr const char* bars[] = {"▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};
    constexpr std::size_t width = 60;
    const auto [least, most] = std::ranges::minmax(equity, {}, &nxEquityBucket::close);
    const double range = most.close - least.close;
    std::string text;
    const std::size_t columns = std::min(width, equity.size());
    for (std::size_t i = 0; i < columns; ++i) {
        const double close = equity[(i + 1) * equity.size() / columns - 1].close;
        text += bars[range > 0.0 ? std::lround((close - least.close) / range * 7.0) : 0];
    }
    return text;
}

}  // namespace

std::string nxResultLines::GetText(const nxMeasure& measure, double value)
{
    const std::string_view unit = measure.unit;
    if (!std::isfinite(value)) return "-";
    if (unit == "percent") return fmt::format("{:.1f}%", 100.0 * value);
    if (unit == "count") return fmt::format("{:.0f}", value);
    if (unit == "seconds") return GetDuration(value);
    return std::abs(value) < 1000.0 ? fmt::format("{:.4g}", value) : fmt::format("{:.0f}", value);
}

std::vector<std::pair<const char*, std::string>> nxResultLines::Get(const nxResultData& data,
                                                                    const nxResultRun& run)
{
    std::vector<std::pair<const char*, std::string>> lines;
    if (data.fills == 0) return lines;
    const nxMeasureBasis basis(data, run);
    const std::string currency = nxGetCurrency(data);
    const auto tell = [&](const char* name) {
        const nxMeasure& measure = nxMeasure::Get(name);
        return fmt::format("{:<22}{:>10}", measure.title, GetText(measure, measure.compute(basis)));
    };
    for (std::size_t i = 0; i + 1 < Names.size(); i += 2)
        lines.emplace_back("measures", (currency.empty() ? "" : currency + "  ") + tell(Names[i]) + "   " +
                                           tell(Names[i + 1]));
    if (CanDraw()) lines.emplace_back("equity", Draw(data.equity.Get()));
    return lines;
}

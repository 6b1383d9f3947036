// What a result came to by month, product, hour and so on.
#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <map>

#include "host/report/nxResultSections.h"
#include "host/report/nxResultText.h"

using namespace nxResultText;

namespace {

using Trips = nxRoundTrips;

long long GetDay(long long time)
{
    return std::chrono::floor<std::chrono::days>(std::chrono::nanoseconds(time)).count();
}

std::string GetMonth(long long day)
{
    return GetDate(day).substr(0, std::string_view("YYYY-MM").size());
}

std::string GetHour(const nxRoundTrip& trip)
{
    return fmt::format("{:02}", (trip.entryTime / nxTime::NanosecondsPerSecond -
                                 GetDay(trip.entryTime) * nxTime::SecondsPerDay) /
                                    3600);
}

// Led by its number, so that Monday comes first; GetName takes that off.
std::string GetWeekday(const nxRoundTrip& trip)
{
    constexpr const char* names[] = {"1Mon", "2Tue", "3Wed", "4Thu", "5Fri", "6Sat", "7Sun"};
    const std::chrono::weekday day(std::chrono::sys_days(std::chrono::days(GetDay(trip.entryTime))));
    return names[day.iso_encoding() - 1];
}

template <class GetKey>
void WriteBreakdown(nxJsonWriter& json, const char* name, const Trips& trips, GetKey getKey,
                    std::size_t prefix = 0)
{
    std::map<std::string, nxTripStatistics> parts;
    for (const nxRoundTrip& trip : trips)
        parts[getKey(trip)].Add(trip);
    json.Key(name).BeginArray();
    for (const auto& [key, part] : parts) {
        json.BeginObject();
        json.Key("key").Text(std::string_view(key).substr(prefix));
        json.Key("roundTrips").Count(part.count);
        json.Key("profit").Number(part.profit.GetAsDouble());
        json.Key("fees").Number(part.fees.GetAsDouble());
        json.Key("winRate").Number(static_cast<double>(part.wins) / static_cast<double>(part.count));
        json.EndObject();
    }
    json.EndArray();
}

void WriteMonths(nxJsonWriter& json, const nxMeasureBasis& basis)
{
    const std::vector<nxResultDay>& days = basis.data.days;
    const bool hasReturns = !basis.days.GetReturns().empty();
    const double capital = basis.run.capital.value_or(0.0);
    nxExactAmount before;
    json.Key("months").BeginArray();
    for (std::size_t first = 0, next = 0; first < days.size(); first = next) {
        const std::string month = GetMonth(days[first].day);
        while (next < days.size() && GetMonth(days[next].day) == month)
            ++next;
        const nxExactAmount& end = days[next - 1].profit;
        const double profit = (end - before).GetAsDouble();
        json.BeginObject();
        json.Key("month").Text(month);
        json.Key("profit").Number(profit);
        json.Key("return");
        hasReturns ? json.Number(profit / (capital + before.GetAsDouble())) : json.Null();
        json.Key("days").Count(next - first);
        json.EndObject();
        before = end;
    }
    json.EndArray();
}

void WriteDrawdowns(nxJsonWriter& json, const nxMeasureBasis& basis)
{
    const auto getSeconds = [](long long from, long long to) {
        return static_cast<double>(to - from) / nxTime::NanosecondsPerSecond;
    };
    json.Key("drawdowns").BeginArray();
    for (const nxDrawdown& drawdown : basis.drawdowns) {
        json.BeginObject();
        json.Key("from").Text(GetTime(drawdown.from));
        json.Key("trough").Text(GetTime(drawdown.trough));
        json.Key("to");
        drawdown.to ? json.Text(GetTime(*drawdown.to)) : json.Null();
        json.Key("depth").Number(drawdown.depth.GetAsDouble());
        json.Key("percent");
        basis.run.capital
            ? json.Number(drawdown.depth.GetAsDouble() / (*basis.run.capital + drawdown.peak.GetAsDouble()))
            : json.Null();
        const long long end = drawdown.to.value_or(std::max(basis.run.last.value_or(0), drawdown.trough));
        json.Key("seconds").Number(getSeconds(drawdown.from, end));
        json.Key("recoverySeconds");
        drawdown.to ? json.Number(getSeconds(drawdown.trough, *drawdown.to)) : json.Null();
        json.EndObject();
    }
    json.EndArray();
}

// Bins of one width from the least to the most, as many as the square root of the count, at most 40.
void WriteHistogram(nxJsonWriter& json, const char* name, const std::vector<double>& values)
{
    constexpr std::size_t most = 40;
    std::size_t bins = 0;
    double least = 0.0, width = 0.0;
    if (!values.empty()) {
        const auto [low, high] = std::ranges::minmax(values);
        bins = low == high ? 1
                           : std::min(most, static_cast<std::size_t>(
                                                std::ceil(std::sqrt(static_cast<double>(values.size())))));
        least = low;
        width = (high - low) / static_cast<double>(bins);
    }
    std::vector<unsigned long long> counts(bins);
    for (const double value : values)
        ++counts[width > 0.0 ? std::min(bins - 1, static_cast<std::size_t>((value - least) / width)) : 0];
    json.Key(name).BeginObject();
    json.Key("edges").BeginArray();
    for (std::size_t i = 0; bins != 0 && i <= bins; ++i)
        json.Number(least + static_cast<double>(i) * width);
    json.EndArray();
    json.Key("counts").BeginArray();
    for (const unsigned long long count : counts)
        json.Count(count);
    json.EndArray();
    json.EndObject();
}

}  // namespace

void nxWriteSummaries(nxJsonWriter& json, const nxResult& result, const nxMeasureBasis& basis)
{
    const Trips& trips = basis.data.trips;
    WriteMonths(json, basis);
    json.Key("breakdowns").BeginObject();
    WriteBreakdown(json, "product", trips,
                   [&](const nxRoundTrip& trip) { return result.products[trip.product].name; });
    WriteBreakdown(json, "hour", trips, GetHour);
    WriteBreakdown(json, "weekday", trips, GetWeekday, 1);
    WriteBreakdown(json, "month", trips,
                   [](const nxRoundTrip& trip) { return GetMonth(GetDay(trip.entryTime)); });
    WriteBreakdown(json, "side", trips, [](const nxRoundTrip& trip) {
        return std::string(trip.side == nxSide::Buy ? "long" : "short");
    });
    json.EndObject();
    WriteDrawdowns(json, basis);
    std::vector<double> profits, holdings;
    for (const nxRoundTrip& trip : trips) {
        profits.push_back(trip.profit.GetAsDouble());
        holdings.push_back(static_cast<double>(trip.exitTime - trip.entryTime) /
                           nxTime::NanosecondsPerSecond);
    }
    json.Key("histograms").BeginObject();
    WriteHistogram(json, "profit", profits);
    WriteHistogram(json, "holding", holdings);
    json.EndObject();
}

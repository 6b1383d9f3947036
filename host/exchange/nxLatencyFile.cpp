#include "host/exchange/nxLatencyFile.h"

#include <fmt/format.h>

#include "host/feed/nxCsvTable.h"
#include "host/feed/nxFeedTime.h"

namespace {

enum Column : std::size_t { Time, Send, Ack };
constexpr const char* Names[] = {"time", "send", "ack"};

bool ReadDuration(nxCsvTable& table, Column column, nxLatency::Sample& sample)
{
    const std::string& text = table.Get(column);
    if (nxLatency::ReadDuration(text, {}, sample.duration)) return true;
    long long bare = 0;
    const bool isBare = nxLatency::ReadDuration(text, "s", bare) || nxLatency::ReadDuration(text, "ns", bare);
    return table.Refuse(column, isBare ? fmt::format("{}: {} has no unit; write {}us or {}ms", Names[column],
                                                     text, text, text)
                                       : fmt::format("{}: no duration up to an hour, such as 250us or 1.5ms: "
                                                     "\"{}\"",
                                                     Names[column], text));
}

bool ReadRow(nxCsvTable& table, nxLatency::Samples& send, nxLatency::Samples& ack)
{
    long long time = 0;
    if (const char* reason = nxFeedTime::SetFromText(table.Get(Time), time))
        return table.Refuse(Time, fmt::format("time: {}: \"{}\"", reason, table.Get(Time)));
    if (!send.empty() && time < send.back().time)
        return table.Refuse(
            Time, fmt::format("time: runs backwards: {} after {}; sort the rows by time",
                              nxFeedTime::GetAsString(time), nxFeedTime::GetAsString(send.back().time)));
    return ReadDuration(table, Send, send.emplace_back(nxLatency::Sample{time, 0})) &&
           ReadDuration(table, Ack, ack.emplace_back(nxLatency::Sample{time, 0}));
}

}  // namespace

bool nxLatencyFile::IsNamedBy(const std::string& text)
{
    return text == "-" || text.find('/') != std::string::npos || text.find(".csv") != std::string::npos;
}

bool nxLatencyFile::Read(const std::string& path, nxLatency* request, nxLatency* answer, nxFeedError& error)
{
    nxLatency::Samples send, ack;
    nxCsvTable table({{Names[Time]}, {Names[Send]}, {Names[Ack]}});
    if (!table.Read(path, "file of latencies", [&] { return ReadRow(table, send, ack); })) {
        error = table.GetError();
        return false;
    }
    if (send.empty()) {
        error = {path, 0, 0, "holds no latencies: the file has a header row only"};
        return false;
    }
    if (request != nullptr) request->SetSamples(std::move(send));
    if (answer != nullptr) answer->SetSamples(std::move(ack));
    return true;
}

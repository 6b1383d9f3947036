#include "host/report/nxProfilePage.h"

#include <fmt/format.h>

#include "base/values/nxTextStream.h"
#include "host/feed/nxFeedTime.h"
#include "host/report/nxDataPage.h"
#include "host/report/nxJsonWriter.h"

namespace {

constexpr const char* KindNames[] = {"callback", "script", "library", "native"};
constexpr const char* HeapNames[nxScriptHeap::KindCount] = {"tables", "texts", "functions", "userdata",
                                                            "coroutines"};

void WriteTree(nxJsonWriter& json, const nxProfile::Job& job)
{
    json.Key("functions").BeginArray();
    for (const nxScriptSampler::Function& function : job.functions) {
        json.BeginObject();
        json.Key("kind").Text(KindNames[static_cast<std::size_t>(function.kind)]);
        json.Key("name").Text(function.name);
        json.Key("line").Count(function.line);
        json.EndObject();
    }
    json.EndArray();
    json.Key("nodes").BeginObject();
    using Node = nxScriptSampler::Node;
    json.Column("parent", job.nodes, [](const Node& node) { return node.parent; });
    json.Column("function", job.nodes, [](const Node& node) { return node.function; });
    json.Column("line", job.nodes, [](const Node& node) { return node.line; });
    json.Column("instructions", job.nodes, [](const Node& node) { return node.instructions; });
    json.Column("nanoseconds", job.nodes, [](const Node& node) { return node.nanoseconds; });
    json.Column("calls", job.nodes, [](const Node& node) { return node.calls; });
    json.EndObject();
    json.Key("lines").BeginObject();
    for (const auto& [number, line] : job.lines) {
        json.Key(std::to_string(number)).BeginObject();
        json.Key("file").Text(line.file);
        json.Key("line").Count(line.line);
        json.Key("text").Text(line.text);
        json.EndObject();
    }
    json.EndObject();
}

void WriteCallbacks(nxJsonWriter& json, const nxProfile::Job& job)
{
    json.Key("callbacks").BeginArray();
    for (const nxProfile::Callback& callback : job.callbacks) {
        json.BeginObject();
        json.Key("name").Text(callback.name);
        json.Key("calls").Count(callback.calls);
        json.Key("nanoseconds").Number(static_cast<double>(callback.nanoseconds));
        json.Key("longest").Number(static_cast<double>(callback.longest));
        json.Key("longestTime");
        callback.longestTime ? json.Text(nxFeedTime::GetAsString(*callback.longestTime)) : json.Null();
        json.Key("longestEvent").Text(callback.longestEvent);
        json.EndObject();
    }
    json.EndArray();
}

void WriteHeaps(nxJsonWriter& json, const nxProfile::Job& job)
{
    json.Key("heaps").BeginArray();
    for (const nxProfile::Heap& heap : job.heaps) {
        json.BeginObject();
        json.Key("calls").Count(heap.calls);
        json.Key("bytes").Count(heap.heap.bytes);
        for (std::size_t i = 0; i < nxScriptHeap::KindCount; ++i) {
            json.Key(HeapNames[i]).BeginObject();
            json.Key("count").Count(heap.heap.kinds[i].count);
            json.Key("bytes").Count(heap.heap.kinds[i].bytes);
            json.EndObject();
        }
        json.EndObject();
    }
    json.EndArray();
    json.Key("growthCalls").Count(job.growthCalls);
    json.Key("growth").BeginArray();
    for (const nxProfile::Growth& growth : job.growth) {
        json.BeginObject();
        json.Key("path").Text(growth.now.name);
        json.Key("bytes").Count(growth.now.bytes);
        json.Key("moreBytes").Number(static_cast<double>(growth.bytes));
        json.Key("entries").Count(growth.now.entries);
        json.Key("moreEntries").Number(static_cast<double>(growth.entries));
        json.EndObject();
    }
    json.EndArray();
    json.Key("failure").Text(job.failure);
}

std::string Size(long long bytes)
{
    const double size = static_cast<double>(bytes);
    if (bytes < 10'000 && bytes > -10'000) return fmt::format("{} B", bytes);
    if (bytes < 1'000'000 && bytes > -1'000'000) return fmt::format("{:.1f} kB", size / 1e3);
    return fmt::format("{:.1f} MB", size / 1e6);
}

std::string More(long long bytes)
{
    return (bytes < 0 ? "" : "+") + Size(bytes);
}

void WriteMemoryOf(std::ostream& out, const nxProfile::Job& job, const std::string& name)
{
    if (!job.failure.empty()) out << "memory      " << name << job.failure << "\n";
    if (job.heaps.empty()) return;
    const nxProfile::Heap& last = job.heaps.back();
    out << fmt::format("memory      {}{} after {} callbacks:", name,
                       Size(static_cast<long long>(last.heap.bytes)), last.calls);
    for (std::size_t i = 0; i < nxScriptHeap::KindCount; ++i)
        if (const nxScriptHeap::Sum& sum = last.heap.kinds[i]; sum.count != 0)
            out << fmt::format("{} {} {} {}", i == 0 ? "" : ",", sum.count, HeapNames[i],
                               Size(static_cast<long long>(sum.bytes)));
    out << "\n";
    for (const nxProfile::Growth& growth : job.growth)
        out << fmt::format("            {:<32} {:>9} {:>10} in the last {} calls, {} entries\n",
                           growth.now.name, Size(static_cast<long long>(growth.now.bytes)),
                           More(growth.bytes), job.growthCalls, growth.now.entries);
    if (job.growthCalls != 0 && job.growth.empty())
        out << fmt::format("            nothing has grown in the last {} calls\n", job.growthCalls);
}

}  // namespace

void nxProfilePage::Write(std::ostream& out, const nxProfile& profile)
{
    nxTextStream text;
    nxJsonWriter json(text);
    json.BeginObject();
    json.Key("title").Text(profile.title);
    json.Key("program").Text(profile.program);
    json.Key("data").BeginArray();
    for (const std::string& file : profile.data)
        json.Text(file);
    json.EndArray();
    json.Key("interval").Count(profile.interval);
    json.Key("jobs").BeginArray();
    for (const nxProfile::Job& job : profile.jobs) {
        json.BeginObject();
        json.Key("name").Text(job.name);
        WriteTree(json, job);
        WriteCallbacks(json, job);
        WriteHeaps(json, job);
        json.EndObject();
    }
    json.EndArray();
    json.EndObject();
    Write(out, text.str());
}

void nxProfilePage::Write(std::ostream& out, const std::string& document)
{
    nxDataPage::Write(out, nxProfilePageText(), {{"profile", document}});
}

void nxProfilePage::WriteMemory(std::ostream& out, const nxProfile& profile)
{
    for (const nxProfile::Job& job : profile.jobs)
        WriteMemoryOf(out, job, profile.jobs.size() == 1 ? "" : job.name + ": ");
}

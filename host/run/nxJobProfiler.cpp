#include "host/run/nxJobProfiler.h"

#include <algorithm>
#include <set>
#include <unordered_map>

#include "host/jobs/nxScriptSource.h"

namespace {

// Looks at the heap are so many callbacks apart at first, and a quarter of all at last: a few dozen in any
// run.
constexpr unsigned long long FirstLook = 64;
constexpr std::size_t MostPaths = 1000;  // of a look, the largest
constexpr std::size_t MostGrowth = 20;   // that are told
constexpr long long LeastGrowth = 256;   // bytes

}  // namespace

nxJobProfiler::nxJobProfiler(unsigned int instructions, bool looksAtMemory, const Moment& moment)
    : _looksAtMemory(looksAtMemory), _moment(moment), _nextLook(FirstLook)
{
    if (instructions != 0) _sampler.emplace(instructions);
}

void nxJobProfiler::Begin(const char* call)
{
    _running.push_back(call);
    if (_sampler) _sampler->Begin(call);
}

void nxJobProfiler::End(nxAlgoJobObject& object)
{
    ++_calls;
    if (_sampler) {
        const long long nanoseconds = _sampler->End();
        nxProfile::Callback& callback = _callbacks[_running.back()];
        ++callback.calls;
        callback.nanoseconds += nanoseconds;
        if (nanoseconds > callback.longest || callback.calls == 1) {
            callback.longest = nanoseconds;
            _longest[_running.back()] = _moment;
        }
    }
    _running.pop_back();
    if (!_looksAtMemory || _calls < _nextLook || !_running.empty()) return;
    _nextLook = std::max(_calls + FirstLook, _calls + _calls / 4);
    _LookAtMemory(object);
}

void nxJobProfiler::EndMemory(nxAlgoJobObject& object)
{
    if (_looksAtMemory && _calls != 0) _LookAtMemory(object);
    _nextLook = ~0ull;
}

void nxJobProfiler::_LookAtMemory(nxAlgoJobObject& object)
{
    if (!_heaps.empty() && _heaps.back().calls == _calls) return;
    nxProfile::Heap heap{_calls, {}};
    if (!object.ReadHeap(heap.heap)) {
        _failure = "the memory could not be looked at: " + object.GetErrorText();
        return;
    }
    std::vector<nxScriptHeap::Path>& paths = heap.heap.paths;
    std::ranges::stable_sort(paths, std::greater(), &nxScriptHeap::Path::bytes);
    if (paths.size() > MostPaths) paths.resize(MostPaths);
    _heaps.push_back(std::move(heap));
}

nxProfile::Job nxJobProfiler::_Make(const std::string& name, const nxScriptSource& source)
{
    nxProfile::Job job;
    job.name = name;
    for (auto& [call, callback] : _callbacks) {
        callback.name = call;
        job.callbacks.push_back(callback);
    }
    _Compare(job);
    job.heaps = std::move(_heaps);
    job.failure = _failure;
    if (!_sampler) return job;
    _sampler->Finish();
    job.functions = _sampler->GetFunctions();
    job.nodes = _sampler->GetNodes();
    std::set<unsigned int> lines;
    for (const nxScriptSampler::Node& node : job.nodes)
        lines.insert(node.line);
    for (const nxScriptSampler::Function& function : job.functions)
        if (function.kind == nxScriptSampler::Kind::Script) lines.insert(function.line);
    for (const unsigned int line : lines)
        for (const nxScriptSource::File& file : source.GetFiles())
            if (line >= file.firstLine && line - file.firstLine < file.lines.size())
                job.lines.push_back(
                    {line, {file.path, line - file.firstLine + 1, file.lines[line - file.firstLine]}});
    return job;
}

void nxJobProfiler::_Compare(nxProfile::Job& job) const
{
    if (_heaps.size() < 2) return;
    const nxProfile::Heap& last = _heaps.back();
    const auto isAfterHalf = [&](const nxProfile::Heap& heap) { return heap.calls > last.calls / 2; };
    auto before = std::ranges::find_if(_heaps, isAfterHalf);
    if (before != _heaps.begin()) --before;
    job.growthCalls = last.calls - before->calls;
    if (job.growthCalls == 0) return;
    std::unordered_map<std::string, const nxScriptHeap::Path*> known;
    for (const nxScriptHeap::Path& path : before->heap.paths)
        known.emplace(path.name, &path);
    for (const nxScriptHeap::Path& path : last.heap.paths) {
        static const nxScriptHeap::Path Nothing;
        const auto found = known.find(path.name);
        const nxScriptHeap::Path& was = found == known.end() ? Nothing : *found->second;
        const auto bytes = static_cast<long long>(path.bytes) - static_cast<long long>(was.bytes);
        const auto entries = static_cast<long long>(path.entries) - static_cast<long long>(was.entries);
        if (bytes >= LeastGrowth) job.growth.push_back({path, bytes, entries});
    }
    std::ranges::stable_sort(job.growth, std::greater(), &nxProfile::Growth::bytes);
    if (job.growth.size() > MostGrowth) job.growth.resize(MostGrowth);
}

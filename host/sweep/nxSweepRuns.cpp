#include "host/sweep/nxSweepRuns.h"

#include <fmt/format.h>

#include <algorithm>

#include "host/run/nxParameterText.h"

namespace {

using Fault = std::optional<std::string>;

Fault SetParameter(const std::string& name, const std::string& value, std::vector<nxJobOptions>& jobs)
{
    const std::string text = name + "=" + value;
    nxParameterText parameter;
    Fault fault = parameter.SetFromText(text, jobs);
    for (std::size_t i = 0; i < jobs.size() && !fault; ++i)
        if (i == parameter.name.job.value_or(i))
            fault = jobs[i].parameters.Define(parameter.name.name, parameter.type, parameter.value);
    return fault ? fmt::format("{}: {}", text, *fault) : fault;
}

}  // namespace

Fault nxSweepRuns::_Find(const Values& values, const nxRunOptions*& found)
{
    auto made = _made.find(values);
    if (made == _made.end()) {
        nxRunOptions options;
        if (Fault fault = _make(values, options)) return fault;
        // A batch needs but a few of them.
        if (_made.size() == MostKept) _made.clear();
        made = _made.emplace(values, std::move(options)).first;
    }
    found = &made->second;
    return std::nullopt;
}

Fault nxSweepRuns::Get(const nxPlanPoint& point, nxRunOptions& options)
{
    const std::vector<nxDimension>& dimensions = _plan.GetDimensions();
    Values values;
    for (std::size_t i = 0; i < dimensions.size(); ++i)
        if (dimensions[i].GetKind() == nxDimension::Kind::Option)
            values.emplace_back(dimensions[i].GetName(), point.values[i]);
    const nxRunOptions* found = nullptr;
    if (Fault fault = _Find(values, found)) return fault;
    options = *found;
    for (std::size_t i = 0; i < dimensions.size(); ++i)
        if (dimensions[i].GetKind() == nxDimension::Kind::Parameter)
            if (Fault fault = SetParameter(dimensions[i].GetName(), point.values[i], options.jobs))
                return fault;
    return std::nullopt;
}

Fault nxSweepRuns::Get(const nxPlanPoint& point, const nxSweepPart& part, nxRunOptions& options)
{
    if (Fault fault = Get(point, options)) return fault;
    if (part.span.IsEmpty()) return std::nullopt;
    const long long from = nxTimeSplits::GetTime(part.span.from), to = nxTimeSplits::GetTime(part.span.to);
    options.from = std::max(options.from.value_or(from), from);
    options.to = std::min(options.to.value_or(to), to);
    return std::nullopt;
}

Fault nxSweepRuns::GetAll(std::vector<nxRunOptions>& all)
{
    constexpr unsigned long long mostValues = 1000;
    const nxRunOptions* found = nullptr;
    if (Fault fault = _Find({}, found)) return fault;
    all.push_back(*found);
    for (const nxDimension& dimension : _plan.GetDimensions()) {
        if (dimension.GetKind() != nxDimension::Kind::Option) continue;
        for (unsigned long long i = 0; i < std::min(dimension.GetCount(), mostValues); ++i) {
            if (Fault fault = _Find({{dimension.GetName(), dimension.GetText(i)}}, found)) return fault;
            all.push_back(*found);
        }
    }
    return std::nullopt;
}

#include "host/run/nxParameterEvents.h"

#include <algorithm>

#include "host/feed/nxFeedTime.h"
#include "host/run/nxParameterText.h"

bool nxParameterEvents::_Refuse(const std::string& reason)
{
    _error.reason = reason;
    return false;
}

bool nxParameterEvents::_ReadRow(nxCsvTable& table)
{
    enum Column : std::size_t { Time, Parameter, Value, Tag };
    Placed placed;
    if (const char* reason = nxFeedTime::SetFromText(table.Get(Time), placed.change.time))
        return table.Refuse(Time, std::string("time: ") + reason + ": \"" + table.Get(Time) + "\"");
    nxParameterName name;
    if (const auto reason = name.SetFromText(table.Get(Parameter), _jobs))
        return table.Refuse(Parameter, "parameter: " + *reason);
    placed.change.job = name.job;
    placed.change.name = name.name;
    placed.change.value = table.Get(Value);
    placed.change.tag = table.Get(Tag);
    placed.place = table.GetPlace(Value);
    _changes.push_back(std::move(placed));
    return true;
}

bool nxParameterEvents::AddFile(const std::string& path)
{
    nxCsvTable table({{"time"}, {"parameter"}, {"value"}, {"tag", false}});
    if (table.Read(path, "file of parameter changes", [&] { return _ReadRow(table); })) return true;
    _error = table.GetError();
    return false;
}

bool nxParameterEvents::Add(const std::string& time, const std::string& text)
{
    _error = {"--at " + time + " " + text, 0, 0, {}};
    Placed placed;
    if (const char* reason = nxFeedTime::SetFromText(time, placed.change.time))
        return _Refuse(std::string("time: ") + reason + ": \"" + time + "\"");
    nxParameterText parameter;
    if (const auto reason = parameter.SetFromText(text, _jobs)) return _Refuse(*reason);
    if (!parameter.type.empty()) return _Refuse("names a type; a parameter keeps the one that it has");
    placed.change.job = parameter.name.job;
    placed.change.name = parameter.name.name;
    placed.change.value = parameter.value;
    placed.place = _error;
    _changes.push_back(std::move(placed));
    return true;
}

bool nxParameterEvents::Finish(std::vector<nxParameterChange>& changes)
{
    std::ranges::stable_sort(_changes, {}, [](const Placed& placed) { return placed.change.time; });
    std::vector<nxParameterSet> parameters;
    for (const nxJobOptions& job : _jobs)
        parameters.push_back(job.parameters);
    for (const Placed& placed : _changes) {
        for (std::size_t i = 0; i < parameters.size(); ++i) {
            if (placed.change.job && *placed.change.job != i) continue;
            if (const auto reason = parameters[i].Change(placed.change.name, placed.change.value)) {
                _error = placed.place;
                _error.reason = *reason;
                return false;
            }
        }
        changes.push_back(placed.change);
    }
    return true;
}

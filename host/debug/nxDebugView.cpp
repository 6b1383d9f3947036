#include "host/debug/nxDebugView.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <stdexcept>

namespace {

using Json = nlohmann::json;

// A reference of the protocol is that of a job's inspector with the job in front; those of an event come
// before all.
constexpr unsigned int ForJob = 1 << 20;
constexpr unsigned int EventReference = ForJob - 1;
constexpr std::size_t MostFrames = 1000;  // in one answer
constexpr std::size_t MostVariables = 100'000;

constexpr const char* ScopeHints[] = {"locals", "locals", "globals"};

std::size_t GetCount(const Json& arguments, const char* name, std::size_t otherwise)
{
    const auto found = arguments.find(name);
    if (found == arguments.end() || found->is_null()) return otherwise;
    if (!found->is_number_unsigned()) throw std::runtime_error(std::string(name) + " is no count");
    return std::min(found->get<std::size_t>(), MostVariables * MostVariables);
}

}  // namespace

void nxDebugView::Stop(const Place& place)
{
    _place = place;
    for (std::size_t job = 0; job < _inspectors.size(); ++job) {
        if (_inspectors[job] == nullptr) continue;
        if (job == place.job)
            _inspectors[job]->Stop(place.thread, place.level, place.isInHook);
        else
            _inspectors[job]->StopIdle();
    }
}

void nxDebugView::Resume()
{
    for (const auto& inspector : _inspectors)
        if (inspector != nullptr) inspector->Resume();
}

Json nxDebugView::Answer(const std::string& request, const Json& arguments)
{
    static constexpr struct
    {
        std::string_view name;
        Json (nxDebugView::*answer)(const Json&);
    } rows[] = {{"stackTrace", &nxDebugView::_GetStack},    {"scopes", &nxDebugView::_GetScopes},
                {"variables", &nxDebugView::_GetVariables}, {"evaluate", &nxDebugView::_Evaluate},
                {"setVariable", &nxDebugView::_Set},        {"setExpression", &nxDebugView::_SetExpression}};
    for (const auto& row : rows)
        if (row.name == request) return (this->*row.answer)(arguments);
    throw std::runtime_error("the run knows no request " + request);
}

std::size_t nxDebugView::_GetJob() const
{
    if (_place.job != Place::NoJob) return _place.job;
    const auto found = std::ranges::find_if(_inspectors, [](const auto& known) { return known != nullptr; });
    return static_cast<std::size_t>(found - _inspectors.begin());
}

nxScriptInspector& nxDebugView::_GetInspector(std::size_t job) const
{
    if (job >= _inspectors.size() || _inspectors[job] == nullptr)
        throw std::runtime_error("no script is loaded yet");
    return *_inspectors[job];
}

// Frames are numbered by their levels from 1; without one the globals alone are meant.
int nxDebugView::_GetLevel(const Json& arguments) const
{
    const std::size_t frame = GetCount(arguments, "frameId", 0);
    if (frame == 0 || frame > ForJob || _place.job == Place::NoJob) return nxScriptInspector::NoLevel;
    return static_cast<int>(frame) - 1;
}

Json nxDebugView::_MakeFrame(const nxScriptInspector::Frame& frame, bool isLast) const
{
    using Kind = nxScriptInspector::Frame::Kind;
    Json json = {{"id", frame.level + 1}, {"name", frame.name}, {"line", 0}, {"column", 0}};
    const auto place = frame.kind == Kind::Script ? _sources.Find(_place.job, frame.line) : std::nullopt;
    if (place) {
        json["source"] = {{"name", std::filesystem::path(place->path).filename().string()},
                          {"path", place->path}};
        json["line"] = place->line;
        json["column"] = 1;
    } else {
        json["presentationHint"] = "subtle";
    }
    if (isLast && frame.name.empty()) json["name"] = _place.callback;
    if (json["name"] == "")
        json["name"] = frame.kind == Kind::Native ? "a function of the library" : "a function";
    return json;
}

Json nxDebugView::_GetStack(const Json& arguments)
{
    if (_place.job == Place::NoJob) {
        const Json frame = {
            {"id", 1}, {"name", _place.title}, {"line", 0}, {"column", 0}, {"presentationHint", "label"}};
        return {{"stackFrames", {frame}}, {"totalFrames", 1}};
    }
    const nxScriptInspector& inspector = _GetInspector(_place.job);
    const std::size_t depth = static_cast<std::size_t>(inspector.GetDepth());
    const std::size_t start = std::min(GetCount(arguments, "startFrame", 0), depth);
    const std::size_t levels = GetCount(arguments, "levels", 0);
    const std::size_t count = std::min({levels == 0 ? depth : levels, depth - start, MostFrames});
    Json list = Json::array();
    for (const auto& frame : inspector.GetFrames(static_cast<int>(start), static_cast<int>(count)))
        list.push_back(_MakeFrame(frame, start + list.size() + 1 == depth));
    return {{"stackFrames", list}, {"totalFrames", depth}};
}

Json nxDebugView::_MakeScope(const std::string& name, const char* hint, std::size_t job,
                             unsigned int reference) const
{
    return {{"name", name},
            {"presentationHint", hint},
            {"variablesReference", (static_cast<unsigned int>(job) + 1) * ForJob + reference},
            {"expensive", false}};
}

Json nxDebugView::_GetScopes(const Json& arguments)
{
    Json scopes = Json::array();
    if (_place.job == Place::NoJob) {
        if (!_place.fields.empty())
            scopes.push_back({{"name", "Event"},
                              {"presentationHint", "locals"},
                              {"variablesReference", EventReference},
                              {"expensive", false}});
        for (std::size_t job = 0; job < _inspectors.size(); ++job)
            if (_inspectors[job] != nullptr)
                scopes.push_back(
                    _MakeScope(_inspectors.size() == 1 ? "Globals" : "Globals of " + _sources.GetName(job),
                               ScopeHints[2], job, _inspectors[job]->GetGlobals()));
        return {{"scopes", scopes}};
    }
    nxScriptInspector& inspector = _GetInspector(_place.job);
    const int level = _GetLevel(arguments);
    scopes.push_back(_MakeScope("Locals", ScopeHints[0], _place.job, inspector.GetLocals(level)));
    scopes.push_back(_MakeScope("Upvalues", ScopeHints[1], _place.job, inspector.GetUpvalues(level)));
    scopes.push_back(_MakeScope("Globals", ScopeHints[2], _place.job, inspector.GetGlobals()));
    return {{"scopes", scopes}};
}

Json nxDebugView::_Describe(const nxScriptInspector::Value& value, std::size_t job)
{
    Json json = {
        {"name", value.name}, {"value", value.text}, {"type", value.type}, {"variablesReference", 0}};
    if (value.reference != 0)
        json["variablesReference"] = (static_cast<unsigned int>(job) + 1) * ForJob + value.reference;
    if (value.indexed != 0) json["indexedVariables"] = value.indexed;
    if (!value.path.empty()) json["evaluateName"] = value.path;
    return json;
}

Json nxDebugView::_GetVariables(const Json& arguments)
{
    using Part = nxScriptInspector::Part;
    const std::size_t reference = GetCount(arguments, "variablesReference", 0);
    const std::size_t start = GetCount(arguments, "start", 0);
    const std::size_t count = GetCount(arguments, "count", 0);
    const std::string filter = arguments.value("filter", "");
    Json list = Json::array();
    if (reference == EventReference) {
        for (const auto& [name, value] : _place.fields.items()) {
            const std::string text =
                value.is_string() ? value.get<std::string>() : fmt::format("{}", value.get<double>());
            list.push_back({{"name", name}, {"value", text}, {"variablesReference", 0}});
        }
        return {{"variables", list}};
    }
    if (reference < ForJob) throw std::runtime_error("no such variable");
    const std::size_t job = reference / ForJob - 1;
    const Part part = filter == "indexed" ? Part::Indexed : filter == "named" ? Part::Named : Part::All;
    for (const auto& value : _GetInspector(job).GetVariables(static_cast<unsigned int>(reference % ForJob),
                                                             part, start, count == 0 ? MostVariables : count))
        list.push_back(_Describe(value, job));
    return {{"variables", list}};
}

namespace {

const nxScriptInspector::Value& GetValue(const nxScriptInspector::Outcome& outcome)
{
    if (!outcome.value) throw std::runtime_error(outcome.error);
    return *outcome.value;
}

}  // namespace

Json nxDebugView::_Evaluate(const Json& arguments)
{
    const std::size_t job = _GetJob();
    const auto outcome =
        _GetInspector(job).Evaluate(_GetLevel(arguments), arguments.at("expression").get<std::string>());
    Json json = _Describe(GetValue(outcome), job);
    json["result"] = json["value"];
    json.erase("value");
    json.erase("name");
    return json;
}

Json nxDebugView::_Set(const Json& arguments)
{
    const std::size_t reference = GetCount(arguments, "variablesReference", 0);
    if (reference < ForJob) throw std::runtime_error("an event cannot be changed");
    const std::size_t job = reference / ForJob - 1;
    const auto outcome = _GetInspector(job).Set(static_cast<unsigned int>(reference % ForJob),
                                                arguments.at("name").get<std::string>(),
                                                arguments.at("value").get<std::string>());
    return _Describe(GetValue(outcome), job);
}

Json nxDebugView::_SetExpression(const Json& arguments)
{
    const std::size_t job = _GetJob();
    const auto outcome =
        _GetInspector(job).SetExpression(_GetLevel(arguments), arguments.at("expression").get<std::string>(),
                                         arguments.at("value").get<std::string>());
    return _Describe(GetValue(outcome), job);
}

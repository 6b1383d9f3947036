#include "host/debug/nxDebugDefinitions.h"

#include <algorithm>
#include <cctype>
#include <stdexcept>

#include "host/debug/nxDebugPoints.h"

namespace {

using Json = nlohmann::json;

const Json& GetList(const Json& arguments)
{
    static const Json none = Json::array();
    const auto found = arguments.find("breakpoints");
    if (found == arguments.end()) return none;
    if (!found->is_array()) throw std::runtime_error("breakpoints is no list");
    return *found;
}

std::string CompileCondition(const std::string& text)
{
    std::string error;
    return nxScriptConditions().Add(text, error) < 0 ? error : std::string();
}

bool IsWord(const std::string& text)
{
    return std::ranges::all_of(text, [](unsigned char c) { return std::isalnum(c) || c == '_'; });
}

Json Tell(unsigned int id, const std::string& fault)
{
    Json told = {{"id", id}, {"verified", fault.empty()}};
    if (!fault.empty()) told["message"] = fault;
    return told;
}

}  // namespace

nxDebugDefinitions::Point nxDebugDefinitions::_Make(const Points& before, const std::string& what,
                                                    const Json& request)
{
    Point point;
    const Json common = {{"condition", request.value("condition", "")},
                         {"hits", request.value("hitCondition", "")},
                         {"log", request.value("logMessage", "")}};
    point.key = what + "\n" + common.dump(-1, ' ', false, Json::error_handler_t::replace);
    const auto same = std::ranges::find(before, point.key, &Point::key);
    point.id = same == before.end() ? ++_lastId : same->id;
    point.definitions.push_back(common);
    point.definitions[0]["id"] = point.id;
    return point;
}

// Of its condition and its count; empty: none.
std::string nxDebugDefinitions::_FindFault(const Json& request)
{
    constexpr std::size_t longest = 4096;
    for (const char* const name : {"condition", "hitCondition", "logMessage", "name"})
        if (request.value(name, "").size() > longest) return "a text is longer than 4096 bytes";
    if (const char* const fault = nxDebugPoints::CheckHits(request.value("hitCondition", ""))) return fault;
    const std::string condition = request.value("condition", "");
    return condition.empty() ? std::string() : CompileCondition(condition);
}

void nxDebugDefinitions::_AddLine(const std::string& path, const Json& request, const Points& before,
                                  Points& points, Json& told)
{
    const unsigned int line =
        request.at("line").is_number_unsigned() ? request.at("line").get<unsigned int>() : 0;
    std::string fault = _FindFault(request);
    const auto spots = _sources.GetSpots(path, line);
    if (fault.empty() && spots.empty())
        fault = _sources.HasFile(path) ? "there is no code at that line or after it"
                                       : "the file is no script of the run";
    Point point = _Make(before, path + ":" + std::to_string(line), request);
    Json answer = Tell(point.id, fault);
    answer["line"] = spots.empty() ? line : spots.front().inFile;
    told.push_back(answer);
    if (!fault.empty()) return;
    const Json common = point.definitions[0];
    point.definitions.clear();
    for (const nxDebugSources::Spot& spot : spots) {
        Json& definition = point.definitions.emplace_back(common);
        definition["job"] = spot.job;
        definition["line"] = spot.line;
    }
    points.push_back(std::move(point));
}

Json nxDebugDefinitions::SetLines(const Json& arguments)
{
    const std::string path = arguments.at("source").at("path").get<std::string>();
    const Json& list = GetList(arguments);
    if (list.size() > Most) throw std::runtime_error("more than 1000 break points");
    Points points;
    Json told = Json::array();
    for (const Json& request : list)
        _AddLine(path, request, _lines[path], points, told);
    if (_lines.size() > Most) throw std::runtime_error("more than 1000 files");
    _lines[path] = std::move(points);
    return {{"breakpoints", told}};
}

// Makes what is not common to all of the point. Empty, or what is wrong with it.
std::string nxDebugDefinitions::_AddEvent(const std::string& name, Point& point)
{
    Json& definition = point.definitions[0];
    if (std::ranges::find(nxCallbackNames, name, [](const auto& known) { return std::string(known); }) !=
        nxCallbackNames.end())
    {
        point.kind = "callbacks";
        definition["callback"] = name;
        return {};
    }
    if (IsWord(name))
        return "no callback has that name; an event is told by an expression, such as product == \"ES\"";
    point.kind = "events";
    std::string condition = nxDebugPoints::ReadSentence(name);
    if (const std::string also = definition.value("condition", ""); !also.empty())
        condition = "(" + condition + ") and (" + also + ")";
    definition["condition"] = condition;
    return CompileCondition(condition);
}

Json nxDebugDefinitions::_SetEvents(const Json& arguments, Points& points)
{
    const Json& list = GetList(arguments);
    if (list.size() > Most) throw std::runtime_error("more than 1000 break points");
    Points made;
    Json told = Json::array();
    for (const Json& request : list) {
        const std::string name = request.at("name").get<std::string>();
        Point point = _Make(points, name, request);
        std::string fault = _FindFault(request);
        if (fault.empty()) fault = _AddEvent(name, point);
        told.push_back(Tell(point.id, fault));
        if (fault.empty()) made.push_back(std::move(point));
    }
    points = std::move(made);
    return {{"breakpoints", told}};
}

Json nxDebugDefinitions::SetFilters(const Json& arguments)
{
    _stopsAtFailures = false;
    for (const Json& filter : arguments.value("filters", Json::array()))
        _stopsAtFailures = _stopsAtFailures || filter == "failed";
    return Json::object();
}

Json nxDebugDefinitions::GetAsJson() const
{
    Json json = {{"lines", Json::array()},
                 {"callbacks", Json::array()},
                 {"events", Json::array()},
                 {"failures", _stopsAtFailures}};
    const auto add = [&](const Points& points) {
        for (const Point& point : points)
            for (const Json& definition : point.definitions)
                json[point.kind].push_back(definition);
    };
    for (const auto& [path, points] : _lines)
        add(points);
    add(_functions);
    add(_events);
    return json;
}

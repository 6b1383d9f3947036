#pragma once

#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "host/debug/nxDebugSources.h"

// The break points as the editor has set them: takes its requests, answers what became of each point, and
// tells the run (see nxDebugPoints::Set). A point that comes again unchanged stays the same.
class nxDebugDefinitions
{
public:
    using Json = nlohmann::json;

    explicit nxDebugDefinitions(const nxDebugSources& sources) : _sources(sources) {}

    // The arguments of the request; gives the body of its answer. They throw std::runtime_error, and what the
    // library of JSON throws for arguments of a wrong form.
    Json SetLines(const Json& arguments);
    // Those of setFunctionBreakpoints, and of setEventBreakpoints.
    Json SetFunctions(const Json& arguments) { return _SetEvents(arguments, _functions); }
    Json SetEvents(const Json& arguments) { return _SetEvents(arguments, _events); }
    Json SetFilters(const Json& arguments);

    Json GetAsJson() const;

private:
    struct Point
    {
        unsigned int id = 0;
        std::string key;  // what it is; with the same it is the same point
        Json definitions = Json::array();
        const char* kind = "lines";
    };
    using Points = std::vector<Point>;

    static constexpr std::size_t Most = 1000;  // points of a request

    Json _SetEvents(const Json& arguments, Points& points);
    Point _Make(const Points& before, const std::string& what, const Json& request);
    void _AddLine(const std::string& path, const Json& request, const Points& before, Points& points,
                  Json& told);
    std::string _AddEvent(const std::string& name, Point& point);
    static std::string _FindFault(const Json& request);

    const nxDebugSources& _sources;
    unsigned int _lastId = 0;
    std::map<std::string, Points> _lines;  // by file
    Points _functions, _events;
    bool _stopsAtFailures = true;
};

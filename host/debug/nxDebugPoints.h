#pragma once

#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <span>
#include <string>
#include <vector>

#include "host/feed/nxFeedEvent.h"
#include "host/report/nxRunRecord.h"
#include "scriptFramework/job/nxCallback.h"
#include "scriptFramework/lua/nxScriptConditions.h"

// Where a run is to stop, and how often each of these points was met: at lines of the scripts, at the first
// line of callbacks, at events, and where a callback fails. Used on the run's thread.
class nxDebugPoints
{
public:
    using Json = nlohmann::json;

    struct Point
    {
        unsigned int id = 0;
        std::size_t job = 0;
        unsigned int line = 0;  // of the job's text
        std::string callback;   // its name
        std::string condition;
        std::string hits;  // see IsHit; empty: each
        std::string log;   // told in place of a stop; empty: it stops
        int event = -1;    // its number among the conditions of events
        unsigned long long count = 0;
        bool hasTold = false;  // that the condition fails
    };

    // Takes {"lines": [...], "callbacks": [...], "events": [...], "failures": true}. Points keep their counts
    // by id.
    void Set(const Json& definitions);

    bool IsAt(std::size_t job, unsigned int line) const
    {
        return job < _marks.size() && line < _marks[job].size() && _marks[job][line];
    }
    bool HasEvents() const { return !_events.empty(); }
    bool HasCallbacks() const { return !_callbacks.empty(); }
    bool StopsAtFailures() const { return _stopsAtFailures; }
    template <class Take>
    void ForLine(std::size_t job, unsigned int line, Take take)
    {
        for (Point& point : _lines)
            if (point.job == job && point.line == line) take(point);
    }
    template <class Take>
    void ForCallback(const std::string& name, Take take)
    {
        for (Point& point : _callbacks)
            if (point.callback == name) take(point);
    }
    // Those of events whose conditions hold.
    template <class Take>
    void ForEvent(const nxFeedEvent& event, const std::string& product, Take take)
    {
        _SetFields(event, product);
        _Take(take);
    }
    template <class Take>
    void ForEntry(const std::string& job, const char* type, std::span<const nxRunRecord::Field> fields,
                  Take take)
    {
        _SetFields(job, type, fields);
        _Take(take);
    }

    // Over the fields of the event whose points were asked for last.
    std::string Compute(const std::string& expression) { return _conditions.Compute(expression); }
    // The text of a log point, with what compute gives for each expression in braces.
    static std::string MakeText(const std::string& log,
                                const std::function<std::string(const std::string&)>& compute);

    // The point was met: whether it is one of the times that count. A number is that one time; with an
    // operator in front (> >= < <= == %) those for which it holds, % being each so-many-th.
    [[nodiscard]] static bool IsHit(Point& point);
    // Null, or why it says nothing.
    static const char* CheckHits(const std::string& hits);
    // What a sentence such as "order 17 fills" means as a condition; the text itself where it is none.
    static std::string ReadSentence(const std::string& text);

    // The fields of an event of the data, for a person and for conditions: name and value.
    static Json GetFields(const nxFeedEvent& event, const std::string& product);

private:
    template <class Take>
    void _Take(Take take)
    {
        for (Point& point : _events)
            if (_conditions.Holds(point.event)) take(point);
    }
    void _SetFields(const nxFeedEvent& event, const std::string& product);
    void _SetFields(const std::string& job, const char* type, std::span<const nxRunRecord::Field> fields);

    std::vector<Point> _lines, _callbacks, _events;
    std::vector<std::vector<bool>> _marks;  // of lines, by job
    bool _stopsAtFailures = false;
    nxScriptConditions _conditions;
};

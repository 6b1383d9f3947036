#pragma once

#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "host/debug/nxDebugSources.h"
#include "scriptFramework/lua/nxScriptInspector.h"

// What a person sees of a run that stands still: answers the requests of the debug adapter protocol that look
// into the scripts. Used on the run's thread.
class nxDebugView
{
public:
    using Json = nlohmann::json;

    // Where the run stands.
    struct Place
    {
        static constexpr std::size_t NoJob = ~std::size_t{0};
        std::size_t job = NoJob;  // whose script runs; none: an event is about to happen
        lua_State* thread = nullptr;
        int level = 0;          // where the stack begins
        bool isInHook = false;  // see nxScriptInspector::Stop
        std::string callback;   // that runs
        std::string title;      // of an event
        Json fields;            // of it
    };

    // Both outlive it. The inspectors are those of the jobs, null before they have a state.
    nxDebugView(const nxDebugSources& sources,
                const std::vector<std::unique_ptr<nxScriptInspector>>& inspectors)
        : _sources(sources), _inspectors(inspectors)
    {
    }

    void Stop(const Place& place);
    void Resume();
    // The body of the answer; throws std::runtime_error with the reason why there is none, and what the
    // library of JSON throws for arguments of a wrong form.
    Json Answer(const std::string& request, const Json& arguments);

private:
    Json _GetStack(const Json& arguments);
    Json _GetScopes(const Json& arguments);
    Json _GetVariables(const Json& arguments);
    Json _Evaluate(const Json& arguments);
    Json _Set(const Json& arguments);
    Json _SetExpression(const Json& arguments);
    Json _MakeFrame(const nxScriptInspector::Frame& frame, bool isLast) const;
    Json _MakeScope(const std::string& name, const char* hint, std::size_t job, unsigned int reference) const;
    nxScriptInspector& _GetInspector(std::size_t job) const;
    // The job of a frame or a reference.
    std::size_t _GetJob() const;
    int _GetLevel(const Json& arguments) const;
    static Json _Describe(const nxScriptInspector::Value& value, std::size_t job);

    const nxDebugSources& _sources;
    const std::vector<std::unique_ptr<nxScriptInspector>>& _inspectors;
    Place _place;
};

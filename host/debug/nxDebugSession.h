#pragma once

#include <chrono>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "host/debug/nxDapStream.h"
#include "host/debug/nxDebugDefinitions.h"
#include "host/debug/nxDebugPage.h"
#include "host/debug/nxDebugSnapshots.h"
#include "host/debug/nxLaunch.h"
#include "host/run/nxRunOptions.h"

// One debugging of a run, from an editor's first request to its last: takes the requests, has the run made in
// a process of its own (nxDebuggee), and knows the copies of it from which the run can go on, which is how it
// goes back.
//
// What a person looks at or computes while the run stands still happens in the process that stands there. It
// goes on in a copy that was made before that; only where something was changed on purpose it goes on itself.
// So looking changes nothing.
class nxDebugSession
{
public:
    using Json = nlohmann::json;
    // The options of a run with these arguments in place of those that the program was started with, or what
    // is wrong.
    using MakeRun = std::function<std::variant<nxRunOptions, std::string>(const std::vector<std::string>&)>;

    // The stream outlives the session. The process has one thread.
    nxDebugSession(nxDapStream& editor, MakeRun makeRun) : _editor(editor), _makeRun(std::move(makeRun)) {}

    // Until the editor leaves. False: it sent what cannot be understood.
    [[nodiscard]] bool Run();

private:
    enum class State { New, Launched, Running, Stopped, Seeking, Ended };
    // Where the run stands.
    struct Stop
    {
        Json reason;
        nxDebugPosition position;
        unsigned long long call = 0;
        int depth = 0;
        Json printed;
    };
    // The way to an earlier position.
    struct Search
    {
        bool wantsPoints = false;
        nxDebugPosition until;
        bool isInclusive = false;
        std::size_t snapshot = 0;  // from which it looks
        bool isNear = false;       // at the last steps alone
    };
    struct Asked
    {
        Json request;
        std::chrono::steady_clock::time_point since;
    };
    using Handler = Json (nxDebugSession::*)(const Json& arguments);
    struct Request
    {
        const char* name;
        Handler handler;
    };
    static const Request Requests[];

    // The editor's side. A handler gives the body of the answer, or throws std::runtime_error with why there
    // is none.
    void _Take(const Json& request);
    Json _Answer(const std::string& name, const Json& arguments);
    void _Respond(const Json& request, const Json& body);
    void _Refuse(const Json& request, const std::string& message);
    void _SendEvent(const char* name, const Json& body);
    void _Print(const std::string& category, const std::string& text);
    Json _Initialize(const Json& arguments);
    Json _Launch(const Json& arguments);
    Json _ConfigurationDone(const Json& arguments);
    Json _SetLines(const Json& arguments);
    Json _SetFunctions(const Json& arguments);
    Json _SetEvents(const Json& arguments);
    Json _SetFilters(const Json& arguments);
    Json _GetLocations(const Json& arguments);
    Json _GetSources(const Json& arguments);
    Json _GetThreads(const Json& arguments);
    Json _GetException(const Json& arguments);
    Json _Continue(const Json& arguments);
    Json _Next(const Json& arguments);
    Json _StepIn(const Json& arguments);
    Json _StepOut(const Json& arguments);
    Json _StepBack(const Json& arguments);
    Json _ReverseContinue(const Json& arguments);
    Json _Pause(const Json& arguments);
    Json _Terminate(const Json& arguments);
    Json _Disconnect(const Json& arguments);
    void _Ask(const Json& request);
    void _Require(bool isFine, const char* otherwise) const;

    // The run's side.
    void _Start();
    void _TakeFromRun();
    void _OnMessage(const Json& message, nxDebugChannel channel);
    void _OnOutput(const Json& message);
    void _OnLog(const Json& message);
    void _OnStopped(const Json& message);
    void _OnAnswer(const Json& message);
    void _OnEnded(const Json& message);
    void _OnDeath();
    void _GiveUpWaiting();
    Json _GetPoints() const
    {
        return _isTerminating || _launch.isPlain ? Json::object() : _definitions.GetAsJson();
    }
    void _TellPoints();
    void _Go(Json go);
    void _Resume(nxDebugSnapshots::Snapshot& snapshot, Json message, bool isScout);
    void _Kill();
    void _End(int status);
    void _GoBack(bool wantsPoints);
    void _Scout();
    void _OnFound(const Json& message);
    void _GoTo(const nxDebugPosition& position, const Json& reason);
    void _ForgetChangesAfter(const nxDebugPosition& position);

    nxDapStream& _editor;
    const MakeRun _makeRun;
    State _state = State::New;
    bool _isLeaving = false;
    bool _isTerminating = false;  // the run ends, and stops nowhere
    nxLaunch _launch;
    nxRunOptions _options;
    nxDebugSources _sources;
    nxDebugDefinitions _definitions{_sources};
    nxDebugPage::Pointer _page = nxDebugPage::Make();
    nxDebugChannel _run;
    pid_t _process = 0;  // 0: it has not told yet
    pid_t _group = 0;    // of all of the run's
    nxDebugSnapshots _snapshots;
    Stop _stop;
    Search _search;
    std::deque<Asked> _asked;
    bool _isTouched = false;  // somebody has looked into the process that stands there
    bool _isChanged = false;  // and changed something
    std::vector<nxDebugPosition> _changes;
    bool _isNewHistory = false;  // what was printed after the next stop belongs to another history
    Json _shown = {0, 0};        // how much of standard output and error
    std::map<unsigned int, nxDebugPosition> _logged;  // the last time of each log point
};

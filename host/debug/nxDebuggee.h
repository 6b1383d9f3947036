#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/debug/nxDebugChannel.h"
#include "host/debug/nxDebugOutput.h"
#include "host/debug/nxDebugPage.h"
#include "host/debug/nxDebugPoints.h"
#include "host/debug/nxDebugPosition.h"
#include "host/debug/nxDebugView.h"
#include "host/run/nxRunFollower.h"
#include "host/run/nxRunOptions.h"

// The run that is debugged, in a process of its own, which it owns whole. It stops where it is told to,
// answers what is asked about its scripts there, and leaves copies of its process behind (nxProcessCopy),
// from which it can go on again: that is how one goes back.
//
// Over its channel it sends hello with its process, snapshot with the channel of a copy, stopped, found,
// output, log, and ended; and it gets go, points, pause and requests. Used on one thread.
class nxDebuggee : private nxRunFollower
{
public:
    using Json = nlohmann::json;

    // All outlive it.
    nxDebuggee(nxRunOptions options, const nxDebugSources& sources, nxDebugPage& page,
               nxDebugChannel channel);

    // Waits for the first go, runs to the end, and ends the process.
    [[noreturn]] void Run();

private:
    using Clock = std::chrono::steady_clock;

    // The script of one job.
    class Job : public nxScriptDebugger
    {
    public:
        Job(nxDebuggee& debuggee, std::size_t index) : _debuggee(debuggee), _index(index) {}
        void OnState(nxLuaState& state) override;
        void OnLine(lua_State* thread, unsigned int line) override;
        void OnFailure(lua_State* thread, int level, const std::string& text) override;

    private:
        nxDebuggee& _debuggee;
        const std::size_t _index;
    };

    // How the run goes on.
    struct Mode
    {
        enum class Kind {
            Continue,  // to the next point
            Next,      // to the next line of the function, or of one that called it; or to the next event
            In,        // to the next line
            Out,       // to the next line of a function that called it
            To,        // to a position, where it has been before
            Scout      // up to a position, to find the last place before it where it would stop
        };
        Kind kind = Kind::Continue;
        // Of Next and Out: the function. Of a Scout that wants lines: that of the place which it looks back
        // from.
        unsigned long long call = 0;
        int depth = 0;  // 0: an event
        lua_State* thread = nullptr;
        nxDebugPosition target;
        bool isInclusive = false;               // a Scout may find the target itself
        bool wantsPoints = false;               // a Scout looks for points; else for lines or events
        unsigned long long first = 0;           // the step from which on a Scout looks
        std::optional<nxDebugPosition> latest;  // that a Scout found
        Json reason;                            // of the stop there; null: a step
    };
    // What the run is about to do.
    struct Moment
    {
        std::size_t job = nxDebugView::Place::NoJob;  // to run a line of its script
        lua_State* thread = nullptr;
        int level = 0;
        bool isInHook = false;
        const std::string* failure = nullptr;  // the line has failed
        const nxFeedEvent* event = nullptr;    // to take it
        const nxFeedProductTable* products = nullptr;
        long long time = 0;
        const char* title = "the run begins";

        bool IsInScript() const { return thread != nullptr; }
    };

    nxScriptDebugger& GetDebugger(std::size_t job) override { return *_jobs[job]; }
    void BeforeStep(const nxFeedEvent* event, const nxFeedProductTable& products, long long time) override;
    void OnEntry(const std::string& job, const char* type,
                 std::span<const nxRunRecord::Field> fields) override;
    void BeforeEnd() override;

    int _RunHere();
    void _ShowPrints();
    void _TellExits();
    void _OnLine(std::size_t job, lua_State* thread, unsigned int line);
    void _LookAtLine(std::size_t job, lua_State* thread, unsigned int line);
    void _MeetPoints(unsigned int line);
    void _OnFailure(std::size_t job, lua_State* thread, int level, const std::string& text);
    void _BeginStep(const Moment& moment);
    void _LookAtStep();
    bool _IsStepOver() const;
    bool _IsScoutsLine() const;
    bool _Seek(bool isPoint, bool isLine);
    void _Report();
    bool _Holds(nxDebugPoints::Point& point);
    template <class Compute>
    void _Take(nxDebugPoints::Point& point, Compute compute);
    void _TakeEvent(nxDebugPoints::Point& point);
    std::string _Compute(const std::string& text);
    void _Log(const nxDebugPoints::Point& point, const std::string& text);
    Json _MakeReason() const;

    void _Enter();
    void _Stop();
    void _TellStop(const Json& reason);
    // True: this is a copy of the process that has been told to go on from here.
    bool _TakeSnapshot();
    void _WaitToGoOn();
    void _Serve();
    void _Answer(const Json& message);
    void _Go(const Json& message);
    void _TakeMessages();
    void _LookAround();
    void _UpdateAlert();
    void _HandOn();
    bool _IsSilent() const { return _mode.kind == Mode::Kind::To || _mode.kind == Mode::Kind::Scout; }

    nxRunOptions _options;
    const nxDebugSources& _sources;
    nxDebugPage& _page;
    nxDebugChannel _channel;
    nxDebugOutput _out, _err;
    nxDebugLogDevice _log{_err};
    nxRunPulse _pulse;
    std::vector<std::unique_ptr<Job>> _jobs;
    std::vector<std::unique_ptr<nxScriptInspector>> _inspectors;
    nxDebugView _view;
    nxDebugView::Place _place;  // as of the last _Enter
    Moment _moment;
    nxDebugPoints _points;
    nxDebugPosition _position;
    Mode _mode;
    bool _isAlert = true;  // a line is to be looked at even where there is no point
    bool _isPauseWanted = false;
    bool _stopsAtEnd = false;
    unsigned long long _call = 0;       // whose first line has been seen
    std::vector<unsigned int> _met;     // points that the next stop is for
    Clock::time_point _since;           // when the run went on, or left a copy last
    std::chrono::nanoseconds _work{0};  // that it took to come to the latest copy
};

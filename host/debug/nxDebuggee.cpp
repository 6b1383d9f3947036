#include "host/debug/nxDebuggee.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>

#include "base/log/nxLogEntriesQueue.h"
#include "base/log/nxLogManager.h"
#include "base/threads/nxStackThread.h"
#include "host/check/nxScriptReview.h"
#include "host/feed/nxFeedTime.h"
#include "host/run/nxRun.h"

namespace {

using Json = nlohmann::json;

// What the C library prints goes where the run prints.
ssize_t Print(void* output, const char* bytes, std::size_t size)
{
    static_cast<nxDebugOutput*>(output)->Write({bytes, size});
    return static_cast<ssize_t>(size);
}

}  // namespace

void nxDebuggee::Job::OnState(nxLuaState& state)
{
    _debuggee._inspectors[_index] = std::make_unique<nxScriptInspector>(state);
}

void nxDebuggee::Job::OnLine(lua_State* thread, unsigned int line)
{
    _debuggee._OnLine(_index, thread, line);
}

void nxDebuggee::Job::OnFailure(lua_State* thread, int level, const std::string& text)
{
    _debuggee._OnFailure(_index, thread, level, text);
}

nxDebuggee::nxDebuggee(nxRunOptions options, const nxDebugSources& sources, nxDebugPage& page,
                       nxDebugChannel channel)
    : _options(std::move(options)),
      _sources(sources),
      _page(page),
      _channel(std::move(channel)),
      _out([this](unsigned long long place, const std::string& text) {
          if (!_IsSilent()) _channel.Send({{"output", "stdout"}, {"place", place}, {"text", text}});
      }),
      _err([this](unsigned long long place, const std::string& text) {
          if (!_IsSilent()) _channel.Send({{"output", "stderr"}, {"place", place}, {"text", text}});
      }),
      _inspectors(_options.jobs.size()),
      _view(_sources, _inspectors),
      _since(Clock::now())
{
    for (std::size_t i = 0; i < _options.jobs.size(); ++i)
        _jobs.push_back(std::make_unique<Job>(*this, i));
    _options.follower = this;
    _options.pulse = &_pulse;
    _options.interrupted = &_page.isInterrupted;
    _options.showProgress = false;
    _options.callbackLimit = {};  // it would count the time in which a person looks
}

void nxDebuggee::Run()
{
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    std::signal(SIGINT, SIG_IGN);
    std::signal(SIGCHLD, SIG_IGN);  // copies end when they like
    nxStackThread::Run(nxStackThread::ForScripts, [this] {
        int status = static_cast<int>(nxRunResult::InputFailed);
        try {
            status = _RunHere();
        } catch (const std::exception& exception) {
            _err.Write(std::string(exception.what()) + "\n");
        }
        _HandOn();
        _channel.Send({{"ended", status}});
        _exit(0);
    });
    _exit(0);
}

// A script of the base profile may end the process by os.exit.
void nxDebuggee::_TellExits()
{
    on_exit(
        [](int status, void* self) {
            auto& debuggee = *static_cast<nxDebuggee*>(self);
            debuggee._HandOn();
            debuggee._channel.Send({{"ended", status}});
            _exit(status);
        },
        this);
}

void nxDebuggee::_ShowPrints()
{
    static constexpr cookie_io_functions_t functions = {nullptr, Print, nullptr, nullptr};
    std::FILE* const prints = fopencookie(&_out, "w", functions);
    if (prints == nullptr) return;
    std::setvbuf(prints, nullptr, _IOLBF, BUFSIZ);
    stdout = prints;
}

int nxDebuggee::_RunHere()
{
    _channel.Send({{"hello", getpid()}});
    _ShowPrints();
    _TellExits();
    nxLogManager::GetLogEntriesQueue().AddDevice(&_log);
    // Before the first copy: it has a thread.
    const std::vector<std::string> notes = nxScriptReview(_options.jobs, _options.modules).GetNotes();
    _options.getNotes = [notes] { return notes; };
    nxRun run(_options, _out.GetStream(), _err.GetStream());
    _Serve();
    if (!run.Begin()) return static_cast<int>(run.GetOutcome());
    _Enter();
    _TakeSnapshot();
    while (run.Continue()) {
    }
    return static_cast<int>(run.GetOutcome());
}

void nxDebuggee::_HandOn()
{
    std::fflush(stdout);
    _out.HandOn();
    _err.HandOn();
}

// For a person, and for conditions of points: most moments pass without.
void nxDebuggee::_Enter()
{
    const auto call = nxRunPulse::GetCall(_pulse.call.load(std::memory_order_relaxed));
    nxDebugView::Place place = {.job = _moment.job,
                                .thread = _moment.thread,
                                .level = _moment.level,
                                .isInHook = _moment.isInHook,
                                .callback = call ? call->GetName() : "",
                                .title = _moment.title,
                                .fields = Json::object()};
    if (_moment.event != nullptr) {
        const std::string& product = _moment.products->Get(_moment.event->product).GetName();
        place.fields = nxDebugPoints::GetFields(*_moment.event, product);
        place.title = fmt::format("{} of {}", place.fields.value("event", ""), product);
    }
    if (!_moment.IsInScript() && _moment.products != nullptr)
        place.title += ", " + nxFeedTime::GetAsString(_moment.time);
    _place = std::move(place);
    _view.Stop(_place);
}

// The way of nearly all lines.
void nxDebuggee::_OnLine(std::size_t job, lua_State* thread, unsigned int line)
{
    constexpr unsigned long long rarely = 0xffff;
    if (_inspectors[job]->IsBusy()) return;
    ++_position.line;
    _position.isFailure = false;
    if (_isAlert || _points.IsAt(job, line) || (_position.line & rarely) == 0 ||
        _page.hasMessage.load(std::memory_order_relaxed)) [[unlikely]]
        _LookAtLine(job, thread, line);
}

void nxDebuggee::_LookAtLine(std::size_t job, lua_State* thread, unsigned int line)
{
    _moment = {.job = job, .thread = thread, .isInHook = true};
    _TakeMessages();
    const bool isInScript = _inspectors[job]->IsInScript(thread);
    if (isInScript) _MeetPoints(line);
    const bool isStep = isInScript && (_mode.kind == Mode::Kind::In || _IsStepOver() || _isPauseWanted);
    const bool isPoint = isInScript && !_met.empty();
    if (!_Seek(isPoint, isInScript && _IsScoutsLine()) && (isStep || isPoint)) _Stop();
    if (isInScript) _met.clear();
    _LookAround();
}

void nxDebuggee::_MeetPoints(unsigned int line)
{
    const bool isFirst = std::exchange(_call, _pulse.count) != _pulse.count;
    const bool isCallback = isFirst && _points.HasCallbacks();
    if (!isCallback && !_points.IsAt(_moment.job, line)) return;
    _Enter();
    const auto take = [this](nxDebugPoints::Point& point) {
        if (_Holds(point)) _Take(point, [this](const std::string& text) { return _Compute(text); });
    };
    _points.ForLine(_moment.job, line, take);
    if (isCallback) _points.ForCallback(_place.callback, take);
}

void nxDebuggee::_OnFailure(std::size_t job, lua_State* thread, int level, const std::string& text)
{
    if (_inspectors[job]->IsBusy()) return;
    _position.isFailure = true;
    _moment = {.job = job, .thread = thread, .level = level, .failure = &text};
    const bool isStop = _points.StopsAtFailures();
    if (!_Seek(isStop, _IsScoutsLine()) && isStop) _Stop();
}

void nxDebuggee::_BeginStep(const Moment& moment)
{
    ++_position.step;
    _position.line = 0;
    _position.isFailure = false;
    _moment = moment;
    _UpdateAlert();
    _TakeMessages();
}

void nxDebuggee::BeforeStep(const nxFeedEvent* event, const nxFeedProductTable& products, long long time)
{
    constexpr unsigned long long seldom = 0xf;
    _BeginStep({.event = event, .products = &products, .time = time, .title = "something is due"});
    if (event != nullptr && _points.HasEvents())
        _points.ForEvent(*event, products.Get(event->product).GetName(),
                         [this](auto& point) { _TakeEvent(point); });
    if (_isAlert || _isPauseWanted || !_met.empty()) [[unlikely]]
        _LookAtStep();
    if ((_position.step & seldom) == 0) _LookAround();
}

void nxDebuggee::BeforeEnd()
{
    _BeginStep({.title = "the run ends"});
    _isPauseWanted = _isPauseWanted || _stopsAtEnd;
    _LookAtStep();
    if (_mode.kind == Mode::Kind::Scout) _Report();
}

void nxDebuggee::_LookAtStep()
{
    const bool isEvent = _moment.event != nullptr && _mode.depth == 0;
    const bool isPoint = !_met.empty();
    const bool isStop = isPoint || _isPauseWanted || (isEvent && _mode.kind == Mode::Kind::Next);
    if (!_Seek(isPoint, isEvent && !_mode.wantsPoints) && isStop) _Stop();
    _met.clear();
}

void nxDebuggee::OnEntry(const std::string& job, const char* type, std::span<const nxRunRecord::Field> fields)
{
    if (!_points.HasEvents()) return;
    _points.ForEntry(job, type, fields, [this](auto& point) { _TakeEvent(point); });
    // The script stands in the middle of something: the stop is at its next line, or before the next event.
    if (!_met.empty()) _isAlert = true;
}

// Of the mode that has to come to the next line of a function or to one outside of it.
bool nxDebuggee::_IsStepOver() const
{
    const bool isOut = _mode.kind == Mode::Kind::Out;
    if ((!isOut && _mode.kind != Mode::Kind::Next) || _mode.depth == 0) return isOut;
    if (_mode.call != _pulse.count) return true;
    return _moment.thread == _mode.thread &&
           !nxScriptInspector::IsDeeperThan(_moment.thread, _mode.depth - (isOut ? 1 : 0));
}

// The line before is one of the same function or of one that called it; before the first of a call, the last
// that the callback before it had by itself.
bool nxDebuggee::_IsScoutsLine() const
{
    if (_mode.kind != Mode::Kind::Scout || _mode.wantsPoints || _mode.depth == 0) return false;
    return !nxScriptInspector::IsDeeperThan(_moment.thread, _mode.call == _pulse.count ? _mode.depth : 1);
}

// Whether a mode that is bound for a position has dealt with this one.
bool nxDebuggee::_Seek(bool isPoint, bool isLine)
{
    if (_mode.kind == Mode::Kind::To) {
        if (_position >= _mode.target) _Stop();
        return true;
    }
    if (_mode.kind != Mode::Kind::Scout) return false;
    if (_mode.isInclusive ? _position > _mode.target : _position >= _mode.target) _Report();
    if (_position.step < _mode.first) return true;
    if (isPoint || isLine) _mode.latest = _position;
    if (isPoint) {
        _Enter();
        _mode.reason = _MakeReason();
    } else if (isLine) {
        _mode.reason = nullptr;
    }
    return true;
}

// Tells what was found. The process has nothing more to do.
void nxDebuggee::_Report()
{
    _channel.Send({{"found", _mode.latest ? _mode.latest->GetAsJson() : Json()}, {"reason", _mode.reason}});
    while (_channel.Receive()) {
    }
    _exit(0);
}

bool nxDebuggee::_Holds(nxDebugPoints::Point& point)
{
    if (point.condition.empty()) return true;
    std::string error;
    const bool holds = _inspectors[_moment.job]->Test(_moment.level, point.condition, error);
    if (!error.empty() && !std::exchange(point.hasTold, true))
        _Log(point, "the condition " + point.condition + " fails: " + error);
    return holds;
}

template <class Compute>
void nxDebuggee::_Take(nxDebugPoints::Point& point, Compute compute)
{
    if (!nxDebugPoints::IsHit(point)) return;
    if (point.log.empty())
        _met.push_back(point.id);
    else if (!_IsSilent())
        _Log(point, nxDebugPoints::MakeText(point.log, compute));
}

void nxDebuggee::_TakeEvent(nxDebugPoints::Point& point)
{
    _Take(point, [this](const std::string& text) { return _points.Compute(text); });
}

std::string nxDebuggee::_Compute(const std::string& text)
{
    const auto outcome = _inspectors[_moment.job]->Evaluate(_moment.level, text);
    return outcome.value ? outcome.value->text : outcome.error;
}

void nxDebuggee::_Log(const nxDebugPoints::Point& point, const std::string& text)
{
    if (_IsSilent()) return;
    _HandOn();
    _channel.Send({{"log", text + "\n"}, {"id", point.id}, {"position", _position.GetAsJson()}});
}

nxDebuggee::Json nxDebuggee::_MakeReason() const
{
    const bool isAtLine = _moment.IsInScript();
    Json reason = {{"reason", "step"},
                   {"description", isAtLine ? _place.callback : _place.title},
                   {"hitBreakpointIds", _met}};
    if (_moment.failure != nullptr) {
        reason["reason"] = "exception";
        reason["description"] = _place.callback + " fails";
        reason["text"] = _sources.Explain(_moment.job, *_moment.failure);
    } else if (!_met.empty()) {
        reason["reason"] = isAtLine ? "breakpoint" : "function breakpoint";
    } else if (_isPauseWanted) {
        reason["reason"] = "pause";
    }
    return reason;
}

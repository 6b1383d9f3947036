#include <unistd.h>

#include <cstdio>

#include "host/debug/nxDebuggee.h"
#include "host/debug/nxProcessCopy.h"

// The process of the run: how it stands still, is copied, and goes on.

void nxDebuggee::_Stop()
{
    _Enter();
    const Json reason =
        _mode.kind == Mode::Kind::To && !_mode.reason.is_null() ? _mode.reason : _MakeReason();
    _HandOn();
    _mode = {};
    if (!_TakeSnapshot()) {
        _TellStop(reason);
        _Serve();
    }
    _view.Resume();
}

void nxDebuggee::_TellStop(const Json& reason)
{
    const int depth = _moment.IsInScript() ? nxScriptInspector::GetDepth(_moment.thread) - _moment.level : 0;
    _channel.Send({{"stopped", reason},
                   {"position", _position.GetAsJson()},
                   {"call", _pulse.count},
                   {"depth", depth},
                   {"printed", {_out.GetPlace(), _err.GetPlace()}}});
}

bool nxDebuggee::_TakeSnapshot()
{
    std::fflush(stdout);
    auto [theirs, its] = nxDebugChannel::MakePair();
    if (!its.IsOpen()) return false;
    _work += Clock::now() - _since;
    const pid_t copy = nxProcessCopy::Make(nxProcessCopy::Writes::Wait);
    if (copy == 0) {
        theirs.Close();
        _channel = std::move(its);
        _WaitToGoOn();
        return true;
    }
    if (copy > 0)
        _channel.Send({{"snapshot", _position.GetAsJson()},
                       {"work", std::chrono::duration_cast<std::chrono::microseconds>(_work).count()}},
                      theirs.Get());
    _since = Clock::now();
    return false;
}

// In a copy: as often as it is told to, a copy of it goes on from here.
void nxDebuggee::_WaitToGoOn()
{
    for (;;) {
        nxDebugChannel next;
        const auto message = _channel.Receive(&next);
        if (!message) _exit(0);
        const bool isScout = message->value("scout", false);
        if (nxProcessCopy::Make(isScout ? nxProcessCopy::Writes::Nowhere : nxProcessCopy::Writes::GoOn) != 0)
            continue;
        _channel = std::move(next);
        _channel.Send({{"hello", getpid()}});
        _Serve();
        return;
    }
}

// Until it is told to go on.
void nxDebuggee::_Serve()
{
    for (;;) {
        const auto message = _channel.Receive();
        if (!message) _exit(0);
        if (message->contains("points")) _points.Set(message->at("points"));
        if (message->contains("tell")) _TellStop(message->at("tell"));
        if (message->contains("request")) _Answer(*message);
        if (!message->contains("go")) continue;
        _Go(message->at("go"));
        _since = Clock::now();
        if (message->value("keep", false)) _TakeSnapshot();
        return;
    }
}

void nxDebuggee::_Answer(const Json& message)
{
    Json answer = {{"answer", message.at("answer")}, {"success", true}};
    try {
        answer["body"] = _view.Answer(message.at("request").get<std::string>(), message.at("arguments"));
    } catch (const std::exception& exception) {
        answer["success"] = false;
        answer["message"] = exception.what();
    }
    _HandOn();
    _channel.Send(answer);
}

void nxDebuggee::_Go(const Json& go)
{
    static constexpr struct
    {
        const char* name;
        Mode::Kind kind;
    } kinds[] = {
        {"continue", Mode::Kind::Continue}, {"next", Mode::Kind::Next}, {"stepIn", Mode::Kind::In},
        {"stepOut", Mode::Kind::Out},       {"to", Mode::Kind::To},     {"scout", Mode::Kind::Scout}};
    _mode = {};
    for (const auto& [name, kind] : kinds)
        if (go.at("mode") == name) _mode.kind = kind;
    _stopsAtEnd = go.value("stopsAtEnd", _stopsAtEnd);
    if (_IsSilent()) {
        _mode.target = nxDebugPosition::Get(go.at("target"));
        _mode.isInclusive = go.value("isInclusive", false);
        _mode.wantsPoints = go.value("wantsPoints", false);
        _mode.first = go.value("first", 0ull);
        _mode.call = go.value("call", 0ull);
        _mode.depth = go.value("depth", 0);
        _mode.reason = go.value("reason", Json());
    } else if (_moment.IsInScript()) {
        _mode.call = _pulse.count;
        _mode.thread = _moment.thread;
        _mode.depth = nxScriptInspector::GetDepth(_moment.thread) - _moment.level;
    }
    _isPauseWanted = false;
    _UpdateAlert();
}

// A line is worth a look where the mode may end at any, and in the last step of those that are bound for a
// position.
void nxDebuggee::_UpdateAlert()
{
    const bool isNear = _mode.kind == Mode::Kind::To ? _position.step >= _mode.target.step
                        : _mode.kind == Mode::Kind::Scout
                            ? _position.step >= (_mode.wantsPoints ? _mode.target.step : _mode.first)
                            : _mode.kind != Mode::Kind::Continue;
    _isAlert = isNear || _isPauseWanted || !_met.empty() || _points.HasCallbacks();
}

void nxDebuggee::_TakeMessages()
{
    if (!_page.hasMessage.load(std::memory_order_relaxed)) return;
    _page.hasMessage = false;
    while (_channel.IsReady()) {
        const auto message = _channel.Receive();
        if (!message) _exit(0);
        if (message->contains("points")) _points.Set(message->at("points"));
        if (message->contains("pause")) _isPauseWanted = true;
    }
    _UpdateAlert();
}

// A few times a second: shows what was printed, leaves a copy behind, and ends with the process that shows
// it.
void nxDebuggee::_LookAround()
{
    constexpr std::chrono::milliseconds interval(200);
    if (Clock::now() - _since < interval) return;
    _HandOn();
    if (_channel.IsReady()) _page.hasMessage = true;
    _TakeMessages();
    if (_mode.kind == Mode::Kind::Scout) return;  // what it writes goes nowhere
    _Enter();
    _TakeSnapshot();
}

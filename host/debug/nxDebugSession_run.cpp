#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <utility>

#include "host/debug/nxDebugSession.h"
#include "host/debug/nxDebuggee.h"
#include "host/run/nxRunSandbox.h"

// The session's dealings with the processes of the run.

namespace {

using Json = nlohmann::json;

// As a run under the strict profile is confined, but that it may copy itself. A rule holds for what is there,
// so what it is to write has to be.
std::optional<std::string> Confine(const nxRunOptions& options, int channel)
{
    for (const std::string& path :
         {options.recordFile, options.jsonFile, options.reportFile, options.tradesFile, options.equityFile})
    {
        const int file = path.empty() ? -1 : open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
        if (file >= 0) close(file);
    }
    nxGuardOptions guard = nxRunSandbox::GetGuardOptions(options);
    guard.storeDirectory.clear();  // the stores are in memory
    nxConfinement rights = nxRunGuard::GetRights(guard);
    rights.descriptors.push_back(channel);
    rights.copiesItself = true;
    return rights.Apply();
}

// The child keeps nothing of this process but the channel: neither the editor's messages nor its files.
[[noreturn]] void BecomeRun(nxRunOptions options, const nxDebugSources& sources, nxDebugPage& page,
                            nxDebugChannel channel)
{
    constexpr int kept = STDERR_FILENO + 1;
    const int nothing = open("/dev/null", O_RDWR);
    if (nothing < 0 || dup2(nothing, STDIN_FILENO) < 0 || dup2(STDERR_FILENO, STDOUT_FILENO) < 0) _exit(2);
    if (channel.Get() != kept) {
        if (dup3(channel.Get(), kept, O_CLOEXEC) < 0) _exit(2);
        static_cast<void>(channel.Release());
        channel = nxDebugChannel(kept);
    }
    close_range(kept + 1, ~0u, 0);
    // The session ends what is of this group, and nothing else.
    setpgid(0, 0);
    if (options.profile == nxScriptProfile::Strict)
        if (const auto failure = Confine(options, kept)) {
            channel.Send({{"output", "stderr"},
                          {"place", 0},
                          {"text", "the sandbox cannot be set up: " + *failure + "\n"}});
            channel.Send({{"ended", 2}});
            _exit(2);
        }
    nxDebuggee(std::move(options), sources, page, std::move(channel)).Run();
}

}  // namespace

void nxDebugSession::_Start()
{
    std::signal(SIGCHLD, SIG_IGN);  // nobody waits for them
    auto [ours, its] = nxDebugChannel::MakePair();
    const pid_t child = its.IsOpen() ? fork() : -1;
    if (child == 0) {
        ours.Close();
        BecomeRun(std::move(_options), _sources, *_page, std::move(its));
    }
    if (child < 0) {
        _Print("important", "no process for the run\n");
        return _End(2);
    }
    _run = std::move(ours);
    _process = _group = child;
    setpgid(child, child);  // whoever of the two comes first
    _run.Send(
        {{"points", _GetPoints()},
         {"go",
          {{"mode", _launch.stopsOnEntry ? "stepIn" : "continue"}, {"stopsAtEnd", _launch.stopsAtEnd}}}});
}

void nxDebugSession::_TakeFromRun()
{
    nxDebugChannel channel;
    const auto message = _run.Receive(&channel);
    if (!message) return _OnDeath();
    // A script that broke out of its sandbox could send anything.
    try {
        _OnMessage(*message, std::move(channel));
    } catch (const Json::exception&) {
        _Kill();
        _OnDeath();
    }
}

void nxDebugSession::_OnMessage(const Json& message, nxDebugChannel channel)
{
    if (message.contains("hello")) _process = message.at("hello").get<pid_t>();
    if (message.contains("snapshot") && channel.IsOpen())
        _snapshots.Add({nxDebugPosition::Get(message.at("snapshot")), message.at("work").get<long long>(),
                        std::move(channel)},
                       _stop.position);
    if (message.contains("output")) _OnOutput(message);
    if (message.contains("log")) _OnLog(message);
    if (message.contains("answer")) _OnAnswer(message);
    if (message.contains("stopped")) _OnStopped(message);
    if (message.contains("found")) _OnFound(message);
    if (message.contains("ended")) _OnEnded(message);
}

// Only what was not shown before: the run may have gone back.
void nxDebugSession::_OnOutput(const Json& message)
{
    const std::string category = message.at("output").get<std::string>();
    const std::string text = message.at("text").get<std::string>();
    const auto place = message.at("place").get<unsigned long long>();
    Json& shown = _shown[category == "stdout" ? 0 : 1];
    const auto known = shown.get<unsigned long long>();
    if (place + text.size() <= known) return;
    shown = place + text.size();
    _Print(category, text.substr(known > place ? known - place : 0));
}

void nxDebugSession::_OnLog(const Json& message)
{
    const auto id = message.at("id").get<unsigned int>();
    const auto position = nxDebugPosition::Get(message.at("position"));
    const auto last = _logged.find(id);
    if (last != _logged.end() && last->second >= position) return;
    _logged[id] = position;
    _Print("console", message.at("log").get<std::string>());
}

void nxDebugSession::_OnStopped(const Json& message)
{
    _stop = {message.at("stopped"), nxDebugPosition::Get(message.at("position")),
             message.at("call").get<unsigned long long>(), message.at("depth").get<int>(),
             message.at("printed")};
    if (std::exchange(_isNewHistory, false)) {
        _shown = _stop.printed;
        _logged.clear();
    }
    _state = State::Stopped;
    _isTouched = _isChanged = false;
    Json body = _stop.reason;
    body["threadId"] = 1;
    body["allThreadsStopped"] = true;
    _SendEvent("stopped", body);
}

void nxDebugSession::_OnAnswer(const Json& message)
{
    const auto asked = std::ranges::find_if(
        _asked, [&](const Asked& one) { return one.request.at("seq") == message.at("answer"); });
    if (asked == _asked.end()) return;
    const Json request = asked->request;
    _asked.erase(asked);
    if (message.at("success").get<bool>())
        _Respond(request, message.at("body"));
    else
        _Refuse(request, message.at("message").get<std::string>());
}

void nxDebugSession::_OnEnded(const Json& message)
{
    _run.Close();
    _End(message.at("ended").get<int>());
}

void nxDebugSession::_OnDeath()
{
    _run.Close();
    _process = 0;
    for (const Asked& asked : std::exchange(_asked, {}))
        _Refuse(asked.request, "the run's process has ended");
    // A script may do that to it, and so may what was asked of one.
    if (_state == State::Stopped && _snapshots.Find(_stop.position) != nullptr) {
        _Print("important", "the run's process has ended; it stands where it stood, in a copy\n");
        return _GoTo(_stop.position, _stop.reason);
    }
    _Print("important", "the run's process has ended by itself, or was killed\n");
    _End(1);
}

void nxDebugSession::_End(int status)
{
    _snapshots.Clear();
    _state = State::Ended;
    _SendEvent("exited", {{"exitCode", status}});
    _SendEvent("terminated", Json::object());
}

// What was asked of a script may not return: then the process is given up for its copy.
void nxDebugSession::_GiveUpWaiting()
{
    if (_asked.empty() || std::chrono::steady_clock::now() - _asked.front().since < std::chrono::seconds(5))
        return;
    for (const Asked& asked : std::exchange(_asked, {}))
        _Refuse(asked.request, "no answer within 5 seconds; the run stands where it stood, in a copy");
    _Kill();
    _GoTo(_stop.position, _stop.reason);
}

void nxDebugSession::_TellPoints()
{
    if (!_run.IsOpen() || _state == State::Seeking) return;
    _run.Send({{"points", _GetPoints()}});
    _page->hasMessage = true;
}

void nxDebugSession::_Kill()
{
    if (!_run.IsOpen()) return;
    // It tells first which process it is. While its channel is open, so is the process.
    while (_process == 0) {
        const auto message = _run.Receive();
        if (!message) break;
        if (message->contains("hello")) _process = message->at("hello").get<pid_t>();
    }
    const bool isKilled = _process > 0 && getpgid(_process) == _group && kill(_process, SIGKILL) == 0;
    while (isKilled && _run.Receive()) {
    }
    _run.Close();
    _process = 0;
}

void nxDebugSession::_Go(Json go)
{
    nxDebugSnapshots::Snapshot* const untouched = _snapshots.Find(_stop.position);
    const bool isKept = _isChanged;
    _state = State::Running;
    if (_isTouched && !_isChanged && untouched != nullptr) {
        _Kill();
        return _Resume(*untouched, {{"go", std::move(go)}}, false);
    }
    if (isKept) {
        // From here on it is another run than the one that went on from here before.
        _snapshots.DropFrom(_stop.position);
        _changes.push_back(_stop.position);
        _shown = _stop.printed;
        _logged.clear();
    }
    _run.Send({{"points", _GetPoints()}, {"go", std::move(go)}, {"keep", isKept}});
}

void nxDebugSession::_Resume(nxDebugSnapshots::Snapshot& snapshot, Json message, bool isScout)
{
    auto [ours, its] = nxDebugChannel::MakePair();
    _run = std::move(ours);
    _process = 0;
    message["points"] = _GetPoints();
    if (!its.IsOpen() || !snapshot.channel.Send({{"scout", isScout}}, its.Get())) return _OnDeath();
    its.Close();
    _run.Send(message);
}

void nxDebugSession::_GoBack(bool wantsPoints)
{
    _search = {wantsPoints, _stop.position, false, _snapshots.CountUpTo(_stop.position), !wantsPoints};
    if (_snapshots.Find(_stop.position) != nullptr) --_search.snapshot;
    _state = State::Seeking;
}

// From the copy before that of the last look, up to there; from none the way ends where the run began. To
// look at each line takes several times as long as to run it, and the line before is mostly in the same step
// or in one of the last, so only these are looked at first.
void nxDebugSession::_Scout()
{
    constexpr unsigned long long near = 16;
    _Kill();
    if (_search.snapshot == 0) {
        const Json reason = {{"reason", "entry"}, {"description", "the run begins"}};
        return _snapshots.GetCount() == 0 ? _OnDeath() : _GoTo(_snapshots.Get(0).position, reason);
    }
    --_search.snapshot;
    const unsigned long long last = _search.until.step;
    _Resume(_snapshots.Get(_search.snapshot),
            {{"go",
              {{"mode", "scout"},
               {"target", _search.until.GetAsJson()},
               {"isInclusive", _search.isInclusive},
               {"wantsPoints", _search.wantsPoints},
               {"first", _search.isNear ? last - std::min(last, near) : 0},
               {"call", _stop.call},
               {"depth", _stop.depth}}}},
            true);
}

void nxDebugSession::_OnFound(const Json& message)
{
    if (!message.at("found").is_null()) {
        _Kill();
        const auto position = nxDebugPosition::Get(message.at("found"));
        const Json step = {{"reason", "step"}};
        return _GoTo(position, message.at("reason").is_null() ? step : message.at("reason"));
    }
    if (std::exchange(_search.isNear, false)) {
        ++_search.snapshot;
    } else {
        _search.until = _snapshots.Get(_search.snapshot).position;
        _search.isInclusive = true;
    }
    _Scout();
}

void nxDebugSession::_GoTo(const nxDebugPosition& position, const Json& reason)
{
    _ForgetChangesAfter(position);
    _state = State::Seeking;
    const std::size_t count = _snapshots.CountUpTo(position);
    if (count == 0) return _OnDeath();
    nxDebugSnapshots::Snapshot& snapshot = _snapshots.Get(count - 1);
    if (snapshot.position == position) return _Resume(snapshot, {{"tell", reason}}, false);
    _Resume(snapshot, {{"go", {{"mode", "to"}, {"target", position.GetAsJson()}, {"reason", reason}}}},
            false);
}

// What a person changed after that position has not happened any more.
void nxDebugSession::_ForgetChangesAfter(const nxDebugPosition& position)
{
    while (!_changes.empty() && _changes.back() > position) {
        _snapshots.DropFrom(_changes.back());
        _changes.pop_back();
        _isNewHistory = true;
    }
}

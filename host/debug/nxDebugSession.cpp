#include "host/debug/nxDebugSession.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <stdexcept>

namespace {

using Json = nlohmann::json;

constexpr std::chrono::seconds Patience(5);  // with what a person asks of a script
constexpr int ThreadId = 1;

// They look into the run; the first ones are computed in the script's own process for good.
constexpr std::string_view Changes[] = {"setVariable", "setExpression"};
constexpr std::string_view Looks[] = {"stackTrace", "scopes",      "variables",
                                      "evaluate",   "setVariable", "setExpression"};

const char* const NotStopped = "the run is not stopped";

}  // namespace

const nxDebugSession::Request nxDebugSession::Requests[] = {
    {"initialize", &nxDebugSession::_Initialize},
    {"launch", &nxDebugSession::_Launch},
    {"attach", &nxDebugSession::_Launch},
    {"configurationDone", &nxDebugSession::_ConfigurationDone},
    {"setBreakpoints", &nxDebugSession::_SetLines},
    {"setFunctionBreakpoints", &nxDebugSession::_SetFunctions},
    {"setEventBreakpoints", &nxDebugSession::_SetEvents},
    {"setExceptionBreakpoints", &nxDebugSession::_SetFilters},
    {"breakpointLocations", &nxDebugSession::_GetLocations},
    {"loadedSources", &nxDebugSession::_GetSources},
    {"threads", &nxDebugSession::_GetThreads},
    {"exceptionInfo", &nxDebugSession::_GetException},
    {"continue", &nxDebugSession::_Continue},
    {"next", &nxDebugSession::_Next},
    {"stepIn", &nxDebugSession::_StepIn},
    {"stepOut", &nxDebugSession::_StepOut},
    {"stepBack", &nxDebugSession::_StepBack},
    {"reverseContinue", &nxDebugSession::_ReverseContinue},
    {"pause", &nxDebugSession::_Pause},
    {"terminate", &nxDebugSession::_Terminate},
    {"disconnect", &nxDebugSession::_Disconnect}};

bool nxDebugSession::Run()
{
    while (!_isLeaving && !_editor.IsOver()) {
        pollfd ends[] = {{_editor.GetInput(), POLLIN, 0}, {_run.Get(), POLLIN, 0}};
        constexpr int often = 250;  // milliseconds
        if (poll(ends, 2, _asked.empty() ? -1 : often) < 0) continue;
        if (ends[1].revents != 0) _TakeFromRun();
        if (ends[0].revents != 0) _editor.Read();
        while (const auto request = _isLeaving ? std::nullopt : _editor.Next())
            _Take(*request);
        _GiveUpWaiting();
    }
    _Kill();
    _snapshots.Clear();
    if (_editor.GetFailure().empty()) return true;
    _Print("important", _editor.GetFailure() + "\n");
    return false;
}

void nxDebugSession::_Take(const Json& request)
{
    if (request.is_discarded()) return _Refuse(Json::object(), "the message is no JSON object, or too deep");
    try {
        if (request.at("type") != "request") return;
        const std::string name = request.at("command").get<std::string>();
        const Json arguments = request.value("arguments", Json::object());
        if (!arguments.is_object()) throw std::runtime_error("arguments are no object");
        if (std::ranges::find(Looks, name) != std::end(Looks)) return _Ask(request);
        const auto* const row = std::ranges::find(Requests, name, &Request::name);
        if (row == std::end(Requests)) throw std::runtime_error("no request " + name + " is known");
        const State before = _state;
        _Respond(request, (this->*row->handler)(arguments));
        if (before == State::New && _state == State::Launched) _SendEvent("initialized", Json::object());
        if (before == State::Launched && _state == State::Running) _Start();
        if (before == State::Stopped && _state == State::Seeking) _Scout();
    } catch (const Json::exception& exception) {
        _Refuse(request,
                std::string("the request has not the form that it should have: ") + exception.what());
    } catch (const std::exception& exception) {
        _Refuse(request, exception.what());
    }
}

namespace {

Json MakeResponse(const Json& request, bool isFine)
{
    const auto seq = request.find("seq");
    const auto command = request.find("command");
    return {{"type", "response"},
            {"request_seq", seq != request.end() && seq->is_number_integer() ? *seq : Json(0)},
            {"command", command != request.end() && command->is_string() ? *command : Json("")},
            {"success", isFine}};
}

}  // namespace

void nxDebugSession::_Respond(const Json& request, const Json& body)
{
    Json response = MakeResponse(request, true);
    if (!body.empty()) response["body"] = body;
    _editor.Send(std::move(response));
}

void nxDebugSession::_Refuse(const Json& request, const std::string& message)
{
    Json response = MakeResponse(request, false);
    response["message"] = message;
    response["body"] = {{"error", {{"id", 1}, {"format", message}, {"showUser", true}}}};
    _editor.Send(std::move(response));
}

void nxDebugSession::_SendEvent(const char* name, const Json& body)
{
    _editor.Send({{"type", "event"}, {"event", name}, {"body", body}});
}

void nxDebugSession::_Print(const std::string& category, const std::string& text)
{
    _SendEvent("output", {{"category", category}, {"output", text}});
}

void nxDebugSession::_Require(bool isFine, const char* otherwise) const
{
    if (!isFine) throw std::runtime_error(otherwise);
}

Json nxDebugSession::_Initialize(const Json&)
{
    Json body = {{"exceptionBreakpointFilters",
                  {{{"filter", "failed"},
                    {"label", "A callback fails"},
                    {"description", "Stops where a callback fails, before its stack is gone"},
                    {"default", true}}}}};
    for (const char* const ability :
         {"supportsConfigurationDoneRequest", "supportsFunctionBreakpoints", "supportsConditionalBreakpoints",
          "supportsHitConditionalBreakpoints", "supportsEvaluateForHovers", "supportsStepBack",
          "supportsSetVariable", "supportsSetExpression", "supportsLogPoints", "supportsTerminateRequest",
          "supportTerminateDebuggee", "supportsExceptionInfoRequest", "supportsBreakpointLocationsRequest",
          "supportsLoadedSourcesRequest", "supportsDelayedStackTraceLoading"})
        body[ability] = true;
    return body;
}

Json nxDebugSession::_Launch(const Json& arguments)
{
    _Require(_state == State::New, "a run has been launched already");
    nxLaunch launch = nxLaunch::Read(arguments);
    std::error_code error;
    if (!launch.folder.empty()) std::filesystem::current_path(launch.folder, error);
    if (error) throw std::runtime_error(launch.folder + ": " + error.message());
    auto made = _makeRun(launch.arguments);
    if (const auto* const fault = std::get_if<std::string>(&made)) throw std::runtime_error(*fault);
    _options = std::get<nxRunOptions>(std::move(made));
    if (const auto fault = _sources.Read(_options)) throw std::runtime_error(*fault);
    _Require(_page != nullptr, "there is no memory to share");
    const Json points = _definitions.SetEvents({{"breakpoints", launch.events}});
    for (const Json& point : points.at("breakpoints"))
        if (!point.at("verified").get<bool>())
            throw std::runtime_error(point.at("message").get<std::string>());
    _launch = std::move(launch);
    _state = State::Launched;
    return {};
}

Json nxDebugSession::_ConfigurationDone(const Json&)
{
    _Require(_state == State::Launched, "no run has been launched, or it goes already");
    _state = State::Running;
    return {};
}

Json nxDebugSession::_SetLines(const Json& arguments)
{
    _Require(_state != State::New, "no run has been launched");
    const Json body = _definitions.SetLines(arguments);
    _TellPoints();
    return body;
}

Json nxDebugSession::_SetFunctions(const Json& arguments)
{
    const Json body = _definitions.SetFunctions(arguments);
    _TellPoints();
    return body;
}

Json nxDebugSession::_SetEvents(const Json& arguments)
{
    const Json body = _definitions.SetEvents(arguments);
    _TellPoints();
    return body;
}

Json nxDebugSession::_SetFilters(const Json& arguments)
{
    const Json body = _definitions.SetFilters(arguments);
    _TellPoints();
    return body;
}

Json nxDebugSession::_GetLocations(const Json& arguments)
{
    const auto getLine = [&](const char* name) { return arguments.value(name, Json(0)).get<double>(); };
    const double first = getLine("line");
    const double last = std::max(first, getLine("endLine"));
    Json list = Json::array();
    for (const unsigned int line : _sources.GetLines(arguments.at("source").at("path").get<std::string>()))
        if (line >= first && line <= last) list.push_back({{"line", line}});
    return {{"breakpoints", list}};
}

Json nxDebugSession::_GetSources(const Json&)
{
    Json list = Json::array();
    for (const std::string& path : _sources.GetPaths())
        list.push_back({{"name", std::filesystem::path(path).filename().string()}, {"path", path}});
    return {{"sources", list}};
}

Json nxDebugSession::_GetThreads(const Json&)
{
    return {{"threads", {{{"id", ThreadId}, {"name", "the run"}}}}};
}

Json nxDebugSession::_GetException(const Json&)
{
    _Require(_state == State::Stopped && _stop.reason.value("reason", "") == "exception",
             "nothing has failed");
    return {{"exceptionId", _stop.reason.value("description", "")},
            {"description", _stop.reason.value("text", "")},
            {"breakMode", "unhandled"}};
}

Json nxDebugSession::_Continue(const Json&)
{
    _Require(_state == State::Stopped, NotStopped);
    _Go({{"mode", "continue"}});
    return {{"allThreadsContinued", true}};
}

Json nxDebugSession::_Next(const Json&)
{
    _Require(_state == State::Stopped, NotStopped);
    _Go({{"mode", "next"}});
    return {};
}

Json nxDebugSession::_StepIn(const Json&)
{
    _Require(_state == State::Stopped, NotStopped);
    _Go({{"mode", "stepIn"}});
    return {};
}

Json nxDebugSession::_StepOut(const Json&)
{
    _Require(_state == State::Stopped, NotStopped);
    _Go({{"mode", "stepOut"}});
    return {};
}

Json nxDebugSession::_StepBack(const Json&)
{
    _Require(_state == State::Stopped, NotStopped);
    _GoBack(false);
    return {};
}

Json nxDebugSession::_ReverseContinue(const Json&)
{
    _Require(_state == State::Stopped, NotStopped);
    _GoBack(true);
    return {};
}

Json nxDebugSession::_Pause(const Json&)
{
    _Require(_state == State::Running || _state == State::Seeking, "the run does not go");
    if (_state == State::Seeking) {
        _Kill();
        _GoTo(_stop.position, _stop.reason);
        return {};
    }
    _run.Send({{"pause", true}});
    _page->hasMessage = true;
    return {};
}

// As Ctrl-C ends a run: the scripts have their OnShutdown, and the summary comes.
Json nxDebugSession::_Terminate(const Json&)
{
    _Require(_state == State::Running || _state == State::Stopped, "the run does not go");
    _page->isInterrupted = true;
    _isTerminating = true;
    _TellPoints();
    if (_state == State::Stopped) _Go({{"mode", "continue"}, {"stopsAtEnd", false}});
    return {};
}

Json nxDebugSession::_Disconnect(const Json&)
{
    _isLeaving = true;
    return {};
}

// What the run's process is to answer.
void nxDebugSession::_Ask(const Json& request)
{
    if (_state != State::Stopped) throw std::runtime_error(NotStopped);
    const std::string name = request.at("command").get<std::string>();
    const Json arguments = request.value("arguments", Json::object());
    // What is typed into the console is meant; what an editor computes to show it is not.
    const bool isTyped = name == "evaluate" && arguments.value("context", "repl") == "repl";
    _isChanged = _isChanged || isTyped || std::ranges::find(Changes, name) != std::end(Changes);
    _isTouched = true;
    _asked.push_back({request, std::chrono::steady_clock::now()});
    _run.Send({{"request", name}, {"arguments", arguments}, {"answer", request.at("seq")}});
}

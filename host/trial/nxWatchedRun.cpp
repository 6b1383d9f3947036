#include "host/trial/nxWatchedRun.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <iostream>

#include "host/sandbox/nxBoundProcess.h"

namespace {

constexpr int ScriptFailed = 1;

// The failure in the first line, then the figures; with no figures the result was never told.
std::string Pack(const nxResult& result)
{
    std::string failure = result.failures.empty() ? "" : result.failures.front().text;
    return failure.substr(0, failure.find('\n')) + "\n" + nxRunFigures(result).Pack();
}

}  // namespace

nxWatchedRun::~nxWatchedRun()
{
    if (_pipe >= 0) close(_pipe);
    if (_child <= 0) return;
    // With the process in which a strict run has its scripts.
    kill(-_child, SIGKILL);
    kill(_child, SIGKILL);
    waitpid(_child, nullptr, 0);
}

std::optional<std::string> nxWatchedRun::Start()
{
    int ends[2];
    if (_shared == nullptr || pipe2(ends, O_CLOEXEC) != 0) return "no shared memory or no pipe";
    _child = nxBoundProcess::Fork();
    if (_child == 0) {
        close(ends[0]);
        _BeChild(ends[1]);
    }
    close(ends[1]);
    _pipe = ends[0];
    fcntl(_pipe, F_SETFL, O_NONBLOCK);
    if (_child < 0) return fmt::format("no process: {}", std::strerror(errno));
    setpgid(_child, _child);  // whoever of the two comes first
    return std::nullopt;
}

void nxWatchedRun::_BeChild(int pipe)
{
    // In a group of its own, so that Ctrl-C is the parent's to hear alone. It may write to the terminal.
    setpgid(0, 0);
    std::signal(SIGTTOU, SIG_IGN);
    dup2(pipe, STDERR_FILENO);
    close(pipe);
    int status = nxBoundProcess::CannotBegin;
    try {
        status = _make([this](const nxResult& result) { _shared->Set(Pack(result)); });
    } catch (const std::exception& exception) {
        std::cerr << "algoserver: " << exception.what() << "\n";
    }
    std::cout.flush();
    std::fflush(nullptr);
    _exit(status);
}

void nxWatchedRun::Interrupt() const
{
    if (_child > 0) kill(_child, SIGINT);
}

void nxWatchedRun::_HandOn()
{
    constexpr std::size_t longest = 500;
    char bytes[1 << 12];
    for (ssize_t count = 0; (count = read(_pipe, bytes, sizeof bytes)) > 0;) {
        const std::string_view text(bytes, static_cast<std::size_t>(count));
        _err << text << std::flush;
        if (_hasFirstLine) continue;
        _firstLine += text.substr(0, text.find('\n'));
        _hasFirstLine = text.find('\n') != text.npos || _firstLine.size() > longest;
    }
}

bool nxWatchedRun::Attend()
{
    int status = 0;
    const bool isAlive = waitpid(_child, &status, WNOHANG) == 0;
    _HandOn();
    if (isAlive) return true;
    _child = -1;
    _Bury(status);
    return false;
}

void nxWatchedRun::_Bury(int status)
{
    _status = WIFEXITED(status) ? WEXITSTATUS(status) : ScriptFailed;
    const std::string text = _shared->Get();
    const std::size_t end = text.find('\n');
    if (end != text.npos) {
        _failure = text.substr(0, end);
        _figures = nxRunFigures::Unpack(std::string_view(text).substr(end + 1));
    }
    if (WIFSIGNALED(status))
        _failure =
            fmt::format("the run was ended by signal {} ({})", WTERMSIG(status), strsignal(WTERMSIG(status)));
    if (_failure.empty() && _status != 0)
        _failure = _firstLine.empty() ? "the run did not go to its end" : _firstLine;
}

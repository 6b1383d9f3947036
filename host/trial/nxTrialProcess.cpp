#include "host/trial/nxTrialProcess.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <utility>

#include "base/log/nxLogManager.h"
#include "host/sandbox/nxBoundProcess.h"
#include "host/sandbox/nxRunPlace.h"
#include "host/sandbox/nxRunWarden.h"

namespace {

using nxBoundProcess::CannotBegin;  // the pipe has the reason
constexpr std::size_t LargestText = std::size_t{1} << 24;

void Send(int pipe, std::string_view text)
{
    while (!text.empty()) {
        const ssize_t count = write(pipe, text.data(), text.size());
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) _exit(CannotBegin);  // nobody waits for it any more
        text.remove_prefix(static_cast<std::size_t>(count));
    }
}

[[noreturn]] void BeChild(const nxGuardOptions& guard, int pipe, nxRunPage& page,
                          const nxTrialProcess::Work& work)
{
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        std::signal(signal, SIG_IGN);
    const int nowhere = open("/dev/null", O_RDWR | O_CLOEXEC);
    for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (nowhere >= 0) dup2(nowhere, standard);
    nxLogManager::SetLevel(nxLogLevel::Fatal);
    nxConfinement rights = nxRunGuard::GetRights(guard);
    rights.descriptors.push_back(pipe);
    if (const auto failure = rights.Apply()) {
        Send(pipe, "the sandbox cannot be set up: " + *failure);
        _exit(CannotBegin);
    }
    try {
        Send(pipe, work(page));
    } catch (const std::exception& exception) {
        Send(pipe, exception.what());
        _exit(CannotBegin);
    }
    _exit(0);
}

// False: the other end is closed, or sends without end.
bool Drain(int pipe, std::string& text)
{
    char bytes[1 << 14];
    for (;;) {
        const ssize_t count = read(pipe, bytes, sizeof bytes);
        if (count > 0 && text.size() < LargestText)
            text.append(bytes, static_cast<std::size_t>(count));
        else if (count >= 0 || (errno != EINTR && errno != EAGAIN))
            return false;
        else if (errno == EAGAIN)
            return true;
    }
}

// Until the child's end, of which it gives the status. Empty, or why it was ended before.
std::string Watch(pid_t child, int pipe, nxRunWarden& warden, const nxGuardOptions& guard,
                  std::chrono::nanoseconds limit, nxRunPage& page, std::string& text, int& status)
{
    constexpr int interval = 50;  // milliseconds
    const auto end = std::chrono::steady_clock::now() + limit;
    while (Drain(pipe, text)) {
        const bool isInterrupted = guard.interrupted != nullptr && guard.interrupted->load();
        if (isInterrupted || std::chrono::steady_clock::now() >= end) {
            const nxRunPlace place(page.pulse, guard.jobs, guard.modules);
            kill(child, SIGKILL);
            waitpid(child, &status, 0);
            if (isInterrupted) return "interrupted";
            return fmt::format("no end after {:.3g} s{}{}", std::chrono::duration<double>(limit).count(),
                               place.callback.empty() ? "" : "; it was in ", place.callback);
        }
        if (!warden.Judge(child, false)) break;
        pollfd file{pipe, POLLIN, 0};
        poll(&file, 1, interval);
    }
    // It has come to its end, or wants it to look so.
    if (text.size() >= LargestText) kill(child, SIGKILL);
    waitpid(child, &status, 0);
    return {};
}

}  // namespace

nxTrialProcess::Outcome nxTrialProcess::Do(const nxGuardOptions& guard, std::chrono::nanoseconds limit,
                                           const Work& work)
{
    const nxRunPage::Pointer page = nxRunPage::Make();
    int ends[2];
    if (page == nullptr || pipe2(ends, O_CLOEXEC) != 0) return {{}, "no shared memory or no pipe"};
    const pid_t child = nxBoundProcess::Fork();
    if (child == 0) BeChild(guard, ends[1], *page, work);
    close(ends[1]);
    Outcome outcome;
    int status = 0;
    if (child < 0) {
        outcome.death = std::string("no process: ") + std::strerror(errno);
    } else {
        fcntl(ends[0], F_SETFL, O_NONBLOCK);
        nxRunWarden warden(*page, guard.callbackLimit);
        outcome.death = Watch(child, ends[0], warden, guard, limit, *page, outcome.text, status);
        if (outcome.death.empty()) outcome.death = warden.DescribeEnd(status, guard.jobs, guard.modules);
        if (WIFEXITED(status) && WEXITSTATUS(status) != 0) outcome.death = std::exchange(outcome.text, "");
    }
    close(ends[0]);
    return outcome;
}

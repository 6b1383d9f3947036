#include "host/sweep/nxSweepWorker.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <deque>

#include "base/log/nxLogManager.h"
#include "base/values/nxTextStream.h"
#include "host/report/nxNowhere.h"
#include "host/run/nxRunBatch.h"
#include "host/run/nxRunSandbox.h"
#include "host/sandbox/nxBoundProcess.h"

namespace {

using nxBoundProcess::CannotBegin;  // its status; the pipe has the reason
// Each message: its size and the index of its run, then the outcome. A reason has the index below.
constexpr unsigned long long Reason = ~0ull;
constexpr std::size_t LargestMessage = std::size_t{1} << 24;

struct Head
{
    unsigned long long size, index;
};

void Send(int pipe, unsigned long long index, const std::string& text)
{
    const Head head{text.size(), index};
    std::string bytes(reinterpret_cast<const char*>(&head), sizeof head);
    bytes += text;
    for (std::size_t sent = 0; sent < bytes.size();) {
        const ssize_t count = write(pipe, bytes.data() + sent, bytes.size() - sent);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) _exit(CannotBegin);  // nobody waits for it any more
        sent += static_cast<std::size_t>(count);
    }
}

// What scripts print, and what the library says, is of no use in thousands of runs.
void BeSilent()
{
    const int nowhere = open("/dev/null", O_RDWR | O_CLOEXEC);
    for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (nowhere >= 0) dup2(nowhere, standard);
    nxLogManager::SetLevel(nxLogLevel::Fatal);
}

nxConfinement GetRights(const std::vector<nxRunOptions>& runs, int pipe)
{
    nxGuardOptions guard = nxRunSandbox::GetGuardOptions(runs.front());
    guard.memory *= runs.size();
    for (const nxRunOptions& run : runs)
        guard.jobs.insert(guard.jobs.end(), run.jobs.begin(), run.jobs.end());
    nxConfinement rights = nxRunGuard::GetRights(guard);
    rights.directories.clear();
    rights.descriptors.push_back(pipe);
    return rights;
}

}  // namespace

nxSweepWorker::nxSweepWorker(std::vector<nxRunOptions> runs, const nxWorkerOptions& options)
    : _runs(std::move(runs)),
      _options(options),
      _page(nxRunPage::Make()),
      _warden(*_page, options.callbackLimit),
      _isDone(_runs.size())
{
}

nxSweepWorker::~nxSweepWorker()
{
    if (_pipe >= 0) close(_pipe);
    if (_child <= 0) return;
    kill(_child, SIGKILL);
    waitpid(_child, nullptr, 0);
}

std::optional<std::string> nxSweepWorker::Start()
{
    int ends[2];
    if (_page == nullptr || pipe2(ends, O_CLOEXEC) != 0) return "no shared memory or no pipe";
    _child = nxBoundProcess::Fork();
    if (_child == 0) {
        close(ends[0]);
        _BeChild(ends[1]);
    }
    close(ends[1]);
    _pipe = ends[0];
    fcntl(_pipe, F_SETFL, O_NONBLOCK);
    if (_child < 0) return fmt::format("no process: {}", std::strerror(errno));
    return std::nullopt;
}

void nxSweepWorker::_BeChild(int pipe)
{
    // They are the parent's to hear.
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        std::signal(signal, SIG_IGN);
    BeSilent();
    if (_options.isStrict)
        if (const auto failure = GetRights(_runs, pipe).Apply()) {
            Send(pipe, Reason, *failure);
            _exit(CannotBegin);
        }
    try {
        _RunAll(pipe);
    } catch (const std::exception& exception) {
        Send(pipe, Reason, exception.what());
        _exit(CannotBegin);
    }
    _exit(0);
}

void nxSweepWorker::_RunAll(int pipe)
{
    nxNowhere nowhere;
    std::ostream out(&nowhere);
    std::deque<nxTextStream> errors(_runs.size());
    nxRunBatch batch;
    for (std::size_t i = 0; i < _runs.size(); ++i) {
        nxRunOptions options = _runs[i];
        nxRunSandbox::Share(options, *_page);
        if (!_options.isStrict) {
            options.profile = nxScriptProfile::Base;
            options.limits = {};
        }
        options.recordBuffer = nullptr;
        batch.Add(std::move(options), out, errors[i]);
    }
    batch.Run([this](std::size_t index) { _page->turn = static_cast<unsigned int>(index); },
              [&](const nxRunBatch::End& end) {
                  auto outcome = nxSweepOutcome::Of(end.run, _options.currency, errors[end.index].str());
                  outcome.seconds = end.seconds;
                  rusage usage{};
                  getrusage(RUSAGE_SELF, &usage);
                  outcome.memory = static_cast<unsigned long long>(usage.ru_maxrss) * 1024 / _runs.size();
                  Send(pipe, end.index, outcome.Pack());
              });
}

// False: the other end is closed.
bool nxSweepWorker::_Drain()
{
    char bytes[1 << 16];
    for (;;) {
        const ssize_t count = read(_pipe, bytes, sizeof bytes);
        if (count > 0)
            _received.append(bytes, static_cast<std::size_t>(count));
        else if (count == 0 || (errno != EINTR && errno != EAGAIN))
            return false;
        else if (errno == EAGAIN)
            return true;
    }
}

// False: what came is no message of ours.
bool nxSweepWorker::_TakeMessages(const Take& take)
{
    std::size_t taken = 0;
    Head head{};
    while (_received.size() - taken >= sizeof head) {
        std::memcpy(&head, _received.data() + taken, sizeof head);
        if (head.size > LargestMessage) return false;
        if (_received.size() - taken - sizeof head < head.size) break;
        const std::string_view text(_received.data() + taken + sizeof head, head.size);
        taken += sizeof head + head.size;
        if (head.index == Reason) {
            _fault = text;
            continue;
        }
        auto outcome = nxSweepOutcome::Unpack(text);
        if (!outcome || head.index >= _runs.size() || _isDone[head.index]) return false;
        _isDone[head.index] = true;
        take(head.index, std::move(*outcome));
    }
    _received.erase(0, taken);
    return true;
}

bool nxSweepWorker::Attend(const Take& take)
{
    const bool isOpen = _Drain();
    int status = 0;
    // It has come to its end, or a script that broke out wants it to look so.
    if (!isOpen) kill(_child, SIGKILL);
    bool isAlive = waitpid(_child, &status, isOpen ? WNOHANG : 0) == 0;
    if (isAlive && !_warden.Judge(_child, false)) {
        waitpid(_child, &status, 0);
        isAlive = false;
    }
    if (!isAlive) {
        _child = -1;
        static_cast<void>(_Drain());
    }
    if (!_TakeMessages(take)) {
        if (isAlive) kill(std::exchange(_child, -1), SIGKILL);
        _fault = "a worker sent what is no result";
        return false;
    }
    if (!isAlive) _Bury(status, take);
    return isAlive;
}

void nxSweepWorker::_Bury(int status, const Take& take)
{
    const std::size_t turn = _page->turn;
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return;
    if (WIFEXITED(status) && _fault.empty())
        _fault = fmt::format("a worker ended with status {}", WEXITSTATUS(status));
    if (WIFEXITED(status) || turn >= _runs.size() || _isDone[turn]) return;
    const std::string death = _warden.DescribeEnd(status, _runs[turn].jobs, _runs[turn].modules);
    _wasShortOfMemory = WTERMSIG(status) == SIGKILL && !_warden.HasKilled();
    _isDone[turn] = true;
    nxSweepOutcome outcome;
    outcome.failure = death;
    outcome.end = death;
    take(turn, std::move(outcome));
}

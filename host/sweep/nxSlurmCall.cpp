#include "host/sweep/nxSlurmCall.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>

namespace {

// What a child is started with. Its signals are as by default: this process may ignore some, which a child
// would inherit.
class Start
{
public:
    Start()
    {
        posix_spawn_file_actions_init(&_actions);
        posix_spawnattr_init(&_attributes);
        sigset_t defaults;
        sigemptyset(&defaults);
        for (const int signal : {SIGPIPE, SIGXFSZ, SIGINT})
            sigaddset(&defaults, signal);
        posix_spawnattr_setsigdefault(&_attributes, &defaults);
        posix_spawnattr_setflags(&_attributes, POSIX_SPAWN_SETSIGDEF);
    }
    ~Start()
    {
        posix_spawnattr_destroy(&_attributes);
        posix_spawn_file_actions_destroy(&_actions);
    }
    Start(const Start&) = delete;
    Start& operator=(const Start&) = delete;

    void Redirect(int from, int to) { posix_spawn_file_actions_adddup2(&_actions, to, from); }
    // 0, or what errno tells.
    int Spawn(const std::vector<std::string>& arguments, pid_t& child) const
    {
        std::vector<char*> pointers;
        for (const std::string& argument : arguments)
            pointers.push_back(const_cast<char*>(argument.c_str()));
        pointers.push_back(nullptr);
        return posix_spawnp(&child, pointers.front(), &_actions, &_attributes, pointers.data(), environ);
    }

private:
    posix_spawn_file_actions_t _actions{};
    posix_spawnattr_t _attributes{};
};

std::string TellStart(const std::string& program, int error)
{
    if (error != ENOENT) return fmt::format("{} cannot be started: {}", program, std::strerror(error));
    return fmt::format(
        "there is no {} in PATH; do this on a machine from which jobs of the cluster are submitted, which "
        "has the "
        "commands of Slurm (on Debian the package slurm-client)",
        program);
}

int WaitFor(pid_t child)
{
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

// Both pipes at once, since the program may fill either while we read the other.
void ReadAll(std::array<pollfd, 2> pipes, std::array<std::string, 2>& texts)
{
    char buffer[1 << 14];
    while (pipes[0].fd >= 0 || pipes[1].fd >= 0) {
        if (poll(pipes.data(), pipes.size(), -1) < 0) continue;
        for (std::size_t i = 0; i < pipes.size(); ++i) {
            if (pipes[i].fd < 0 || pipes[i].revents == 0) continue;
            const ssize_t size = read(pipes[i].fd, buffer, sizeof buffer);
            if (size > 0) {
                texts[i].append(buffer, static_cast<std::size_t>(size));
            } else if (size == 0 || errno != EINTR) {
                close(pipes[i].fd);
                pipes[i].fd = -1;
            }
        }
    }
}

void Trim(std::string& text)
{
    while (!text.empty() && text.back() == '\n')
        text.pop_back();
}

}  // namespace

std::optional<std::string> nxSlurmCall::Run(const std::vector<std::string>& arguments, std::string& output)
{
    int out[2], err[2];
    if (pipe2(out, O_CLOEXEC) != 0) return std::string("no pipe: ") + std::strerror(errno);
    if (pipe2(err, O_CLOEXEC) != 0) {
        close(out[0]);
        close(out[1]);
        return std::string("no pipe: ") + std::strerror(errno);
    }
    Start start;
    start.Redirect(STDOUT_FILENO, out[1]);
    start.Redirect(STDERR_FILENO, err[1]);
    pid_t child = 0;
    const int error = start.Spawn(arguments, child);
    close(out[1]);
    close(err[1]);
    std::array<std::string, 2> texts;
    ReadAll({pollfd{out[0], POLLIN, 0}, pollfd{err[0], POLLIN, 0}}, texts);
    if (error != 0) return TellStart(arguments.front(), error);
    const int status = WaitFor(child);
    output = std::move(texts[0]);
    Trim(output);
    Trim(texts[1]);
    if (status == 0) return std::nullopt;
    return fmt::format("{} refuses: {}", arguments.front(),
                       texts[1].empty() ? fmt::format("exit status {}", status) : texts[1]);
}

std::optional<std::string> nxSlurmCall::RunHere(const std::vector<std::string>& arguments, int& status)
{
    // A Ctrl-C reaches the child, too, which ends properly; its status is then waited for.
    const auto handler = std::signal(SIGINT, SIG_IGN);
    pid_t child = 0;
    const int error = Start().Spawn(arguments, child);
    if (error == 0) status = WaitFor(child);
    std::signal(SIGINT, handler);
    if (error == 0) return std::nullopt;
    return fmt::format("{} cannot be started: {}", arguments.front(), std::strerror(error));
}

#include "host/sandbox/nxRunGuard.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <iostream>

#include "host/sandbox/nxBoundProcess.h"
#include "host/sandbox/nxLeftOutput.h"

namespace {

constexpr int Failed = 2;  // nothing was run

// What programs read without being told to: zones, and the checker's Lua files.
constexpr const char* SystemPaths[] = {"/usr/share/zoneinfo", "/etc/localtime", "/usr/share/lua",
                                       "/usr/local/share/lua"};

// That of a path which names an open descriptor, such as a shell's <(...) gives; below 0: it does not.
int FindDescriptor(const std::string& path)
{
    for (const std::string_view folder : {"/dev/fd/", "/proc/self/fd/"}) {
        int number = -1;
        const char* const end = path.data() + path.size();
        if (path.starts_with(folder) && std::from_chars(path.data() + folder.size(), end, number).ptr == end)
            return number;
    }
    return -1;
}

}  // namespace

nxRunGuard::nxRunGuard(nxGuardOptions options, std::ostream& err) : _options(std::move(options)), _err(err) {}

// A rule holds for what is there, so what the child is to write has to be. It is not emptied: that is done
// once the command can be carried out.
void nxRunGuard::_MakeFiles()
{
    std::vector<std::string> files = _options.outputs;
    files.push_back(_options.record);
    for (const std::string& path : files) {
        if (path.empty() || path == "-") continue;
        const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (file < 0) continue;  // it is there, or the child will tell why it cannot be
        close(file);
        _made.push_back(path);
    }
    if (!_options.storeDirectory.empty() && mkdir(_options.storeDirectory.c_str(), 0777) == 0)
        _made.push_back(_options.storeDirectory);
}

void nxRunGuard::_RemoveEmptyFiles() const
{
    for (const std::string& path : _made) {
        struct stat status;
        if (stat(path.c_str(), &status) != 0) continue;
        if (S_ISDIR(status.st_mode)) {
            rmdir(path.c_str());  // refuses one in which there is something
        } else if (status.st_size == 0) {
            unlink(path.c_str());
        }
    }
}

nxConfinement nxRunGuard::GetRights(const nxGuardOptions& options)
{
    nxConfinement rights;
    rights.readable = {std::begin(SystemPaths), std::end(SystemPaths)};
    for (const auto* paths : {&options.inputs, &options.modules})
        rights.readable.insert(rights.readable.end(), paths->begin(), paths->end());
    for (const nxJobOptions& job : options.jobs)
        rights.readable.push_back(job.script);
    rights.writable = options.outputs;
    rights.writable.insert(rights.writable.end(), {options.record, "/dev/null"});
    for (const auto* paths : {&rights.readable, &rights.writable})
        for (const std::string& path : *paths)
            if (const int descriptor = FindDescriptor(path); descriptor >= 0)
                rights.descriptors.push_back(descriptor);
    // Standard input and output are open already, and no file of that name is meant.
    for (auto* paths : {&rights.readable, &rights.writable})
        std::erase(*paths, "-");
    if (!options.storeDirectory.empty()) rights.directories = {options.storeDirectory};
    rights.memory = options.memory;
    // A history of bars opens the data once more.
    constexpr unsigned int timesOpen = 4;
    rights.files += timesOpen * static_cast<unsigned int>(options.inputs.size());
    return rights;
}

std::optional<int> nxRunGuard::Start()
{
    if (_page == nullptr) {
        _err << "the sandbox cannot be set up: no shared memory\n";
        return Failed;
    }
    if (!nxConfinement::HasPathRules())
        _err
            << "this kernel has no Landlock: the scripts' process is not kept from files that you can open\n";
    _MakeFiles();
    std::cout.flush();
    std::fflush(nullptr);
    _outputBegin = lseek(STDOUT_FILENO, 0, SEEK_CUR);
    const pid_t child = nxBoundProcess::Fork();
    if (child == 0) {
        _BecomeChild();
        return std::nullopt;
    }
    if (child > 0) return _Watch(child);
    _err << "the sandbox cannot be set up: no process: " << std::strerror(errno) << "\n";
    return Failed;
}

void nxRunGuard::_BecomeChild()
{
    // They are the parent's to hear, who tells by the page.
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        std::signal(signal, SIG_IGN);
    if (const auto failure = GetRights(_options).Apply()) {
        _err << "the sandbox cannot be set up: " << *failure << std::endl;
        _exit(Failed);
    }
}

int nxRunGuard::_Watch(pid_t child)
{
    constexpr int interval = 50;  // milliseconds
    pollfd ended{static_cast<int>(syscall(SYS_pidfd_open, child, 0)), POLLIN, 0};
    int status = 0;
    nxRunWarden warden(*_page, _options.callbackLimit);
    while (waitpid(child, &status, WNOHANG) == 0) {
        const bool isInterrupted = _options.interrupted != nullptr && _options.interrupted->load();
        if (!warden.Judge(child, isInterrupted)) {
            waitpid(child, &status, 0);
            break;
        }
        // A signal wakes it, and so does the child's end; where the kernel cannot tell that, it waits.
        poll(&ended, 1, interval);
    }
    if (ended.fd >= 0) close(ended.fd);
    return _Bury(status, warden.DescribeEnd(status, _options.jobs, _options.modules));
}

int nxRunGuard::_Bury(int status, const std::string& death)
{
    if (WIFEXITED(status)) {
        if (WEXITSTATUS(status) == Failed) _RemoveEmptyFiles();
        return WEXITSTATUS(status);
    }
    _TellEnd(death);
    return ScriptFailed;
}

void nxRunGuard::_TellEnd(const std::string& text)
{
    if (isatty(STDERR_FILENO) != 0) _err << "\r\033[K";  // what was left of the progress bar
    _FinishOutputs(text);
    _err << text << "\n";
    for (const std::string& path : _options.outputs)
        if (!path.empty()) _err << path << ": is not written\n";
    _err.flush();
}

void nxRunGuard::_FinishOutputs(const std::string& text)
{
    bool isTaken = _options.record == "-";
    for (const std::string& path : _options.outputs)
        isTaken = isTaken || path == "-";
    if (_page->output.isOpen)
        nxLeftOutput::Write(isTaken ? STDERR_FILENO : STDOUT_FILENO, isTaken ? -1 : _outputBegin,
                            _page->output);
    if (_options.record.empty() || !_page->record.isOpen) return;
    if (_options.record == "-") {
        nxLeftOutput::FinishRecord(STDOUT_FILENO, _outputBegin, _page->record, text);
        return;
    }
    struct stat status;
    const int file = open(_options.record.c_str(), O_RDWR | O_CLOEXEC | O_NONBLOCK);
    if (file < 0) return;
    const bool isFile = fstat(file, &status) == 0 && S_ISREG(status.st_mode);
    nxLeftOutput::FinishRecord(file, isFile ? 0 : -1, _page->record, text);
    close(file);
}

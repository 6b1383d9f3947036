#include "host/sandbox/nxConfinement.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <thread>

namespace {

int Open(const std::string& path, int flags)
{
    const int file = open(path.c_str(), flags, 0600);
    if (file >= 0) close(file);
    return file;
}

// Forks a process, confines it, and has it try one thing.
class nxConfinement_test : public testing::Test
{
protected:
    nxConfinement_test()
    {
        std::filesystem::create_directories(_folder + "/store");
        for (const char* name : {"/input", "/output", "/other"})
            std::ofstream(_folder + name) << "x";
        _rights.readable = {_folder + "/input"};
        _rights.writable = {_folder + "/output"};
        _rights.directories = {_folder + "/store"};
    }
    ~nxConfinement_test() override { std::filesystem::remove_all(_folder); }

    bool Can(const std::function<bool()>& attempt) const
    {
        const pid_t child = fork();
        if (child == 0) _exit(_rights.Apply() ? 2 : attempt() ? 0 : 1);
        int status = 0;
        waitpid(child, &status, 0);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) != 2) << status;
        return WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }

    const std::string _folder = testing::TempDir() + "nxConfinement" + std::to_string(getpid());
    nxConfinement _rights;
};

TEST_F(nxConfinement_test, LeavesWhatAReplayNeeds)
{
    EXPECT_TRUE(Can([&] { return Open(_folder + "/input", O_RDONLY) >= 0; }));
    EXPECT_TRUE(Can([&] { return Open(_folder + "/output", O_WRONLY | O_TRUNC) >= 0; }));
    EXPECT_TRUE(Can([&] {
        const std::string journal = _folder + "/store/journal";
        return Open(journal, O_RDWR | O_CREAT) >= 0 && unlink(journal.c_str()) == 0;
    }));
    EXPECT_TRUE(Can([] {
        bool hasRun = false;
        std::thread([&] { hasRun = true; }).join();
        return hasRun;
    }));
}

TEST_F(nxConfinement_test, TakesAllElse)
{
    const int inherited = open((_folder + "/other").c_str(), O_RDONLY);
    const std::pair<const char*, std::function<bool()>> attempts[] = {
        {"reads another's file", [] { return Open("/etc/passwd", O_RDONLY) >= 0; }},
        {"writes its input", [&] { return Open(_folder + "/input", O_WRONLY) >= 0; }},
        {"reads its output", [&] { return Open(_folder + "/output", O_RDONLY) >= 0; }},
        {"makes a file", [&] { return Open(_folder + "/new", O_WRONLY | O_CREAT) >= 0; }},
        {"removes a file", [&] { return unlink((_folder + "/other").c_str()) == 0; }},
        {"links out of the store",
         [&] { return symlink("/etc/passwd", (_folder + "/store/link").c_str()) == 0; }},
        {"uses a descriptor of its parent", [&] { return fcntl(inherited, F_GETFD) >= 0; }},
        {"starts a program",
         [] {
             char* const none[] = {nullptr};
             return execve("/bin/true", none, none) == 0;
         }},
        {"makes a process", [] { return fork() >= 0; }},
        {"opens a socket", [] { return socket(AF_INET, SOCK_STREAM, 0) >= 0; }},
        {"opens a local socket", [] { return socket(AF_UNIX, SOCK_DGRAM, 0) >= 0; }},
        {"is traced", [] { return ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) == 0; }},
        {"ends its parent", [] { return kill(getppid(), SIGCONT) == 0; }},
        {"has the kernel signal its parent", [] { return fcntl(STDIN_FILENO, F_SETOWN, getppid()) == 0; }},
        {"has more resources",
         [] {
             const rlimit more{RLIM_INFINITY, RLIM_INFINITY};
             return setrlimit(RLIMIT_CORE, &more) == 0;
         }},
#ifndef NX_SCRIPTS_BECOME_CODE
        {"runs data",
         [] {
             return mmap(nullptr, 4096, PROT_READ | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0) !=
                    MAP_FAILED;
         }},
#endif
    };
    for (const auto& [what, attempt] : attempts)
        EXPECT_FALSE(Can(attempt)) << what;
    close(inherited);
}

}  // namespace

#include <fcntl.h>
#include <sched.h>
#include <seccomp.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <memory>

#include "host/sandbox/nxConfinement.h"

// The system calls that are left. What is not among them fails with EPERM, as if the user had no right to it,
// so that a library that tries something it can do without goes on.

namespace {

constexpr std::uint64_t ThreadFlag = 0x00010000;  // CLONE_THREAD

constexpr int Plain[] = {
    // Memory.
    SCMP_SYS(brk), SCMP_SYS(munmap), SCMP_SYS(mremap), SCMP_SYS(madvise),
    // Threads and their waiting, signals of its own, the end.
    SCMP_SYS(futex), SCMP_SYS(set_robust_list), SCMP_SYS(rseq), SCMP_SYS(set_tid_address), SCMP_SYS(gettid),
    SCMP_SYS(getpid), SCMP_SYS(sched_yield), SCMP_SYS(sched_getaffinity), SCMP_SYS(membarrier),
    SCMP_SYS(rt_sigprocmask), SCMP_SYS(rt_sigaction), SCMP_SYS(rt_sigreturn), SCMP_SYS(sigaltstack),
    SCMP_SYS(restart_syscall), SCMP_SYS(exit), SCMP_SYS(exit_group),
    // Files: the path rules say which.
    SCMP_SYS(openat), SCMP_SYS(open), SCMP_SYS(read), SCMP_SYS(readv), SCMP_SYS(write), SCMP_SYS(writev),
    SCMP_SYS(pread64), SCMP_SYS(pwrite64), SCMP_SYS(lseek), SCMP_SYS(close), SCMP_SYS(fstat),
    SCMP_SYS(newfstatat), SCMP_SYS(stat), SCMP_SYS(lstat), SCMP_SYS(statx), SCMP_SYS(access),
    SCMP_SYS(faccessat), SCMP_SYS(faccessat2), SCMP_SYS(readlink), SCMP_SYS(readlinkat), SCMP_SYS(getcwd),
    SCMP_SYS(getdents64), SCMP_SYS(ftruncate), SCMP_SYS(fsync), SCMP_SYS(fdatasync), SCMP_SYS(unlink),
    SCMP_SYS(unlinkat), SCMP_SYS(dup), SCMP_SYS(dup2), SCMP_SYS(dup3), SCMP_SYS(poll), SCMP_SYS(ppoll),
    // Time, chance, and who it is.
    SCMP_SYS(clock_gettime), SCMP_SYS(clock_getres), SCMP_SYS(clock_nanosleep), SCMP_SYS(nanosleep),
    SCMP_SYS(gettimeofday), SCMP_SYS(time), SCMP_SYS(getrandom), SCMP_SYS(uname), SCMP_SYS(sysinfo),
    SCMP_SYS(getrusage), SCMP_SYS(getrlimit), SCMP_SYS(getuid), SCMP_SYS(geteuid), SCMP_SYS(getgid),
    SCMP_SYS(getegid), SCMP_SYS(getppid)};

// Collects the rules; the first that cannot be made is kept.
class Filter
{
public:
    Filter() : _context(seccomp_init(SCMP_ACT_ERRNO(EPERM)), seccomp_release)
    {
        if (_context == nullptr) _error = ENOMEM;
    }

    template <class... Conditions>
    void Allow(int call, Conditions... conditions)
    {
        if (_error == 0)
            _error =
                -seccomp_rule_add(_context.get(), SCMP_ACT_ALLOW, call, sizeof...(conditions), conditions...);
    }
    void Fail(int call, int error)
    {
        if (_error == 0)
            _error =
                -seccomp_rule_add(_context.get(), SCMP_ACT_ERRNO(static_cast<unsigned int>(error)), call, 0);
    }
    // 0, or an error.
    int Load()
    {
        // A tree in place of a list of comparisons, where the library can make one.
        if (_error == 0) static_cast<void>(seccomp_attr_set(_context.get(), SCMP_FLTATR_CTL_OPTIMIZE, 2));
        return _error != 0 ? _error : -seccomp_load(_context.get());
    }

private:
    std::unique_ptr<void, void (*)(scmp_filter_ctx)> _context;
    int _error = 0;
};

// Those of which it depends on an argument.
void AllowInPart(Filter& filter)
{
    const auto self = static_cast<std::uint64_t>(getpid());
    filter.Allow(SCMP_SYS(clone), SCMP_A0(SCMP_CMP_MASKED_EQ, ThreadFlag, ThreadFlag));
    // Its flags lie in memory, where no rule looks; without it the C library takes the older call.
    filter.Fail(SCMP_SYS(clone3), ENOSYS);
    filter.Allow(SCMP_SYS(tgkill), SCMP_A0(SCMP_CMP_EQ, self));
    filter.Allow(SCMP_SYS(prctl), SCMP_A0(SCMP_CMP_EQ, PR_SET_NAME));
    filter.Allow(SCMP_SYS(prlimit64), SCMP_A2(SCMP_CMP_EQ, 0));  // only asks
    for (const std::uint64_t question : {TIOCGWINSZ, TCGETS, FIONREAD})
        filter.Allow(SCMP_SYS(ioctl), SCMP_A1(SCMP_CMP_EQ, question));
    // Not those that have the kernel send signals to others.
    for (const std::uint64_t command :
         {F_DUPFD, F_DUPFD_CLOEXEC, F_GETFD, F_SETFD, F_GETFL, F_GETLK, F_SETLK, F_SETLKW})
        filter.Allow(SCMP_SYS(fcntl), SCMP_A1(SCMP_CMP_EQ, command));
#ifdef __SANITIZE_ADDRESS__
    // The sanitizers find out by one whether memory can be read.
    filter.Allow(SCMP_SYS(pipe));
    filter.Allow(SCMP_SYS(pipe2));
#endif
#ifdef NX_SCRIPTS_BECOME_CODE
    filter.Allow(SCMP_SYS(mmap));
    filter.Allow(SCMP_SYS(mprotect));
#else
    filter.Allow(SCMP_SYS(mmap), SCMP_A2(SCMP_CMP_MASKED_EQ, PROT_EXEC, 0));
    filter.Allow(SCMP_SYS(mprotect), SCMP_A2(SCMP_CMP_MASKED_EQ, PROT_EXEC, 0));
#endif
}

// A fork, which runs no other program, and messages on sockets that connect nobody else.
void AllowCopies(Filter& filter)
{
    constexpr std::uint64_t flags = CLONE_CHILD_SETTID | CLONE_CHILD_CLEARTID | SIGCHLD;
    filter.Allow(SCMP_SYS(clone), SCMP_A0(SCMP_CMP_EQ, flags));
    filter.Allow(SCMP_SYS(socketpair), SCMP_A0(SCMP_CMP_EQ, AF_UNIX));
    filter.Allow(SCMP_SYS(sendmsg));
    filter.Allow(SCMP_SYS(recvmsg));
}

}  // namespace

std::optional<std::string> nxConfinement::_LimitCalls() const
{
    Filter filter;
    for (const int call : Plain)
        filter.Allow(call);
    AllowInPart(filter);
    if (copiesItself) AllowCopies(filter);
    const int error = filter.Load();
    return error == 0 ? std::nullopt
                      : std::optional(std::string("system call filter: ") + std::strerror(error));
}

// Preloaded into a program: makes the n-th of the calls that run_faults.py names go wrong, or sends the
// process a signal there. Allocations are met by functions of their own; system calls by a filter of the
// kernel that raises SIGSYS, so that those from within the C library are met as well.
//
// NX_FAULT_CALLS  malloc, lua, or system calls of the table below, by commas
// NX_FAULT_PATH   only on files whose path ends with this text, or holds it where it ends with a slash
// NX_FAULT_AT     the call, from 1
// NX_FAULT_DO     fail (no memory), error NUMBER, short (half is written), full (the same, and from then on
// no
//                 space is left), signal NUMBER (then the call is made)
// NX_FAULT_LASTS  not only that call but all from there on
// NX_FAULT_MARK   a file that holds a byte from when it strikes: mapped from the beginning on, for the
// process
//                 may become one that opens nothing

#include <dlfcn.h>
#include <fcntl.h>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <ucontext.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
bool nxFaultStrikesLua();
}

namespace {

enum class Deed { Nothing, Fail, Error, Short, Full, Signal };

// What of a call tells the file.
enum class Names { File, Path, PathAt, SecondPath, SecondPathAt };

struct Call
{
    const char* name;
    long number;
    Names names;
};

constexpr Call Calls[] = {{"read", SYS_read, Names::File},
                          {"pread64", SYS_pread64, Names::File},
                          {"write", SYS_write, Names::File},
                          {"writev", SYS_writev, Names::File},
                          {"pwrite64", SYS_pwrite64, Names::File},
                          {"fsync", SYS_fsync, Names::File},
                          {"fdatasync", SYS_fdatasync, Names::File},
                          {"ftruncate", SYS_ftruncate, Names::File},
                          {"openat", SYS_openat, Names::PathAt},
                          {"unlink", SYS_unlink, Names::Path},
                          {"unlinkat", SYS_unlinkat, Names::PathAt},
                          {"rename", SYS_rename, Names::SecondPath},
                          {"renameat", SYS_renameat, Names::SecondPathAt},
                          {"mkdir", SYS_mkdir, Names::Path}};

// The last argument, which none of these calls has, of those that the handler makes itself.
constexpr unsigned int Ours = 0x4e58464c;

Deed deed = Deed::Nothing;
int deedNumber = 0;  // errno or signal
bool lasts = false, isOfMemory = false, isOfLua = false;
const char* path = "";
char* mark = nullptr;
long at = 0;
std::atomic<bool> isMainBegun = false;
std::atomic<long> counted = 0;

void MapMark(const char* name)
{
    const int file = open(name, O_CREAT | O_RDWR | O_CLOEXEC, 0644);
    if (file < 0 || ftruncate(file, 1) != 0) _exit(127);
    void* const mapped = mmap(nullptr, 1, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    if (mapped == MAP_FAILED) _exit(127);
    mark = static_cast<char*>(mapped);
    close(file);
}

long Make(long number, const long* arguments)
{
    return syscall(number, arguments[0], arguments[1], arguments[2], arguments[3], arguments[4], Ours);
}

// True: this is the call, or one after it.
bool Counts()
{
    const long now = ++counted;
    if (now == at && mark != nullptr) *mark = '1';
    return now == at || (now > at && lasts);
}

void SendSignal()
{
    syscall(SYS_tgkill, getpid(), gettid(), deedNumber);  // this thread takes it at once
}

bool FailsAllocation(bool isAsked)
{
    if (!isAsked || !isMainBegun) return false;
    const int kept = errno;
    const bool strikes = Counts();
    errno = kept;
    if (!strikes) return false;
    if (deed == Deed::Signal) {
        SendSignal();
        return false;
    }
    errno = ENOMEM;
    return true;
}

const Call* Find(long number)
{
    for (const Call& call : Calls)
        if (call.number == number) return &call;
    return nullptr;
}

bool IsOfFile(const Call& call, const long* arguments)
{
    if (*path == '\0') return true;
    char link[64], target[PATH_MAX] = {};
    const char* name = target;
    switch (call.names) {
        case Names::File:
            std::snprintf(link, sizeof link, "/proc/self/fd/%ld", arguments[0]);
            if (readlink(link, target, sizeof target - 1) < 0) return false;
            break;
        case Names::Path:
            name = reinterpret_cast<const char*>(arguments[0]);
            break;
        case Names::PathAt:
        case Names::SecondPath:
            name = reinterpret_cast<const char*>(arguments[1]);
            break;
        case Names::SecondPathAt:
            name = reinterpret_cast<const char*>(arguments[3]);
            break;
    }
    if (path[std::strlen(path) - 1] == '/') return std::strstr(name, path) != nullptr;
    const std::string_view whole = name;
    return whole.ends_with(path);
}

long Strike(long number, long* arguments)
{
    const bool isWrite = number == SYS_write || number == SYS_pwrite64;
    const bool isFirst = counted == at;
    if (deed == Deed::Signal) SendSignal();
    if (deed == Deed::Error) return -deedNumber;
    if ((deed == Deed::Short || deed == Deed::Full) && isWrite && isFirst && arguments[2] > 1)
        arguments[2] /= 2;
    else if (deed == Deed::Full)
        return -ENOSPC;
    const long result = Make(number, arguments);
    return result < 0 ? -errno : result;
}

void OnCall(int, siginfo_t* info, void* context)
{
    const int kept = errno;
    greg_t* const registers = static_cast<ucontext_t*>(context)->uc_mcontext.gregs;
    long arguments[] = {registers[REG_RDI], registers[REG_RSI], registers[REG_RDX], registers[REG_R10],
                        registers[REG_R8]};
    const Call* const call = Find(info->si_syscall);
    long result = 0;
    if (call != nullptr && isMainBegun && IsOfFile(*call, arguments) && Counts()) {
        result = Strike(call->number, arguments);
    } else {
        result = Make(info->si_syscall, arguments);
        if (result < 0) result = -errno;
    }
    registers[REG_RAX] = result;
    errno = kept;
}

// Of each call in the list: make it, if it is ours, else raise SIGSYS.
void InstallFilter(const char* names)
{
    sock_filter program[2 * std::size(Calls) + 8];
    unsigned short size = 0;
    const auto load = [](std::size_t offset) {
        return sock_filter BPF_STMT(BPF_LD | BPF_W | BPF_ABS, static_cast<unsigned int>(offset));
    };
    program[size++] = load(offsetof(seccomp_data, args[5]));
    program[size++] = BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, Ours, 0, 1);
    program[size++] = BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW);
    program[size++] = load(offsetof(seccomp_data, nr));
    for (const Call& call : Calls) {
        const char* const found = std::strstr(names, call.name);
        const char end = found == nullptr ? 'x' : found[std::strlen(call.name)];
        if ((end != ',' && end != '\0') || (found != names && found[-1] != ',')) continue;
        program[size++] = BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<unsigned int>(call.number), 0, 1);
        program[size++] = BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_TRAP);
    }
    program[size++] = BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW);
    struct sigaction action = {};
    action.sa_sigaction = OnCall;
    action.sa_flags = SA_SIGINFO | SA_NODEFER | SA_RESTART;
    sigaction(SIGSYS, &action, nullptr);
    const sock_fprog filter = {size, program};
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 ||
        prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) != 0) {
        std::fputs("the kernel takes no filter\n", stderr);
        _exit(77);
    }
}

void ReadDeed(const char* text)
{
    const char* const space = std::strchr(text, ' ');
    deedNumber = space == nullptr ? 0 : std::atoi(space + 1);
    deed = *text == 'e'                       ? Deed::Error
           : std::strncmp(text, "sh", 2) == 0 ? Deed::Short
           : *text == 's'                     ? Deed::Signal
                                              : Deed::Fail;
    if (std::strcmp(text, "full") == 0) deed = Deed::Full;
}

__attribute__((constructor)) void Begin()
{
    const char* const names = std::getenv("NX_FAULT_CALLS");
    const char* const number = std::getenv("NX_FAULT_AT");
    const char* const what = std::getenv("NX_FAULT_DO");
    if (names == nullptr || number == nullptr || what == nullptr) return;
    at = std::atol(number);
    ReadDeed(what);
    lasts = std::getenv("NX_FAULT_LASTS") != nullptr || deed == Deed::Full;
    if (const char* const file = std::getenv("NX_FAULT_MARK")) MapMark(file);
    if (const char* const only = std::getenv("NX_FAULT_PATH")) path = only;
    isOfMemory = std::strcmp(names, "malloc") == 0;
    isOfLua = std::strcmp(names, "lua") == 0;
    if (!isOfMemory && !isOfLua) InstallFilter(names);
}

using Main = int (*)(int, char**, char**);
Main realMain = nullptr;

int BeginMain(int argc, char** argv, char** environment)
{
    isMainBegun = true;
    return realMain(argc, argv, environment);
}

}  // namespace

extern "C" {

#ifndef NX_FAULT_KEEPS_MALLOC

void* malloc(std::size_t size)
{
    return FailsAllocation(isOfMemory) ? nullptr : __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size)
{
    return FailsAllocation(isOfMemory) ? nullptr : __libc_calloc(count, size);
}

void* realloc(void* block, std::size_t size)
{
    return FailsAllocation(isOfMemory && size != 0) ? nullptr : __libc_realloc(block, size);
}

void* aligned_alloc(std::size_t alignment, std::size_t size)
{
    return FailsAllocation(isOfMemory) ? nullptr : __libc_memalign(alignment, size);
}

int posix_memalign(void** block, std::size_t alignment, std::size_t size)
{
    if (FailsAllocation(isOfMemory)) return ENOMEM;
    *block = __libc_memalign(alignment, size);
    return *block == nullptr ? ENOMEM : 0;
}

#endif

// Of Lua's own allocator, which is asked by nxLuaFaults.cpp.
bool nxFaultStrikesLua()
{
    return FailsAllocation(isOfLua);
}

// What is counted begins with main: before it nobody could tell anything.
int __libc_start_main(Main main, int argc, char** argv, void (*init)(), void (*fini)(), void (*ending)(),
                      void* stack)
{
    realMain = main;
    using Start = int (*)(Main, int, char**, void (*)(), void (*)(), void (*)(), void*);
    const auto start = reinterpret_cast<Start>(dlsym(RTLD_NEXT, "__libc_start_main"));
    return start(BeginMain, argc, argv, init, fini, ending, stack);
}

}  // extern "C"

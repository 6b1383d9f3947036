#include "host/sandbox/nxConfinement.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "host/sandbox/nxPathRules.h"

namespace {

std::optional<std::string> Tell(const char* what)
{
    return std::string(what) + ": " + std::strerror(errno);
}

bool SetLimit(__rlimit_resource resource, rlim_t most)
{
    rlimit limit{};
    if (getrlimit(resource, &limit) != 0) return false;
    limit.rlim_cur = limit.rlim_max = std::min(limit.rlim_max, most);
    return setrlimit(resource, &limit) == 0;
}

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool IsSanitized = true;  // which takes terabytes of address space
#else
constexpr bool IsSanitized = false;
#endif

bool isConfined = false;

}  // namespace

// The leak checker stops the process from another one, which a confined process cannot make.
extern "C" int __lsan_is_turned_off();
extern "C" int __lsan_is_turned_off()
{
    return isConfined ? 1 : 0;
}

bool nxConfinement::HasPathRules()
{
    return nxPathRules::GetVersion() > 0;
}

std::optional<std::string> nxConfinement::Apply() const
{
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) return Tell("no_new_privs");
    // Neither a debugger nor another process of the user looks into it, and it leaves no core.
    if (prctl(PR_SET_DUMPABLE, 0, 0, 0, 0) != 0) return Tell("dumpable");
    _CloseOthers();
    if (auto failure = _LimitPaths()) return failure;
    if (auto failure = _LimitResources()) return failure;
    isConfined = true;
    return _LimitCalls();
}

void nxConfinement::_CloseOthers() const
{
    std::vector<int> kept = descriptors;
    std::ranges::sort(kept);
    unsigned int first = STDERR_FILENO + 1;
    for (const int descriptor : kept) {
        const auto number = static_cast<unsigned int>(descriptor);
        if (number > first) close_range(first, number - 1, 0);
        first = std::max(first, number + 1);
    }
    close_range(first, ~0u, 0);
}

std::optional<std::string> nxConfinement::_LimitResources() const
{
    if (!SetLimit(RLIMIT_CORE, 0)) return Tell("limit of cores");
    if (!SetLimit(RLIMIT_NOFILE, files)) return Tell("limit of open files");
    // No process and no thread of another user's; that of threads is left, since it counts them, too.
    if (memory != 0 && !IsSanitized && !SetLimit(RLIMIT_AS, memory)) return Tell("limit of memory");
    return std::nullopt;
}

std::optional<std::string> nxConfinement::_LimitPaths() const
{
    if (!HasPathRules()) return std::nullopt;
    nxPathRules rules;
    for (const std::string& path : readable)
        rules.Add(path, nxPathRules::Access::Read);
    for (const std::string& path : writable)
        rules.Add(path, nxPathRules::Access::Write);
    for (const std::string& path : directories)
        rules.Add(path, nxPathRules::Access::All);
    return rules.Enforce() ? std::nullopt : Tell("path rules");
}

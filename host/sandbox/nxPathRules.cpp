#include "host/sandbox/nxPathRules.h"

#include <fcntl.h>
#include <linux/landlock.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>

namespace {

// Rights that came after the first version of the interface, which headers may not know.
constexpr unsigned long long Refer = 1ull << 13;     // version 2
constexpr unsigned long long Truncate = 1ull << 14;  // version 3
constexpr unsigned long long Devices = 1ull << 15;   // version 5

constexpr unsigned long long ToRead = LANDLOCK_ACCESS_FS_READ_FILE;
constexpr unsigned long long ToReadBelow = ToRead | LANDLOCK_ACCESS_FS_READ_DIR;
constexpr unsigned long long ToWrite = LANDLOCK_ACCESS_FS_WRITE_FILE | Truncate;
constexpr unsigned long long ToUse =
    ToReadBelow | ToWrite | LANDLOCK_ACCESS_FS_MAKE_REG | LANDLOCK_ACCESS_FS_REMOVE_FILE;

// All that the kernel knows, so that what has no rule is refused.
unsigned long long GetHandled()
{
    constexpr unsigned long long first = (1ull << 13) - 1;
    const int version = nxPathRules::GetVersion();
    return first | (version >= 2 ? Refer : 0) | (version >= 3 ? Truncate : 0) | (version >= 5 ? Devices : 0);
}

}  // namespace

int nxPathRules::GetVersion()
{
    static const long version =
        syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
    return static_cast<int>(std::max(version, 0l));
}

nxPathRules::nxPathRules()
{
    landlock_ruleset_attr attributes{};
    attributes.handled_access_fs = GetHandled();
    _rules = static_cast<int>(syscall(SYS_landlock_create_ruleset, &attributes, sizeof attributes, 0));
}

nxPathRules::~nxPathRules()
{
    if (_rules >= 0) close(_rules);
}

void nxPathRules::Add(const std::string& path, Access access)
{
    const int place = open(path.c_str(), O_PATH | O_CLOEXEC);
    struct stat status;
    if (place < 0) return;
    if (fstat(place, &status) == 0) {
        landlock_path_beneath_attr rule{};
        rule.parent_fd = place;
        rule.allowed_access = access == Access::Read    ? S_ISDIR(status.st_mode) ? ToReadBelow : ToRead
                              : access == Access::Write ? ToWrite
                                                        : ToUse;
        rule.allowed_access &= GetHandled();
        // It fails for pipes and the like, which no rule is about.
        syscall(SYS_landlock_add_rule, _rules, LANDLOCK_RULE_PATH_BENEATH, &rule, 0);
    }
    close(place);
}

bool nxPathRules::Enforce() const
{
    return _rules >= 0 && syscall(SYS_landlock_restrict_self, _rules, 0) == 0;
}

#pragma once

#include <string>

// The kernel's rules (Landlock) on which paths a process may use. Rules hold for what lies at the path when
// they are made; a path that is not there gets none.
class nxPathRules
{
public:
    enum class Access { Read, Write, All };

    // 0: the kernel has none.
    static int GetVersion();

    nxPathRules();
    ~nxPathRules();
    nxPathRules(const nxPathRules&) = delete;
    nxPathRules& operator=(const nxPathRules&) = delete;

    void Add(const std::string& path, Access access);
    // For the calling thread and those that it makes: what has no rule is refused from then on. Descriptors
    // that are open stay so. False: errno tells why.
    [[nodiscard]] bool Enforce() const;

private:
    int _rules;
};

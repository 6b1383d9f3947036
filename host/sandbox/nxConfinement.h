#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

// Gives away for good what the calling process and its future threads and children may do, but for what a
// replay needs. docs/security.md, "The process", lists what is left, with reasons. Linux only.
class nxConfinement
{
public:
    // By path, of what is there already: files, or folders with all that is below them.
    std::vector<std::string> readable;
    std::vector<std::string> writable;     // files, for writing alone
    std::vector<std::string> directories;  // to read, write, make and remove files in
    std::vector<int> descriptors;          // that stay open beside 0, 1 and 2
    std::size_t memory = 0;                // bytes of address space; 0: as before
    unsigned int files = 256;              // open at one time
    bool copiesItself = false;             // may make processes like itself, and talk to them and its parent

    // Call it while the process has no second thread. Null, or what could not be done: then the process must
    // not go on.
    [[nodiscard]] std::optional<std::string> Apply() const;
    // Without it the kernel does not know which paths are whose: all that the user may open stays open to the
    // process.
    static bool HasPathRules();

private:
    void _CloseOthers() const;
    std::optional<std::string> _LimitResources() const;
    std::optional<std::string> _LimitPaths() const;
    std::optional<std::string> _LimitCalls() const;
};

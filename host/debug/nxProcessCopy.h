#pragma once

#include <sys/types.h>

// Copies of a process that runs on one thread, by fork. The system shares with a copy the place in each open
// file, so that one would read on where the other stopped; here each copy has places of its own. Static
// functions only.
class nxProcessCopy
{
public:
    enum class Writes {
        Wait,     // for later: this copy writes nothing, it may be copied again
        GoOn,     // from the place where they are, and files end there
        Nowhere,  // what the copy writes to files is lost
    };

    // As fork: 0 in the copy. A copy that cannot have its files ends at once.
    [[nodiscard]] static pid_t Make(Writes writes);
};

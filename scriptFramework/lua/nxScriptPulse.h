#pragma once

#include <atomic>

// What a script is doing just now, for whoever watches it from another thread or, in shared memory, from
// another process; and the way to stop it. The script's thread writes all but isStopWanted.
struct nxScriptPulse
{
    // Of the text that was loaded, counted from 1: where the script last called a function of Lua's libraries
    // that may run long, or was seen every so many instructions. 0: not known.
    std::atomic<unsigned int> line = 0;
    // The function of Lua's libraries that runs, as a script writes it, such as "string.find"; null: none. A
    // literal, which a process made by fork finds at the same address.
    std::atomic<const char*> function = nullptr;
    // Set by the watcher: the callback ends with an error at its next instruction.
    std::atomic<bool> isStopWanted = false;

    static_assert(std::atomic<const char*>::is_always_lock_free &&
                  std::atomic<unsigned int>::is_always_lock_free);
};

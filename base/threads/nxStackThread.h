#pragma once

#include <cstddef>
#include <functional>

// Runs a function on a thread with a stack of a given size, for what recurses deeper than the stack of the
// caller allows: the system gives a program's threads 8 MiB, or less.
class nxStackThread
{
public:
    // What a thread should have that runs scripts; see docs/embedding.md.
    static constexpr std::size_t ForScripts = std::size_t{64} << 20;

    // Returns when body has. What body throws is thrown here; std::system_error where there is no such thread
    // to be had. What belongs to a thread (nxTimeSource::Installation) body has to set up for itself. Memory
    // is taken as the stack grows into it.
    static void Run(std::size_t stackBytes, const std::function<void()>& body);
};

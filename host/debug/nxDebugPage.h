#pragma once

#include <atomic>
#include <memory>

// What the processes of a debugger share. Only one of them runs the scripts at a time.
struct nxDebugPage
{
    struct Unmapper
    {
        void operator()(nxDebugPage* page) const;
    };
    using Pointer = std::unique_ptr<nxDebugPage, Unmapper>;

    // In memory that copies of the process share; null: there is none.
    static Pointer Make();

    std::atomic<bool> hasMessage = false;     // for the process that runs the scripts
    std::atomic<bool> isInterrupted = false;  // the run is to end after the current event
};

#pragma once

#include <memory>

#include "host/report/nxOutputBuffer.h"
#include "host/sandbox/nxRunPulse.h"

// What a guarded run and the process that watches it share. The watcher believes nothing of it: a script that
// broke out could have written anything there.
struct nxRunPage
{
    struct Unmapper
    {
        void operator()(nxRunPage* page) const;
    };
    using Pointer = std::unique_ptr<nxRunPage, Unmapper>;

    // In memory that a process made by fork shares with its parent; null: there is none.
    static Pointer Make();

    nxRunPulse pulse;
    std::atomic<bool> isInterrupted = false;  // the run is to end after the current event
    std::atomic<unsigned int> turn = 0;       // of several runs, the index of the one that goes on just now
    nxOutputBuffer output, record;            // of standard output, and of the record of the run
};

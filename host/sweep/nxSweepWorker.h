#pragma once

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "host/run/nxRunOptions.h"
#include "host/sandbox/nxRunPage.h"
#include "host/sandbox/nxRunWarden.h"
#include "host/sweep/nxSweepOutcome.h"

// How the runs of a sweep are made, whichever they are.
struct nxWorkerOptions
{
    bool isStrict = true;                       // scripts with the strict profile, in a confined process
    std::chrono::nanoseconds callbackLimit{0};  // of real time; 0: any
    std::string currency;                       // whose money counts where there are several
};

// A process that makes a batch of runs and then ends. It is made by a fork, so the calling process has no
// other thread. Used by one thread.
class nxSweepWorker
{
public:
    // Runs that can share their data; at least one.
    nxSweepWorker(std::vector<nxRunOptions> runs, const nxWorkerOptions& options);
    // Kills it.
    ~nxSweepWorker();
    nxSweepWorker(const nxSweepWorker&) = delete;
    nxSweepWorker& operator=(const nxSweepWorker&) = delete;

    // Null, or why there is no process.
    [[nodiscard]] std::optional<std::string> Start();
    // What is to be polled: readable when there is something to take, or when the process has ended.
    int GetPipe() const { return _pipe; }

    // Takes what the process has sent, and sees to it that callbacks return. take(index, outcome) gets each
    // run once, by its index in the batch. Where a run has killed the process, it gets a failure; others that
    // were not done by then get nothing. False: the process is gone.
    [[nodiscard]] bool Attend(const std::function<void(std::size_t, nxSweepOutcome)>& take);
    // Once it is gone: why it could not begin; empty: it could.
    const std::string& GetFault() const { return _fault; }
    // It was killed by the system, most likely for want of memory.
    bool WasShortOfMemory() const { return _wasShortOfMemory; }

private:
    using Take = std::function<void(std::size_t, nxSweepOutcome)>;

    [[noreturn]] void _BeChild(int pipe);
    void _RunAll(int pipe);
    bool _Drain();
    bool _TakeMessages(const Take& take);
    void _Bury(int status, const Take& take);

    const std::vector<nxRunOptions> _runs;
    const nxWorkerOptions _options;
    nxRunPage::Pointer _page;
    nxRunWarden _warden;
    pid_t _child = -1;
    int _pipe = -1;
    std::string _received;  // not taken yet
    std::vector<bool> _isDone;
    std::string _fault;
    bool _wasShortOfMemory = false;
};

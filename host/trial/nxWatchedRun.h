#pragma once

#include <sys/types.h>

#include <functional>
#include <optional>
#include <ostream>
#include <string>

#include "host/results/nxResultRun.h"
#include "host/trial/nxRunFigures.h"
#include "host/trial/nxWatchedText.h"

// A run in a process of its own, which may die, hang or be ended at any time without harm to who watches it.
// Made by a fork, so the calling process has no other thread. Used by one thread.
class nxWatchedRun
{
public:
    using Tell = std::function<void(const nxResult&)>;
    // Makes the run, in the other process, and gives its exit status; `tell` takes what it comes to.
    using Make = std::function<int(const Tell& tell)>;

    // err: where the run's standard error goes on to. Both outlive it.
    nxWatchedRun(const Make& make, std::ostream& err) : _make(make), _err(err) {}
    // Kills it.
    ~nxWatchedRun();
    nxWatchedRun(const nxWatchedRun&) = delete;
    nxWatchedRun& operator=(const nxWatchedRun&) = delete;

    // Null, or why there is none.
    [[nodiscard]] std::optional<std::string> Start();
    // What is to be polled: readable when there is something to hand on, or when it has ended.
    int GetPipe() const { return _pipe; }
    // Hands on what it writes to standard error. False: it has ended.
    [[nodiscard]] bool Attend();
    // Lets it come to a proper end, as Ctrl-C does.
    void Interrupt() const;

    // Once it has ended.
    int GetStatus() const { return _status; }
    // Why it did not go its whole way, in one line; empty: it did.
    const std::string& GetFailure() const { return _failure; }
    // Null: it has come to nothing.
    const nxRunFigures* GetFigures() const { return _figures ? &*_figures : nullptr; }

private:
    [[noreturn]] void _BeChild(int pipe);
    void _HandOn();
    void _Bury(int status);

    const Make& _make;
    std::ostream& _err;
    nxWatchedText::Pointer _shared = nxWatchedText::Make();
    pid_t _child = -1;
    int _pipe = -1;
    std::string _firstLine;  // of standard error
    bool _hasFirstLine = false;
    int _status = 0;
    std::string _failure;
    std::optional<nxRunFigures> _figures;
};

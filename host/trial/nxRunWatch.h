#pragma once

#include <atomic>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "host/trial/nxPathWatch.h"
#include "host/trial/nxWatchedRun.h"

// Makes a run, and makes it again whenever one of its files has changed, until it is interrupted; after each
// it tells what came out otherwise than before. A run that goes on when a file changes is ended. Used by one
// thread of a process that has no other.
class nxRunWatch
{
public:
    struct Options
    {
        std::vector<std::string> inputs;   // as for nxPathWatch
        std::vector<std::string> outputs;  // written by the runs
        nxWatchedRun::Make make;
        const std::atomic<bool>* interrupted = nullptr;
    };

    // The streams outlive it.
    nxRunWatch(Options options, std::ostream& out, std::ostream& err);

    // Gives the exit status of the last run that came to an end; 2 where none could be made.
    [[nodiscard]] int Run();

private:
    enum class End { Done, Changed, Interrupted };

    bool _IsInterrupted() const { return _options.interrupted != nullptr && _options.interrupted->load(); }
    End _RunOnce();
    void _TellEnd(const nxWatchedRun& run);
    // Waits until there is something to look at, at most half a second.
    void _Wait(int pipe) const;
    // A change of a file, after which all has been quiet for a while: editors and imports make many.
    bool _TakeChange();

    const Options _options;
    std::ostream& _out;
    std::ostream& _err;
    nxPathWatch _paths;
    std::string _changed;  // the file whose change led to the run that is next
    unsigned long long _number = 0;
    int _status = 2;
    nxRunFigures _figures;            // of the last run that came to something
    unsigned long long _figured = 0;  // its number; 0: none has
};

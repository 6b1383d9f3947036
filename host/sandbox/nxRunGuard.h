#pragma once

#include <sys/types.h>

#include <atomic>
#include <chrono>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "host/jobs/nxJobOptions.h"
#include "host/sandbox/nxConfinement.h"
#include "host/sandbox/nxRunPage.h"
#include "host/sandbox/nxRunWarden.h"

// What a guarded command works with.
struct nxGuardOptions
{
    std::vector<nxJobOptions> jobs = {};  // as the command runs them, for messages
    std::vector<std::string> modules = {};
    std::vector<std::string> inputs = {};       // beside these; "-" is standard input
    std::string record = {};                    // of the run; empty: none, "-": standard output
    std::vector<std::string> outputs = {};      // beside it
    std::string storeDirectory = {};            // empty: none
    std::size_t memory = 0;                     // bytes of address space; 0: any
    std::chrono::nanoseconds callbackLimit{0};  // 0: none
    const std::atomic<bool>* interrupted = nullptr;
};

// Lets the rest of a command, which runs a stranger's scripts, happen in a child process that has given all
// else away (nxConfinement), while this one watches it: stops and in the end kills what does not return, and
// after a death says where the scripts were and finishes the record. For one command.
class nxRunGuard
{
public:
    // The exit status when the child did not come to its end by itself.
    static constexpr int ScriptFailed = 1;

    // err is where the end of a child is told; it outlives the guard.
    nxRunGuard(nxGuardOptions options, std::ostream& err);

    // Called before the process has a second thread. Returns in both processes: in the child nothing; in the
    // parent, after the child's end, the exit status of the command. Also where there is no child.
    [[nodiscard]] std::optional<int> Start();
    // In the child: where to tell what goes on.
    nxRunPage& GetPage() { return *_page; }
    // What the child keeps of the user's rights.
    static nxConfinement GetRights(const nxGuardOptions& options);

private:
    void _MakeFiles();
    void _RemoveEmptyFiles() const;
    void _BecomeChild();
    int _Watch(pid_t child);
    // death: how it died; empty: it came to its end by itself.
    int _Bury(int status, const std::string& death);
    void _TellEnd(const std::string& text);
    void _FinishOutputs(const std::string& text);

    const nxGuardOptions _options;
    std::ostream& _err;
    nxRunPage::Pointer _page = nxRunPage::Make();
    std::vector<std::string> _made;  // files that were not there before
    long long _outputBegin = -1;     // where standard output stood; below 0: it is no file
};

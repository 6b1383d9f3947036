#pragma once

#include <future>
#include <iosfwd>
#include <string>
#include <vector>

#include "host/check/nxScriptFinding.h"
#include "host/jobs/nxJobOptions.h"

// Looks the scripts of a run over, on a thread of its own, and tells what a person should hear of them,
// before the run or at its end. Scripts that can be read only once are passed over, and large ones, of which
// the look would take as long as a short run; so are all where luacheck is missing.
class nxScriptReview
{
public:
    nxScriptReview(const std::vector<nxJobOptions>& jobs, const std::vector<std::string>& modules);

    // Both wait for the end of the look. How much was found, the first three findings, and the command that
    // shows all; nothing where nothing was found.
    void WriteFirst(std::ostream&) const;
    // Functions that are all but a callback in full, of all else how much there is and the command.
    [[nodiscard]] std::vector<std::string> GetNotes() const;

private:
    // "2 findings in the script: COMMAND".
    std::string _Count(std::size_t count) const;

    std::string _command;
    bool _isOfOne;
    std::shared_future<std::vector<nxScriptFinding>> _findings;
};

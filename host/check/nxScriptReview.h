#pragma once

#include <future>
#include <string>
#include <vector>

#include "host/jobs/nxJobOptions.h"

// Looks the scripts of a run over while it goes, on a thread of its own, and gives what a person should hear
// of them at its end. Scripts that can be read only once are passed over, and large ones, of which the look
// would take as long as a short run; so are all where luacheck is missing.
class nxScriptReview
{
public:
    nxScriptReview(const std::vector<nxJobOptions>& jobs, const std::vector<std::string>& modules);

    // Waits for the end of the look; once. Functions that are all but a callback are told in full, of all
    // else how much there is and the command that shows it.
    [[nodiscard]] std::vector<std::string> GetNotes() { return _notes.get(); }

private:
    std::future<std::vector<std::string>> _notes;
};

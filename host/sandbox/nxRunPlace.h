#pragma once

#include <string>
#include <vector>

#include "host/jobs/nxJobOptions.h"
#include "host/sandbox/nxRunPulse.h"

// Where the scripts of a run are, as its pulse tells, in the words of a message. The pulse may be that of
// another process, which wrote what it liked.
struct nxRunPlace
{
    // "stuck.lua:12: OnPrice", with the job in front where there are several; empty: no script is called. The
    // line is left out where it is not known, or the files can be read only once.
    std::string callback;
    // "string.find"; empty: none that is known.
    std::string function;

    nxRunPlace(const nxRunPulse& pulse, const std::vector<nxJobOptions>& jobs,
               const std::vector<std::string>& modules);
};

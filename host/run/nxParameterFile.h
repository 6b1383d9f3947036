#pragma once

#include <string>
#include <vector>

#include "host/feed/nxFeedError.h"
#include "host/jobs/nxJobOptions.h"

// Reads a file of parameters, in TOML:
//
//     [parameters]            # of every job
//     threshold = 2.5         # the type follows the value: here decimal
//     size = { type = "uint", value = 5 }
//
//     [jobs.worker]           # of the job named worker, before the table above
//     product = "SIM"
//
// A float counts as its shortest text. A key of another name, a job that there is not, a value of another
// kind and one that is no text of its type are refused.
class nxParameterFile
{
public:
    // Defines them in the jobs. False: `error` tells why and where; the jobs may have got some by then.
    [[nodiscard]] static bool Read(const std::string& path, std::vector<nxJobOptions>& jobs,
                                   nxFeedError& error);
};

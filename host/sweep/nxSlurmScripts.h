#pragma once

#include <string>
#include <vector>

#include "host/sweep/nxSlurmFolder.h"
#include "host/sweep/nxSlurmWork.h"

// The batch scripts of a sweep on a cluster. Static functions only.
class nxSlurmScripts
{
public:
    // The signal by which Slurm tells a task that its time is nearly over. SIGTERM, which comes to all
    // processes of a task, means that somebody cancels it.
    static constexpr const char* TimeSignal = "--signal=B:USR1@60";

    // Makes one slice. Its argument is the first slice of the array.
    static std::string MakeTask(const nxSlurmFolder& folder, const nxSlurmWork& work);
    // Makes one file of all slices.
    static std::string MakeMerge(const nxSlurmFolder& folder, const nxSlurmWork& work);
    // As one word of a shell, whatever its characters are.
    static std::string Quote(const std::string& text);
    // As a person would type it: quoted only where it must be.
    static std::string GetCommand(const std::vector<std::string>& arguments);
};

#include "host/sweep/nxSlurmOptions.h"

#include <algorithm>
#include <cmath>
#include <utility>

std::vector<std::string> nxSlurmOptions::GetArguments() const
{
    std::vector<std::string> arguments = {"--cpus-per-task=" + std::to_string(cpusPerTask)};
    const std::pair<const char*, const std::string&> texts[] = {{"--partition=", partition},
                                                                {"--time=", time},
                                                                {"--mem=", mem},
                                                                {"--account=", account},
                                                                {"--qos=", qos}};
    for (const auto& [name, value] : texts)
        if (!value.empty()) arguments.push_back(name + value);
    arguments.insert(arguments.end(), others.begin(), others.end());
    return arguments;
}

unsigned int nxSlurmOptions::GetSlices(unsigned long long runs, double secondsPerRun) const
{
    // Short enough that a lost one costs little and the last ones do not keep the others waiting, long enough
    // that what Slurm takes to start one, some seconds, does not count.
    constexpr double secondsPerSlice = 600;
    const double most = std::min(slices > 0 ? slices : arraySize, MostSlices);
    const double wanted =
        slices > 0 ? slices
                   : std::ceil(static_cast<double>(runs) * secondsPerRun / secondsPerSlice / cpusPerTask);
    return static_cast<unsigned int>(std::max(1.0, std::min({wanted, most, static_cast<double>(runs)})));
}

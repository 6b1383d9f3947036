#include "host/run/nxRunSandbox.h"

#include "host/sandbox/nxStrictLimits.h"

namespace {

constexpr std::size_t MiB = std::size_t{1} << 20;

// Generous: it is there so that a fault cannot take the machine's memory, not to measure what a run needs.
std::size_t GetMemory(const nxRunOptions& options)
{
    constexpr std::size_t ofProgram = 8192 * MiB;
    constexpr std::size_t ofJob = 2048 * MiB;
    constexpr std::size_t ofFile = 96 * MiB;  // the stack and the heap of the thread that reads it
    return ofProgram + options.jobs.size() * (ofJob + 2 * options.memoryLimit) + options.data.size() * ofFile;
}

}  // namespace

std::string nxRunSandbox::FindObstacle(const nxRunOptions& options)
{
    return options.watchProducts ? "--watch-products opens a file anew while the scripts run, which "
                                   "--sandbox strict does not let "
                                   "their process do"
                                 : std::string();
}

nxGuardOptions nxRunSandbox::GetGuardOptions(const nxRunOptions& options)
{
    nxGuardOptions guard;
    guard.jobs = options.jobs;
    guard.modules = options.modules;
    guard.inputs = options.data;
    if (!options.productFile.empty()) guard.inputs.push_back(options.productFile);
    guard.record = options.recordFile;
    for (const std::string& file :
         {options.jsonFile, options.reportFile, options.tradesFile, options.equityFile, options.profileFile})
        if (!file.empty()) guard.outputs.push_back(file);
    guard.storeDirectory = options.storeDirectory;
    guard.memory = GetMemory(options);
    guard.callbackLimit = options.callbackLimit;
    guard.interrupted = options.interrupted;
    return guard;
}

void nxRunSandbox::Share(nxRunOptions& options, nxRunPage& page)
{
    options.isGuarded = true;
    options.profile = nxScriptProfile::Strict;
    options.limits = nxGetStrictLimits();
    options.pulse = &page.pulse;
    options.recordBuffer = &page.record;
    options.interrupted = &page.isInterrupted;
}

#include "apps/algoserver/watch.h"

#include <iostream>

#include "apps/algoserver/signals.h"
#include "host/run/nxRunFiles.h"
#include "host/trial/nxRunWatch.h"

namespace {

// Empty, or what is asked for that cannot be.
std::string FindObstacle(const nxRunOptions& options, const std::vector<std::string>& inputs)
{
    for (const std::string& path : inputs)
        if (!nxRunFiles::CanBeReadAgain(path))
            return "--watch reads everything anew for each run, and " + path + " can be read only once";
    for (const auto& [option, path] : nxRunArguments::GetOutputs(options))
        if (path == "-")
            return std::string(option) + " - is for a program that reads one run; give --watch a file";
    if (options.watchProducts)
        return "--watch-products goes on when the file of products changes, --watch begins again: give one "
               "of "
               "them";
    return {};
}

}  // namespace

int WatchRuns(const RunArguments& arguments, const std::function<int(RunArguments)>& make)
{
    const nxRunOptions& options = arguments.options;
    nxRunWatch::Options watch;
    watch.inputs = arguments.jobs.GetInputs(options);
    if (const std::string obstacle = FindObstacle(options, watch.inputs); !obstacle.empty()) {
        std::cerr << "algoserver run: " << obstacle << "\n";
        return static_cast<int>(nxRunResult::InputFailed);
    }
    for (const auto& [option, path] : nxRunArguments::GetOutputs(options))
        watch.outputs.push_back(path);
    watch.make = [&](const nxWatchedRun::Tell& tell) {
        RunArguments own = arguments;
        own.options.onResult = tell;
        return make(std::move(own));
    };
    watch.interrupted = &GetInterrupted();
    CatchSignals();
    return nxRunWatch(std::move(watch), std::cout, std::cerr).Run();
}

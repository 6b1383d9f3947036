#include "host/run/nxRunEnvelope.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <sstream>

#include "base/log/nxLogManager.h"
#include "host/jobs/nxDataStores.h"
#include "host/report/nxRunSummary.h"
#include "host/run/nxReplayServer.h"
#include "host/run/nxRunFiles.h"

namespace {

// Lua's own print writes to the process's standard output; what the library logs goes to its devices.
class Silence
{
public:
    Silence()
    {
        std::fflush(stdout);
        _kept = dup(STDOUT_FILENO);
        const int nowhere = open("/dev/null", O_WRONLY);
        if (_kept >= 0 && nowhere >= 0) dup2(nowhere, STDOUT_FILENO);
        if (nowhere >= 0) close(nowhere);
        nxLogManager::SetLevel(nxLogLevel::Fatal);
    }
    ~Silence()
    {
        nxLogManager::SetLevel(_level);
        std::fflush(stdout);
        if (_kept < 0) return;
        dup2(_kept, STDOUT_FILENO);
        close(_kept);
    }
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;

private:
    int _kept;
    const nxLogLevelEnum _level = nxLogManager::GetLevel();
};

// Why a run under another model did not go its whole way; empty when it did.
std::string FindFailure(const nxRunStatistics& statistics, nxRunResult result, const std::string& errors)
{
    for (const nxJobStatistics& job : statistics.jobs)
        if (!job.failures.empty()) return job.failures.front().what.message;
    return result == nxRunResult::Done ? std::string() : errors.substr(0, errors.find('\n'));
}

}  // namespace

std::string nxRunEnvelope::FindObstacle(const nxRunOptions& options)
{
    std::vector<std::string> files = options.data;
    files.insert(files.end(), options.modules.begin(), options.modules.end());
    for (const nxJobOptions& job : options.jobs)
        files.push_back(job.script);
    const auto found = std::ranges::find_if_not(files, nxRunFiles::CanBeReadAgain);
    return found == files.end()
               ? std::string()
               : "--envelope reads everything three times, and " + *found + " can be read only once";
}

nxRunResult nxRunEnvelope::Run(const nxRunOptions& options, std::ostream& out, std::ostream& err)
{
    const auto isInterrupted = [&] { return options.interrupted != nullptr && options.interrupted->load(); };
    const char* const name = nxGetText(options.exchange.fills);
    nxRunOptions main = options;
    const std::string stores =
        options.storeDirectory.empty() ? std::string() : nxDataStores::TakeImage(options.storeDirectory);
    main.progressLabel = fmt::format("{} (1 of 3)", name);
    nxReplayServer server(main, out, err);
    nxRunResult worst = server.Run();
    std::vector<nxRunSummary::Model> models = {
        {name, server.GetStatistics(), FindFailure(server.GetStatistics(), worst, "")}};
    std::string left;
    for (const nxFillModel model : {nxFillModel::Touch, nxFillModel::Queue, nxFillModel::Cross}) {
        if (model == options.exchange.fills) continue;
        if (worst == nxRunResult::InputFailed || isInterrupted()) {
            left += std::string(left.empty() ? "" : " and ") + nxGetText(model);
            continue;
        }
        nxRunOptions other = options;
        other.exchange.fills = model;
        other.recordFile.clear();
        if (!other.storeDirectory.empty()) other.storeImage = stores;
        other.explain.clear();
        other.getNotes = nullptr;
        other.speed = 0.0;
        other.progress = &err;
        other.progressLabel = fmt::format("{} ({} of 3)", nxGetText(model), models.size() + 1);
        std::ostringstream errors;
        std::ostream nowhere(nullptr);
        const Silence silence;
        nxReplayServer extra(other, nowhere, errors);
        const nxRunResult result = extra.Run();
        if (isInterrupted()) {
            left = nxGetText(model);
            continue;
        }
        models.push_back({nxGetText(model), extra.GetStatistics(),
                          FindFailure(extra.GetStatistics(), result, errors.str())});
        worst = result == nxRunResult::Done ? worst : std::max(worst, result);
    }
    // From the most optimistic one on, whichever the run itself was under.
    std::ranges::sort(models, {}, [](const auto& model) {
        return model.name == nxGetText(nxFillModel::Touch)   ? 0
               : model.name == nxGetText(nxFillModel::Queue) ? 1
                                                             : 2;
    });
    nxRunSummary::WriteEnvelope(out, models);
    if (!left.empty())
        out << "not run     " << left
            << (isInterrupted() ? ": interrupted\n" : ": the run itself did not go to its end\n");
    out.flush();
    return worst;
}

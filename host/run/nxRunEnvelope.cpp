#include "host/run/nxRunEnvelope.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>

#include "base/log/nxLogManager.h"
#include "base/values/nxTextStream.h"
#include "host/jobs/nxDataStores.h"
#include "host/report/nxNowhere.h"
#include "host/report/nxRunSummary.h"
#include "host/run/nxRun.h"
#include "host/run/nxRunFailure.h"
#include "host/run/nxRunFiles.h"
#include "host/run/nxRunVariant.h"

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

// The run's options for one of the other runs, which leaves nothing but its counts.
nxRunOptions MakeSilent(const nxRunOptions& options, const nxRunVariant& variant, const std::string& stores)
{
    nxRunOptions silent = options;
    variant.Apply(silent);
    for (std::string* file : {&silent.recordFile, &silent.jsonFile, &silent.reportFile, &silent.tradesFile,
                              &silent.equityFile, &silent.profileFile})
        file->clear();
    if (!silent.storeDirectory.empty()) silent.storeImage = stores;
    silent.explain.clear();
    silent.profilesMemory = false;
    silent.getNotes = nullptr;
    silent.onResult = nullptr;
    silent.speed = 0.0;
    return silent;
}

// The table's rows, for the result.
std::vector<nxResultVariant> Tell(const std::vector<nxRunSummary::Model>& models)
{
    std::vector<nxResultVariant> rows;
    for (const nxRunSummary::Model& model : models) {
        for (const nxJobStatistics& job : model.statistics.jobs) {
            std::vector<nxTradingStatistics::Money> money = job.trading.money;
            if (money.empty()) money.emplace_back();
            for (const nxTradingStatistics::Money& sum : money)
                rows.push_back(
                    {model.name, job.name, sum.currency.IsUndefined() ? "" : sum.currency.GetAsString(),
                     job.trading.orders, job.trading.fills, job.trading.volume, sum.fees.GetAsDouble(),
                     sum.profit.GetAsDouble(), sum.drawdown.GetAsDouble()});
        }
    }
    return rows;
}

nxRunSummary::Model RunSilently(const nxRunOptions& options, const std::string& name, nxRunResult& result)
{
    nxTextStream errors;
    nxNowhere nowhere;
    std::ostream out(&nowhere);
    const Silence silence;
    nxRun run(options, out, errors);
    result = run.Run();
    return {name, run.GetStatistics(), nxFindRunFailure(run.GetStatistics(), result, errors.str())};
}

}  // namespace

std::string nxRunEnvelope::FindObstacle(const nxRunOptions& options)
{
    std::vector<std::string> files = options.data;
    files.insert(files.end(), options.modules.begin(), options.modules.end());
    for (const nxJobOptions& job : options.jobs)
        files.push_back(job.script);
    const auto found = std::ranges::find_if_not(files, nxRunFiles::CanBeReadAgain);
    return found == files.end() ? std::string()
                                : "--envelope reads everything once for each of its runs, and " + *found +
                                      " can be read only once";
}

nxRunResult nxRunEnvelope::Run(const nxRunOptions& options, std::ostream& out, std::ostream& err)
{
    const auto isInterrupted = [&] { return options.interrupted != nullptr && options.interrupted->load(); };
    nxRunOptions main = options;
    const std::string stores =
        options.storeDirectory.empty() ? std::string() : nxDataStores::TakeImage(options.storeDirectory);
    main.progressLabel = "as given";
    main.isInEnvelope = true;
    nxRun run(main, out, err);
    nxRunResult worst = run.Run();
    const nxRunReach reach(run.GetStatistics());
    const std::vector<nxRunVariant> all = nxRunVariant::GetForEnvelope(options, reach);
    const std::string first = nxRunVariant::GetOwnName(options.exchange, reach);
    std::vector<nxRunSummary::Model> models = {
        {first, run.GetStatistics(), nxFindRunFailure(run.GetStatistics(), worst, "")}};
    std::vector<std::string> left;
    // Where the run was cut before its first order, nobody knows what it would have met.
    if (reach.IsEmpty() && (worst == nxRunResult::InputFailed || isInterrupted())) left = {"the others"};
    for (const nxRunVariant& variant : all) {
        if (variant.name == first) continue;
        left.push_back(variant.name);
        if (worst == nxRunResult::InputFailed || isInterrupted()) continue;
        nxRunOptions other = MakeSilent(options, variant, stores);
        other.progress = &err;
        other.progressLabel = fmt::format("{} ({} of {})", variant.name, models.size() + 1, all.size());
        nxRunResult result{};
        nxRunSummary::Model model = RunSilently(other, variant.name, result);
        if (isInterrupted()) continue;
        left.pop_back();
        models.push_back(std::move(model));
        worst = result == nxRunResult::Done ? worst : std::max(worst, result);
    }
    // In the order of the variants, whichever the run itself was under.
    std::ranges::sort(models, {}, [&](const auto& model) {
        return std::ranges::find(all, model.name, &nxRunVariant::name);
    });
    nxRunSummary::WriteEnvelope(out, models);
    if (!left.empty())
        out << "not run     " << fmt::format("{}", fmt::join(left, ", "))
            << (isInterrupted() ? ": interrupted\n" : ": the run itself did not go to its end\n");
    if (left.empty() && reach.IsEmpty()) out << "note        without orders all models come to the same\n";
    out.flush();
    return std::max(worst, run.WriteResult(Tell(models)));
}

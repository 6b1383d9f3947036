#include "host/run/nxRunEnvelope.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <streambuf>

#include "base/log/nxLogManager.h"
#include "base/values/nxTextStream.h"
#include "host/jobs/nxDataStores.h"
#include "host/report/nxRunSummary.h"
#include "host/run/nxRun.h"
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

// Takes all that is written and keeps nothing: a stream without any buffer would count as one that cannot be
// written, which ends a run.
class Nowhere : public std::streambuf
{
protected:
    int_type overflow(int_type character) override { return traits_type::not_eof(character); }
    std::streamsize xsputn(const char*, std::streamsize size) override { return size; }
};

// One run of an envelope.
struct Variant
{
    std::string name;
    nxExchangeOptions exchange;
    nxLatency feedLatency;
};

// Which markets a run sent orders to. A model that none of its orders met would change nothing in it.
struct Reach
{
    bool hasBooks = false;
    bool hasBars = false;

    explicit Reach(const nxRunStatistics& statistics)
    {
        for (const nxJobStatistics& job : statistics.jobs) {
            hasBooks = hasBooks || job.trading.orders != job.trading.barOrders;
            hasBars = hasBars || job.trading.barOrders != 0;
        }
    }
    bool IsEmpty() const { return !hasBars && !hasBooks; }
    bool IsOfBarsAlone() const { return hasBars && !hasBooks; }
};

using Variants = std::vector<Variant>;

nxExchangeOptions& Add(Variants& variants, const char* name, const nxRunOptions& own)
{
    variants.push_back({name, own.exchange, own.feedLatency});
    return variants.back().exchange;
}

// From the most optimistic fill model on; then what makes the run's own harder.
void AddBookVariants(Variants& variants, const nxRunOptions& own)
{
    std::vector<const nxFillModel*> models;
    for (const nxFillModel& model : nxFillModel::GetAll())
        models.push_back(&model);
    std::ranges::sort(models, std::ranges::greater(), &nxFillModel::rank);
    for (const nxFillModel* model : models)
        Add(variants, model->name, own).fills = model;
    nxQueueRule back;
    if (back.SetFromText("back") && back.model != own.exchange.queue.model)
        Add(variants, "back", own).queue = back;
}

// withOwn: also the run's own model.
void AddBarVariants(Variants& variants, const nxRunOptions& own, bool withOwn)
{
    for (const nxBarModel& model : nxBarModel::GetAll())
        if (withOwn || &model != own.exchange.bars.model) Add(variants, model.name, own).bars.model = &model;
    if (!own.exchange.bars.isThrough) Add(variants, "through", own).bars.isThrough = true;
}

// What the run itself is called among its variants.
const char* GetOwnName(const nxExchangeOptions& own, const Reach& reach)
{
    return reach.IsOfBarsAlone() ? own.bars.model->name : own.fills->name;
}

// The run itself, and those that can differ from it.
Variants GetVariants(const nxRunOptions& own, const Reach& reach)
{
    Variants variants;
    if (reach.hasBooks) AddBookVariants(variants, own);
    if (reach.hasBars) AddBarVariants(variants, own, !reach.hasBooks);
    if (variants.empty()) {
        Add(variants, GetOwnName(own.exchange, reach), own);
    } else if (own.exchange.request.most != 0 || own.exchange.answer.most != 0 || own.feedLatency.most != 0) {
        nxExchangeOptions& slower = Add(variants, "2x latency", own);
        slower.request = own.exchange.request.GetTwice();
        slower.answer = own.exchange.answer.GetTwice();
        variants.back().feedLatency = own.feedLatency.GetTwice();
    }
    return variants;
}

// Why a run under another model did not go its whole way; empty when it did.
std::string FindFailure(const nxRunStatistics& statistics, nxRunResult result, const std::string& errors)
{
    for (const nxJobStatistics& job : statistics.jobs)
        if (!job.failures.empty()) return job.failures.front().what.message;
    if (result == nxRunResult::Done) return {};
    return errors.empty() ? "the run did not go to its end" : errors.substr(0, errors.find('\n'));
}

// The run's options for one of the other runs, which leaves nothing but its counts.
nxRunOptions MakeSilent(const nxRunOptions& options, const Variant& variant, const std::string& stores)
{
    nxRunOptions silent = options;
    silent.exchange = variant.exchange;
    silent.feedLatency = variant.feedLatency;
    for (std::string* file :
         {&silent.recordFile, &silent.jsonFile, &silent.reportFile, &silent.tradesFile, &silent.equityFile})
        file->clear();
    if (!silent.storeDirectory.empty()) silent.storeImage = stores;
    silent.explain.clear();
    silent.getNotes = nullptr;
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
    Nowhere nowhere;
    std::ostream out(&nowhere);
    const Silence silence;
    nxRun run(options, out, errors);
    result = run.Run();
    return {name, run.GetStatistics(), FindFailure(run.GetStatistics(), result, errors.str())};
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
    const Reach reach(run.GetStatistics());
    const Variants all = GetVariants(options, reach);
    const std::string first = GetOwnName(options.exchange, reach);
    std::vector<nxRunSummary::Model> models = {
        {first, run.GetStatistics(), FindFailure(run.GetStatistics(), worst, "")}};
    std::vector<std::string> left;
    // Where the run was cut before its first order, nobody knows what it would have met.
    if (reach.IsEmpty() && (worst == nxRunResult::InputFailed || isInterrupted())) left = {"the others"};
    for (const Variant& variant : all) {
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
    std::ranges::sort(models, {},
                      [&](const auto& model) { return std::ranges::find(all, model.name, &Variant::name); });
    nxRunSummary::WriteEnvelope(out, models);
    if (!left.empty())
        out << "not run     " << fmt::format("{}", fmt::join(left, ", "))
            << (isInterrupted() ? ": interrupted\n" : ": the run itself did not go to its end\n");
    if (left.empty() && reach.IsEmpty()) out << "note        without orders all models come to the same\n";
    out.flush();
    return std::max(worst, run.WriteResult(Tell(models)));
}

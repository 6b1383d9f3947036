#include "host/report/nxResultDocument.h"

#include "host/report/nxJsonWriter.h"
#include "host/report/nxResultSections.h"
#include "host/report/nxResultText.h"
#include "host/results/nxMeasures.h"
#include "host/results/nxVerdict.h"

using namespace nxResultText;

namespace {

void WriteTexts(nxJsonWriter& json, const char* key, const std::vector<std::string>& texts)
{
    json.Key(key).BeginArray();
    for (const std::string& text : texts)
        json.Text(text);
    json.EndArray();
}

void WriteTime(nxJsonWriter& json, const char* key, const std::optional<long long>& time)
{
    json.Key(key);
    time ? json.Text(GetTime(*time)) : json.Null();
}

// hasRows: how many were taken of each, null where that is not known.
void WriteFiles(nxJsonWriter& json, const char* key, const std::vector<nxResultRun::File>& files,
                bool hasRows = false)
{
    json.Key(key).BeginArray();
    for (const nxResultRun::File& file : files) {
        json.BeginObject();
        if (!file.job.empty()) json.Key("job").Text(file.job);
        json.Key("file").Text(file.path);
        if (hasRows) {
            json.Key("rows");
            file.rows ? json.Count(*file.rows) : json.Null();
        }
        json.Key("sha256");
        file.sha256 ? json.Text(*file.sha256) : json.Null();
        json.EndObject();
    }
    json.EndArray();
}

void WriteRun(nxJsonWriter& json, const nxResultRun& run)
{
    json.Key("run").BeginObject();
    nxWriteRunFacts(json, run, true);
    WriteTime(json, "first", run.first);
    WriteTime(json, "last", run.last);
    json.Key("end").Text(run.end);
    json.Key("events").BeginObject();
    json.Key("quotes").Count(run.quotes);
    json.Key("trades").Count(run.trades);
    json.Key("depthChanges").Count(run.depthChanges);
    json.Key("bars").Count(run.bars);
    json.EndObject();
    json.Key("dataDays").Count(run.days.size());
    json.Key("daysPerYear").Number(run.GetDaysPerYear());
    json.Key("complete").Bool(run.isComplete);
    json.Key("hash");
    run.hash ? json.Text(*run.hash) : json.Null();
    WriteTexts(json, "missing", run.missing);
    WriteTexts(json, "remarks", run.remarks);
    WriteTexts(json, "notes", run.notes);
    json.EndObject();
}

}  // namespace

void nxWriteDefinitions(nxJsonWriter& json)
{
    json.BeginArray();
    for (const nxMeasure& measure : nxMeasure::GetAll()) {
        json.BeginObject();
        json.Key("name").Text(measure.name);
        json.Key("title").Text(measure.title);
        json.Key("unit").Text(measure.unit);
        json.Key("direction").Text(measure.direction);
        json.Key("group").Text(measure.group);
        json.Key("formula").Text(measure.formula);
        json.EndObject();
    }
    json.EndArray();
}

namespace {

void WriteJobs(nxJsonWriter& json, const std::vector<nxResultJob>& jobs)
{
    json.Key("jobs").BeginArray();
    for (const nxResultJob& job : jobs) {
        json.BeginObject();
        json.Key("name").Text(job.name);
        json.Key("script").Text(job.script);
        json.Key("parameters").Texts(job.parameters);
        nxWriteJobEnd(json, job);
        json.Key("outputs").Texts(job.outputs);
        WriteTexts(json, "notes", job.notes);
        json.EndObject();
    }
    json.EndArray();
}

void WriteInterval(nxJsonWriter& json, const char* key, const nxDayStatistics::Interval& interval)
{
    json.Key(key);
    if (!interval) return json.Null();
    json.BeginArray();
    json.Number(interval->first);
    json.Number(interval->second);
    json.EndArray();
}

void WriteObservations(nxJsonWriter& json, const nxResultData& data)
{
    json.Key("observations").BeginObject();
    json.Key("days").Count(data.days.size());
    json.Key("roundTrips").Count(data.trips.GetCount());
    json.Key("fills").Count(data.fills);
    json.Key("orders").Count(data.orders);
    json.Key("markouts").BeginArray();
    for (const nxMarkout& markout : data.markouts)
        json.Count(markout.fills);
    json.EndArray();
    json.EndObject();
}

void WriteResult(nxJsonWriter& json, const nxResult& result, const nxResultData& data,
                 const nxResultBudget& budget)
{
    const nxMeasureBasis basis(data, result.run);
    json.BeginObject();
    json.Key("job");
    data.job ? json.Text(result.jobs[*data.job].name) : json.Null();
    json.Key("currency").Text(nxGetCurrency(data));
    json.Key("measures").BeginObject();
    for (const nxMeasure& measure : nxMeasure::GetAll())
        json.Key(measure.name).Number(measure.compute(basis));
    json.EndObject();
    const nxVerdict verdict(basis, result);
    json.Key("intervals").BeginObject();
    WriteInterval(json, "sharpe", basis.days.GetSharpeInterval(basis.daysPerYear, result.run.seed));
    WriteInterval(json, "meanDay", verdict.GetMeanInterval());
    json.EndObject();
    WriteObservations(json, data);
    json.Key("benchmark");
    data.benchmark ? json.Text(result.products[*data.benchmark].name) : json.Null();
    WriteTexts(json, "verdict", verdict.GetSentences());
    nxWriteSummaries(json, result, basis);
    nxWriteSeries(json, result, data, budget);
    json.EndObject();
}

void WriteEnvelope(nxJsonWriter& json, const nxResult& result)
{
    json.Key("envelope");
    result.envelope ? nxWriteVariants(json, *result.envelope) : json.Null();
}

}  // namespace

void nxWriteJobEnd(nxJsonWriter& json, const nxResultJob& job)
{
    json.Key("end").Text(job.end);
    json.Key("callbacks").BeginArray();
    for (const nxResultJob::Callback& callback : job.callbacks) {
        json.BeginObject();
        json.Key("name").Text(callback.name);
        json.Key("count").Count(callback.count);
        json.Key("failures").Count(callback.failures);
        json.EndObject();
    }
    json.EndArray();
}

void nxWriteVariants(nxJsonWriter& json, const std::vector<nxResultVariant>& rows)
{
    json.BeginArray();
    for (const nxResultVariant& row : rows) {
        json.BeginObject();
        json.Key("model").Text(row.model);
        json.Key("job").Text(row.job);
        json.Key("currency").Text(row.currency);
        json.Key("orders").Count(row.orders);
        json.Key("fills").Count(row.fills);
        json.Key("volume").Count(row.volume);
        json.Key("fees").Number(row.fees);
        json.Key("profit").Number(row.profit);
        json.Key("drawdown").Number(row.drawdown);
        json.EndObject();
    }
    json.EndArray();
}

void nxResultDocument::Write(std::ostream& out, const nxResult& result)
{
    const nxResultBudget budget(result);
    nxJsonWriter json(out);
    json.BeginObject();
    json.Key("result").Count(1);
    json.Key("program").Text(result.run.program);
    WriteRun(json, result.run);
    json.Key("definitions");
    nxWriteDefinitions(json);
    WriteJobs(json, result.jobs);
    json.Key("results").BeginArray();
    for (const nxResultData& data : result.results)
        WriteResult(json, result, data, budget);
    json.EndArray();
    nxWriteMarkets(json, result, budget);
    WriteEnvelope(json, result);
    json.EndObject();
    out << "\n";
}

void nxWriteRunFacts(nxJsonWriter& json, const nxResultRun& run, bool isOver)
{
    WriteFiles(json, "scripts", run.scripts);
    WriteFiles(json, "modules", run.modules);
    WriteFiles(json, "data", run.data, isOver);
    json.Key("settings").Texts(run.settings);
    json.Key("seed").Count(run.seed);
    json.Key("capital");
    run.capital ? json.Number(*run.capital) : json.Null();
}

#include "host/run/nxResultRecord.h"

#include <cmath>

#include "base/values/nxTextStream.h"
#include "host/feed/nxFeedTime.h"
#include "host/report/nxResultSections.h"

namespace {

// A value that write(json) writes.
template <class Write>
std::string MakeJson(Write write)
{
    nxTextStream text;
    nxJsonWriter json(text);
    write(json);
    return std::move(text).str();
}

std::string MakeTexts(const std::vector<std::string>& texts)
{
    return MakeJson([&](nxJsonWriter& json) {
        json.BeginArray();
        for (const std::string& text : texts)
            json.Text(text);
        json.EndArray();
    });
}

template <class Buckets>
void WriteColumns(nxJsonWriter& json, const Buckets& buckets)
{
    json.Column("ns", buckets, [](const auto& bucket) { return bucket.time; });
    json.Column("low", buckets, [](const auto& bucket) { return bucket.low; });
    json.Column("high", buckets, [](const auto& bucket) { return bucket.high; });
    json.Column("close", buckets, [](const auto& bucket) { return bucket.close; });
}

std::string MakeDrawdowns(const nxDrawdowns& drawdowns)
{
    return MakeJson([&](nxJsonWriter& json) {
        json.BeginArray();
        for (const nxDrawdown& drawdown : drawdowns.GetDeepest()) {
            json.BeginObject();
            json.Key("from").Text(nxFeedTime::GetAsString(drawdown.from));
            json.Key("trough").Text(nxFeedTime::GetAsString(drawdown.trough));
            json.Key("to");
            drawdown.to ? json.Text(nxFeedTime::GetAsString(*drawdown.to)) : json.Null();
            json.Key("peak").Raw(drawdown.peak.GetAsText());
            json.Key("depth").Raw(drawdown.depth.GetAsText());
            json.EndObject();
        }
        json.EndArray();
    });
}

std::string MakeMarkouts(const nxResultData& data)
{
    return MakeJson([&](nxJsonWriter& json) {
        json.BeginArray();
        for (const nxMarkout& markout : data.markouts) {
            json.BeginObject();
            json.Key("sum").Raw(markout.sum.GetAsText());
            json.Key("volume").Count(markout.volume);
            json.Key("fills").Count(markout.fills);
            json.EndObject();
        }
        json.EndArray();
    });
}

std::string MakeDays(const nxResultData& data)
{
    return MakeJson([&](nxJsonWriter& json) {
        json.BeginArray();
        for (const nxResultDay& day : data.days)
            json.Raw(day.profit.GetAsText());
        json.EndArray();
    });
}

std::string MakeEquity(const nxResultData& data)
{
    const std::vector<nxEquityBucket>& equity = data.equity.Get();
    return MakeJson([&](nxJsonWriter& json) {
        json.BeginObject();
        WriteColumns(json, equity);
        json.Column("drawdown", equity, [](const nxEquityBucket& bucket) { return bucket.drawdown; });
        json.Column("exposure", equity, [](const nxEquityBucket& bucket) { return bucket.exposure; });
        json.EndObject();
    });
}

}  // namespace

nxResultCollector::Listeners nxResultRecord::MakeListeners()
{
    if (_state.options.recordFile.empty()) return {};
    nxResultCollector::Listeners listeners;
    listeners.onTrip = [this](unsigned int job, const nxRoundTrip& trip) { _WriteTrip(job, trip); };
    listeners.onDay = [this](const auto&... day) { _WriteDay(day...); };
    if (_state.options.equityStep > 0.0)
        listeners.onEquity = [this](const nxResultData& data, long long time, const nxEquityBucket& equity) {
            if (data.job) _WriteEquity(data, time, equity);
        };
    return listeners;
}

// What is asked of the jobs, or in the end what is known of them besides their own lines.
std::string nxResultRecord::_DescribeJobs(bool isEnd) const
{
    return MakeJson([&](nxJsonWriter& json) {
        json.BeginArray();
        for (const nxResultJob& job : _result.jobs) {
            json.BeginObject();
            json.Key("name").Text(job.name);
            if (isEnd) {
                nxWriteJobEnd(json, job);
                json.Key("notes").Raw(MakeTexts(job.notes));
            } else {
                json.Key("script").Text(job.script);
                json.Key("parameters").Texts(job.parameters);
            }
            json.EndObject();
        }
        json.EndArray();
    });
}

void nxResultRecord::WriteRun()
{
    const nxResultRun& run = _result.run;
    const std::string facts = MakeJson([&](nxJsonWriter& json) {
        json.BeginObject();
        nxWriteRunFacts(json, run, false);
        json.Key("hash");
        run.hash ? json.Text(*run.hash) : json.Null();
        json.EndObject();
    });
    const std::string jobs = _DescribeJobs(false);
    _output.RecordRun("run", {{"record", 2u},
                              {"program", run.program},
                              {"run", nxRunRecord::Json{facts}},
                              {"jobs", nxRunRecord::Json{jobs}}});
}

void nxResultRecord::_WriteTrip(unsigned int job, const nxRoundTrip& trip)
{
    const std::string entry = nxFeedTime::GetAsString(trip.entryTime),
                      exit = nxFeedTime::GetAsString(trip.exitTime), profit = trip.profit.GetAsText(),
                      fees = trip.fees.GetAsText(), mae = trip.mae.GetAsText(), mfe = trip.mfe.GetAsText();
    _output.RecordAt(trip.exitTime, _state.options.jobs[job].name, "trip",
                     {{"product", _result.products[trip.product].name},
                      {"side", nxGetText(trip.side)},
                      {"volume", trip.volume},
                      {"entryTime", entry},
                      {"exitTime", exit},
                      {"entryPrice", trip.entryPrice},
                      {"exitPrice", trip.exitPrice},
                      {"profit", nxRunRecord::Json{profit}},
                      {"fees", nxRunRecord::Json{fees}},
                      {"mae", nxRunRecord::Json{mae}},
                      {"mfe", nxRunRecord::Json{mfe}},
                      {"entryOrder", trip.entryOrder},
                      {"exitOrder", trip.exitOrder}});
}

void nxResultRecord::_WriteDay(const nxResultData& data, const nxResultDay& day,
                               const nxResultCollector::Prices& prices)
{
    const std::string text = MakeJson([&](nxJsonWriter& json) {
        json.BeginObject();
        for (const auto& [product, price] : prices)
            json.Raw(nxJsonWriter::GetText(_result.products[product].name) + ":" +
                     nxJsonWriter::GetNumber(price));
        json.EndObject();
    });
    const std::string date = nxFeedTime::GetDateAsString(day.day), profit = day.profit.GetAsText();
    _output.RecordNow(_state.options.jobs[*data.job].name, "day",
                      {{"day", date},
                       {"currency", nxGetCurrency(data)},
                       {"profit", nxRunRecord::Json{profit}},
                       {"drawdown", data.drawdowns.GetDepth().GetAsDouble()},
                       {"prices", nxRunRecord::Json{text}}});
}

void nxResultRecord::_WriteEquity(const nxResultData& data, long long time, const nxEquityBucket& equity)
{
    double& told = _lastEquity[{*data.job, nxGetCurrency(data)}];
    if (std::abs(equity.close - told) < _state.options.equityStep) return;
    told = equity.close;
    _output.RecordAt(time, _state.options.jobs[*data.job].name, "equity",
                     {{"currency", nxGetCurrency(data)},
                      {"profit", equity.close},
                      {"drawdown", equity.drawdown},
                      {"exposure", equity.exposure}});
}

void nxResultRecord::_WriteAccount(const nxResultData& data)
{
    const std::string profit = data.profit.GetAsText(), fees = data.fees.GetAsText(),
                      turnover = data.turnover.GetAsText(), slippage = data.slippage.GetAsText(),
                      markouts = MakeMarkouts(data), days = MakeDays(data), equity = MakeEquity(data),
                      drawdowns = MakeDrawdowns(data.drawdowns);
    const std::string closes = MakeJson([&](nxJsonWriter& json) {
        json.BeginArray();
        for (const nxResultDay& day : data.days)
            json.Number(day.benchmark);
        json.EndArray();
    });
    _output.RecordNow(data.job ? _result.jobs[*data.job].name : "", "account",
                      {{"currency", nxGetCurrency(data)},
                       {"orders", data.orders},
                       {"messages", data.messages},
                       {"fills", data.fills},
                       {"orderedVolume", data.orderedVolume},
                       {"executedVolume", data.executedVolume},
                       {"volume", data.volume},
                       {"makerVolume", data.makerVolume},
                       {"profit", nxRunRecord::Json{profit}},
                       {"fees", nxRunRecord::Json{fees}},
                       {"turnover", nxRunRecord::Json{turnover}},
                       {"slippage", nxRunRecord::Json{slippage}},
                       {"slippageVolume", data.slippageVolume},
                       {"markouts", nxRunRecord::Json{markouts}},
                       {"openTime", data.openTime},
                       {"days", nxRunRecord::Json{days}},
                       {"benchmark", data.benchmark ? _result.products[*data.benchmark].name : ""},
                       {"benchmarkPrices", nxRunRecord::Json{closes}},
                       {"drawdowns", nxRunRecord::Json{drawdowns}},
                       {"drawdownShare", data.drawdowns.GetMostOfCapital()},
                       {"equity", nxRunRecord::Json{equity}}});
}

void nxResultRecord::_WritePrices(const nxResultProduct& product)
{
    const std::string buckets = MakeJson([&](nxJsonWriter& json) {
        json.BeginObject();
        WriteColumns(json, product.prices.Get());
        json.EndObject();
    });
    _output.RecordRun("prices", {{"product", product.name}, {"prices", nxRunRecord::Json{buckets}}});
}

void nxResultRecord::_WriteEnvelope()
{
    const std::string rows = MakeJson([&](nxJsonWriter& json) { nxWriteVariants(json, *_result.envelope); });
    _output.RecordRun("envelope", {{"rows", nxRunRecord::Json{rows}}});
}

void nxResultRecord::WriteEnd()
{
    for (const nxResultData& data : _result.results)
        _WriteAccount(data);
    for (const nxResultProduct& product : _result.products)
        if (!product.prices.IsEmpty()) _WritePrices(product);
    if (_result.envelope) _WriteEnvelope();
    const nxResultRun& run = _result.run;
    const auto getTime = [](const std::optional<long long>& time) {
        return time ? nxFeedTime::GetAsString(*time) : std::string();
    };
    const std::string rows = MakeJson([&](nxJsonWriter& json) {
        json.BeginArray();
        for (const nxResultRun::File& file : run.data)
            json.Count(file.rows.value_or(0));
        json.EndArray();
    });
    std::vector<std::string> dates;
    for (const long long day : run.days)
        dates.push_back(nxFeedTime::GetDateAsString(day));
    const std::string days = MakeTexts(dates), jobs = _DescribeJobs(true), remarks = MakeTexts(run.remarks),
                      notes = MakeTexts(run.notes), first = getTime(run.first), last = getTime(run.last);
    _output.RecordRun("end", {{"end", run.end},
                              {"first", first},
                              {"last", last},
                              {"quotes", run.quotes},
                              {"trades", run.trades},
                              {"depthChanges", run.depthChanges},
                              {"bars", run.bars},
                              {"dataDays", run.days.size()},
                              {"days", nxRunRecord::Json{days}},
                              {"rows", nxRunRecord::Json{rows}},
                              {"jobs", nxRunRecord::Json{jobs}},
                              {"remarks", nxRunRecord::Json{remarks}},
                              {"notes", nxRunRecord::Json{notes}}});
}

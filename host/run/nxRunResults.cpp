#include "host/run/nxRunResults.h"

#include <fmt/format.h>

#include <cmath>
#include <sstream>
#include <string_view>

#include "host/feed/nxFeedTime.h"
#include "host/feed/nxSha256.h"
#include "host/market/nxMidPrice.h"
#include "host/report/nxResultDocument.h"
#include "host/report/nxResultPage.h"
#include "host/report/nxResultSections.h"
#include "host/report/nxResultTables.h"
#include "host/run/nxRunSettings.h"

namespace {

std::vector<nxResultRun::File> Describe(const std::vector<std::string>& paths)
{
    std::vector<nxResultRun::File> files;
    for (const std::string& path : paths)
        files.push_back({"", path, std::nullopt, nxSha256::GetOfFile(path)});
    return files;
}

}  // namespace

nxRunResults::nxRunResults(nxRunState& state, nxRunOutput& output)
    : _state(state),
      _output(output),
      _isDetailed(state.options.IsDetailWanted()),
      _collector({state.options.capital.IsValid() ? state.options.capital.GetAsDouble() : 0.0,
                  state.options.roundTrips, !state.IsAlone()},
                 _MakeListeners()),
      _rows(state.options.data.size())
{
    if (_isDetailed) _output.SetEntries(&_entries);
}

nxResultCollector::Listeners nxRunResults::_MakeListeners()
{
    if (_state.options.recordFile.empty()) return {};
    nxResultCollector::Listeners listeners;
    listeners.onTrip = [this](unsigned int job, const nxRoundTrip& trip) { _RecordTrip(job, trip); };
    listeners.onDay = [this](const auto&... day) { _RecordDay(day...); };
    if (_state.options.equityStep > 0.0)
        listeners.onEquity = [this](const nxResultData& data, long long time, const nxEquityBucket& equity) {
            if (data.job) _RecordEquity(data, time, equity);
        };
    return listeners;
}

std::optional<std::string> nxRunResults::Open()
{
    const nxRunOptions& options = _state.options;
    const struct
    {
        const std::string& path;
        nxOutputFile& file;
    } files[] = {{options.jsonFile, _json},
                 {options.reportFile, _page},
                 {options.tradesFile, _trades},
                 {options.equityFile, _equity}};
    for (const auto& [path, file] : files)
        if (!path.empty())
            if (const auto error = file.Open(path)) return error;
    if (!_isDetailed && !_output.IsRecording()) return std::nullopt;
    _MakeFacts();
    if (_output.IsRecording()) _RecordRun();
    return std::nullopt;
}

void nxRunResults::_MakeFacts()
{
    const nxRunOptions& options = _state.options;
    nxResultRun& run = _result.run;
    run.program = "algoserver " NX_VERSION;
    for (const nxJobOptions& job : options.jobs) {
        run.scripts.push_back({job.name, job.script, std::nullopt, nxSha256::GetOfFile(job.script)});
        _result.jobs.push_back({job.name, job.script, "", job.parameters.GetTexts(), {}, {}, {}});
    }
    run.modules = Describe(options.modules);
    run.data = Describe(options.data);
    run.settings = nxGetRunSettings(options);
    run.seed = options.exchange.seed;
    if (options.capital.IsValid()) run.capital = options.capital.GetAsDouble();
    _Hash();
}

// Of what the result follows from, wherever the files lie.
void nxRunResults::_Hash()
{
    nxResultRun& run = _result.run;
    std::ostringstream text;
    nxJsonWriter json(text);
    bool isKnown = true;
    json.BeginArray();
    for (const auto* files : {&run.scripts, &run.modules, &run.data})
        for (const nxResultRun::File& file : *files) {
            isKnown = isKnown && file.sha256.has_value();
            json.Text(file.job + ":" + file.sha256.value_or(""));
        }
    for (const nxResultJob& job : _result.jobs)
        json.Texts(job.parameters);
    json.Texts(run.settings);
    json.Count(run.seed);
    json.Number(run.capital.value_or(0.0));
    json.EndArray();
    if (isKnown) run.hash = nxSha256::GetOfText(text.view());
}

void nxRunResults::_RecordRun()
{
    std::ostringstream facts, jobs;
    nxJsonWriter json(facts), jobsJson(jobs);
    json.BeginObject();
    nxWriteRunFacts(json, _result.run);
    json.Key("hash");
    _result.run.hash ? json.Text(*_result.run.hash) : json.Null();
    json.EndObject();
    jobsJson.BeginArray();
    for (const nxResultJob& job : _result.jobs) {
        jobsJson.BeginObject();
        jobsJson.Key("name").Text(job.name);
        jobsJson.Key("script").Text(job.script);
        jobsJson.Key("parameters").Texts(job.parameters);
        jobsJson.EndObject();
    }
    jobsJson.EndArray();
    _output.RecordRun("run", {{"record", 2u},
                              {"program", _result.run.program},
                              {"run", nxRunRecord::Json{facts.view()}},
                              {"jobs", nxRunRecord::Json{jobs.view()}}});
}

void nxRunResults::AddProduct(const nxMarket& market)
{
    _markets.push_back(market.index);
    const nxProductDescription& terms = market.description;
    nxResultProduct& product = _result.products.emplace_back();
    product.name = market.product.GetName();
    product.currency = terms.currency.IsUndefined() ? "" : terms.currency.GetAsString();
    product.pointValue = terms.pointValue.IsValid() ? terms.pointValue.GetAsDouble() : 1.0;
    product.tickSize = market.tickSize.GetAsDouble();
}

void nxRunResults::_AddPrice(const nxMarket& market, long long time)
{
    const nxDecimal mid = nxGetMidPrice(market.GetAtVenue().GetPrice());
    if (!mid.IsValid()) return;
    if (market.index >= _prices.size()) _prices.resize(market.index + 1);
    const double price = mid.GetAsDouble();
    _prices[market.index].Add({time, price, price, price});
}

void nxRunResults::EndDay(long long day)
{
    const unsigned long long rows = _state.statistics.GetRowEventCount();
    _collector.EndDay(day, rows != _rowsBefore);
    _rowsBefore = rows;
}

void nxRunResults::_TakeStatistics(const nxRunStatistics& statistics)
{
    nxResultRun& run = _result.run;
    if (statistics.GetRowEventCount() != 0) {
        run.first = statistics.firstTime;
        run.last = statistics.lastTime;
    }
    run.end = _state.end;
    run.quotes = statistics.quotes;
    run.trades = statistics.trades;
    run.depthChanges = statistics.depthChanges;
    run.bars = statistics.bars;
    run.remarks = statistics.remarks;
    run.notes = statistics.notes;
    _result.jobs.resize(statistics.jobs.size());
    for (std::size_t i = 0; i < statistics.jobs.size(); ++i) {
        const nxJobStatistics& from = statistics.jobs[i];
        nxResultJob& job = _result.jobs[i];
        job.name = from.name;
        job.end = from.end;
        job.notes = from.notes;
        for (std::size_t j = 0; j < nxCallbackNames.size(); ++j)
            if (const nxJobStatistics::Callback& callback = from.callbacks[j]; callback.defined)
                job.callbacks.push_back({nxCallbackNames[j], callback.count, callback.failures});
        for (const nxJobStatistics::Failure& failure : from.failures) {
            const auto& place = failure.what.location;
            _result.failures.push_back({from.name,
                                        failure.callback ? nxGetCallbackName(*failure.callback) : "",
                                        failure.what.message, failure.count, failure.firstTime,
                                        place ? place->file : "", place ? place->line : 0});
        }
    }
}

void nxRunResults::Finish(const nxRunStatistics& statistics)
{
    _TakeStatistics(statistics);
    _result.run.days = _collector.GetDays();
    _result.results = _collector.TakeResults();
    for (std::size_t i = 0; i < _rows.size() && i < _result.run.data.size(); ++i)
        _result.run.data[i].rows = _rows[i];
    for (std::size_t i = 0; i < _markets.size(); ++i)
        if (_markets[i] < _prices.size()) _result.products[i].prices = std::move(_prices[_markets[i]]);
    if (_isDetailed) _entries.MoveTo(_result);
    _TakeTiming(statistics);
}

void nxRunResults::_TakeTiming(const nxRunStatistics& statistics)
{
    std::ostringstream text;
    nxJsonWriter json(text);
    json.BeginObject();
    json.Key("callbacks").BeginArray();
    for (const nxJobStatistics& job : statistics.jobs) {
        for (std::size_t i = 0; i < nxCallbackNames.size(); ++i) {
            const nxJobStatistics::Callback& callback = job.callbacks[i];
            if (callback.count == 0) continue;
            json.BeginObject();
            json.Key("job").Text(job.name);
            json.Key("name").Text(nxCallbackNames[i]);
            json.Key("count").Count(callback.count);
            json.Key("meanNanoseconds").Number(callback.GetMeanNanoseconds());
            json.EndObject();
        }
    }
    json.EndArray();
    json.EndObject();
    _timing = text.str();
}

void nxRunResults::RecordEnd()
{
    if (!_output.IsRecording()) return;
    const nxRunStatistics& statistics = _state.statistics;
    std::ostringstream rows;
    nxJsonWriter json(rows);
    json.BeginArray();
    for (const unsigned long long count : _rows)
        json.Count(count);
    json.EndArray();
    const bool hasRows = statistics.GetRowEventCount() != 0;
    const std::string first = hasRows ? nxFeedTime::GetAsString(statistics.firstTime) : "";
    const std::string last = hasRows ? nxFeedTime::GetAsString(statistics.lastTime) : "";
    _output.RecordRun("end", {{"end", _state.end},
                              {"first", first},
                              {"last", last},
                              {"quotes", statistics.quotes},
                              {"trades", statistics.trades},
                              {"depthChanges", statistics.depthChanges},
                              {"bars", statistics.bars},
                              {"dataDays", _collector.GetDays().size()},
                              {"rows", nxRunRecord::Json{rows.view()}}});
}

void nxRunResults::_RecordTrip(unsigned int job, const nxRoundTrip& trip)
{
    const std::string entry = nxFeedTime::GetAsString(trip.entryTime),
                      exit = nxFeedTime::GetAsString(trip.exitTime);
    _output.RecordAt(trip.exitTime, _state.options.jobs[job].name, "trip",
                     {{"product", _result.products[trip.product].name},
                      {"side", nxGetText(trip.side)},
                      {"volume", trip.volume},
                      {"entryTime", entry},
                      {"exitTime", exit},
                      {"entryPrice", trip.entryPrice},
                      {"exitPrice", trip.exitPrice},
                      {"profit", trip.profit.GetAsDouble()},
                      {"fees", trip.fees.GetAsDouble()},
                      {"mae", trip.mae},
                      {"mfe", trip.mfe},
                      {"entryOrder", trip.entryOrder},
                      {"exitOrder", trip.exitOrder}});
}

void nxRunResults::_RecordDay(const nxResultData& data, const nxResultDay& day,
                              const nxResultCollector::Prices& prices)
{
    std::ostringstream text;
    nxJsonWriter json(text);
    json.BeginObject();
    for (const auto& [product, price] : prices)
        json.Raw(nxJsonWriter::GetText(_result.products[product].name) + ":" +
                 nxJsonWriter::GetNumber(price));
    json.EndObject();
    const std::string date = nxFeedTime::GetDateAsString(day.day);
    _output.RecordNow(_state.options.jobs[*data.job].name, "day",
                      {{"day", date},
                       {"currency", nxGetCurrency(data)},
                       {"profit", day.profit.GetAsDouble()},
                       {"drawdown", data.drawdowns.GetDepth().GetAsDouble()},
                       {"prices", nxRunRecord::Json{text.view()}}});
}

void nxRunResults::_RecordEquity(const nxResultData& data, long long time, const nxEquityBucket& equity)
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

std::optional<std::string> nxRunResults::_Write(nxOutputFile& file, std::string_view text)
{
    file.Write(text);
    return file.Close();
}

std::optional<std::string> nxRunResults::Write(std::optional<std::vector<nxResultVariant>> envelope)
{
    _result.envelope = std::move(envelope);
    std::vector<std::optional<std::string>> failures;
    const auto make = [this](auto write) {
        std::ostringstream text;
        write(text, _result);
        return std::move(text).str();
    };
    if (_json.IsOpen() || _page.IsOpen()) {
        const std::string document = make(nxResultDocument::Write);
        if (_json.IsOpen()) failures.push_back(_Write(_json, document));
        if (_page.IsOpen()) failures.push_back(_WritePage(document));
    }
    if (_trades.IsOpen()) failures.push_back(_Write(_trades, make(nxResultTables::WriteTrips)));
    if (_equity.IsOpen()) failures.push_back(_Write(_equity, make(nxResultTables::WriteEquity)));
    std::erase(failures, std::nullopt);
    return failures.empty() ? std::nullopt : failures.front();
}

std::optional<std::string> nxRunResults::_WritePage(const std::string& document)
{
    std::ostringstream page;
    nxResultPage::Write(page, {{"", document, _timing}});
    const auto failure = _Write(_page, page.view());
    const std::string& file = _state.options.reportFile;
    if (!failure && file != "-") _output.Complain("page        " + file);
    return failure;
}

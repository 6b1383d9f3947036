#include "host/run/nxRunResults.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>

#include "base/values/nxTextStream.h"
#include "host/feed/nxSha256.h"
#include "host/market/nxMidPrice.h"
#include "host/report/nxResultDocument.h"
#include "host/report/nxResultPage.h"
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
      _hasPrices(_isDetailed || !state.options.recordFile.empty()),
      _record(output, state, _result),
      _collector({state.options.capital.IsValid() ? state.options.capital.GetAsDouble() : 0.0,
                  state.options.roundTrips, !state.IsAlone()},
                 _record.MakeListeners()),
      _rows(state.options.data.size())
{
    if (_isDetailed) _output.SetEntries(&_entries);
}

std::optional<std::string> nxRunResults::Open()
{
    const nxRunOptions& options = _state.options;
    if (options.capital.IsValid()) _result.run.capital = options.capital.GetAsDouble();
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
    if (!_isDetailed && !_output.HasRecord()) return std::nullopt;
    _MakeFacts();
    if (_output.HasRecord()) _record.WriteRun();
    _isOpen = true;
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
    _Hash();
}

// Of what the result follows from, wherever the files lie.
void nxRunResults::_Hash()
{
    nxResultRun& run = _result.run;
    nxTextStream text;
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

void nxRunResults::BeginCounting()
{
    _collector.ForgetDays();
    _rowsBefore = 0;
    std::ranges::fill(_rows, 0ull);
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
        if (_markets[i] < _prices.size() && _collector.HasOrders(static_cast<unsigned int>(i)))
            _result.products[i].prices = std::move(_prices[_markets[i]]);
    if (_isDetailed) _entries.MoveTo(_result);
    _TakeTiming(statistics);
}

void nxRunResults::_TakeTiming(const nxRunStatistics& statistics)
{
    nxTextStream text;
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

std::optional<std::string> nxRunResults::_Write(nxOutputFile& file, std::string_view text)
{
    file.Write(text);
    return file.Close();
}

std::optional<std::string> nxRunResults::Write(std::optional<std::vector<nxResultVariant>> envelope)
{
    _result.envelope = std::move(envelope);
    std::vector<std::optional<std::string>> failures;
    if (_isOpen && _output.HasRecord()) {
        _record.WriteEnd();
        failures.push_back(_output.CloseRecord());
    }
    const auto make = [this](auto write) {
        nxTextStream text;
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
    nxTextStream page;
    nxResultPage::Write(page, {{"", document, _timing}});
    const auto failure = _Write(_page, page.view());
    const std::string& file = _state.options.reportFile;
    if (!failure && file != "-") _output.Complain("page        " + file);
    return failure;
}

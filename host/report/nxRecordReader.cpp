#include "host/report/nxRecordReader.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "host/feed/nxFeedTime.h"
#include "host/report/nxRecordedAccounts.h"
#include "host/report/nxResultSections.h"
#include "host/report/nxRunEntries.h"

namespace {

using Json = nxRecordLines::Json;

constexpr std::size_t MostFailures = 100;  // of a job, as the run keeps them

double GetOr(double number, double other)
{
    return std::isfinite(number) ? number : other;
}

std::vector<std::pair<std::string, std::string>> GetPairs(const Json& json)
{
    std::vector<std::pair<std::string, std::string>> pairs;
    for (const auto& item : json.items())
        if (item.value().is_string()) pairs.emplace_back(item.key(), item.value().get<std::string>());
    return pairs;
}

std::optional<std::string> GetOptional(const Json& json, const char* key)
{
    const Json& part = nxRecordLines::GetPart(json, key);
    return part.is_string() ? std::optional(part.get<std::string>()) : std::nullopt;
}

std::vector<nxResultRun::File> GetFiles(const Json& json)
{
    std::vector<nxResultRun::File> files;
    for (const Json& file : json)
        files.push_back({nxRecordLines::GetText(file, "job"), nxRecordLines::GetText(file, "file"),
                         std::nullopt, GetOptional(file, "sha256")});
    return files;
}

// A column of numbers for each of the buckets, of which the first column tells the count.
template <class Bucket>
std::vector<Bucket> GetBuckets(const Json& json)
{
    const Json& times = nxRecordLines::GetPart(json, "ns");
    std::vector<Bucket> buckets(times.size());
    const auto take = [&](const char* key, auto member) {
        const Json& column = nxRecordLines::GetPart(json, key);
        for (std::size_t i = 0; i < std::min(buckets.size(), column.size()); ++i)
            if (column.is_array()) buckets[i].*member = nxRecordLines::ToNumber(column[i]);
    };
    for (std::size_t i = 0; i < buckets.size(); ++i)
        if (times.is_array() && times[i].is_number_integer()) buckets[i].time = times[i].get<long long>();
    take("low", &Bucket::low);
    take("high", &Bucket::high);
    take("close", &Bucket::close);
    if constexpr (std::is_same_v<Bucket, nxEquityBucket>) {
        take("drawdown", &Bucket::drawdown);
        take("exposure", &Bucket::exposure);
    }
    return buckets;
}

nxDrawdowns GetDrawdowns(const nxRecordLines& line)
{
    std::vector<nxDrawdown> deepest;
    for (const Json& drawdown : line.Get("drawdowns"))
        deepest.push_back({nxRecordLines::GetTime(drawdown, "from").value_or(0),
                           nxRecordLines::GetTime(drawdown, "trough").value_or(0),
                           nxRecordLines::GetTime(drawdown, "to"),
                           nxRecordLines::ToAmount(nxRecordLines::GetPart(drawdown, "peak")),
                           nxRecordLines::ToAmount(nxRecordLines::GetPart(drawdown, "depth"))});
    return {std::move(deepest), GetOr(line.GetNumber("drawdownShare"), 0.0)};
}

void TakeCounts(const nxRecordLines& line, nxResultData& data)
{
    const std::pair<const char*, unsigned long long nxResultData::*> counts[] = {
        {"orders", &nxResultData::orders},
        {"messages", &nxResultData::messages},
        {"fills", &nxResultData::fills},
        {"orderedVolume", &nxResultData::orderedVolume},
        {"executedVolume", &nxResultData::executedVolume},
        {"volume", &nxResultData::volume},
        {"makerVolume", &nxResultData::makerVolume},
        {"slippageVolume", &nxResultData::slippageVolume}};
    for (const auto& [key, count] : counts)
        data.*count = line.GetCount(key);
}

void TakeMarkouts(const nxRecordLines& line, nxResultData& data)
{
    std::size_t place = 0;
    for (const Json& markout : line.Get("markouts"))
        if (place < nxMarkout::Count)
            data.markouts[place++] = {nxRecordLines::ToAmount(nxRecordLines::GetPart(markout, "sum")),
                                      nxRecordLines::GetCount(markout, "volume"),
                                      nxRecordLines::GetCount(markout, "fills")};
}

}  // namespace

// What reads one record.
class nxRecordReader::Reading
{
public:
    explicit Reading(nxResult& result) : _result(result), _run(result.run) {}

    std::optional<std::string> Read(const std::string& path);

private:
    std::optional<std::string> _Take();
    std::optional<std::string> _Begin();
    void _TakeLine(const std::string& type, long long time);
    void _TakeRun();
    void _TakeProduct();
    void _TakeTrip();
    void _TakeFailure();
    void _TakeMark(const std::string& type, long long time);
    void _TakeAccount();
    void _TakePrices();
    void _TakeEnvelope();
    void _TakeEnd();
    void _TakeJobsEnd();
    void _Finish();
    void _FinishAccounts();
    void _FinishPart();
    void _CountDays();
    void _NameWhatIsMissing();
    unsigned int _GetJob(const std::string& name);
    std::optional<unsigned int> _FindProduct(const std::string& name) const;

    nxResult& _result;
    nxResultRun& _run;
    nxRecordLines _line;
    nxRunEntries _entries;
    std::optional<nxRecordedAccounts> _accounts;  // of a record that ends too early
    bool _isOfVersion1 = false, _hasEnd = false, _isKilled = false;
    std::map<std::pair<std::string, std::string>, nxRoundTrips> _trips;  // by job and currency
    std::vector<std::vector<nxResultFailure>> _failures;                 // by job
    long long _last = 0;
};

nxRecordReader::nxRecordReader() : _reading(std::make_unique<Reading>(_result)) {}

nxRecordReader::~nxRecordReader() = default;

std::optional<std::string> nxRecordReader::Read(const std::string& path)
{
    return _reading->Read(path);
}

std::optional<std::string> nxRecordReader::Reading::Read(const std::string& path)
{
    if (!_line.Open(path)) return _line.GetFailure();
    for (;;) {
        const nxRecordLines::Step step = _line.Next();
        if (step == nxRecordLines::Step::Failed) return _line.GetFailure();
        if (step == nxRecordLines::Step::End) break;
        if (auto error = _Take()) return error;
    }
    if (!_accounts) return path + ": holds no record of a run: it is empty";
    _Finish();
    return std::nullopt;
}

std::optional<std::string> nxRecordReader::Reading::_Take()
{
    if (!_accounts)
        if (auto error = _Begin()) return error;
    if (_hasEnd) return _line.GetPlace() + "is a line behind the end of the record";
    const auto time = _line.GetTime("time");
    if (time) {
        if (!_run.first) _run.first = time;
        _last = std::max(_last, *time);
    }
    _TakeLine(_line.GetText("type"), time.value_or(0));
    return std::nullopt;
}

std::optional<std::string> nxRecordReader::Reading::_Begin()
{
    _isOfVersion1 = _line.GetText("type") != "run";
    if (const auto version = _line.GetCount("record"); !_isOfVersion1 && version != 2)
        return _line.GetPlace() +
               fmt::format("is a record of version {}; versions 1 and 2 can be read", version);
    if (_isOfVersion1)
        _run.program = "algoserver";
    else
        _TakeRun();
    _accounts.emplace(_result, _isOfVersion1);
    return std::nullopt;
}

void nxRecordReader::Reading::_TakeLine(const std::string& type, long long time)
{
    if (type == "run") return;
    if (type == "product") return _TakeProduct();
    if (type == "account") return _TakeAccount();
    if (type == "prices") return _TakePrices();
    if (type == "envelope") return _TakeEnvelope();
    if (type == "end") return _TakeEnd();
    const std::string& name = _line.GetText("job");
    if (name.empty()) return;
    const unsigned int job = _GetJob(name);
    _entries.Take(time, name, type, _line.GetFields());
    _accounts->Take(_line, job, time);
    if (type == "trip") return _TakeTrip();
    if (type == "fill" || type == "day") return _TakeMark(type, time);
    if (type == "callbackFailure") return _TakeFailure();
    if (type == "jobStopped") _result.jobs[job].end = _line.GetText("reason");
}

// Those of the first line; in version 1 as they come.
unsigned int nxRecordReader::Reading::_GetJob(const std::string& name)
{
    const auto found = std::ranges::find(_result.jobs, name, &nxResultJob::name);
    const auto job = static_cast<unsigned int>(found - _result.jobs.begin());
    if (found == _result.jobs.end()) _result.jobs.emplace_back().name = name;
    return job;
}

std::optional<unsigned int> nxRecordReader::Reading::_FindProduct(const std::string& name) const
{
    const auto found = std::ranges::find(_result.products, name, &nxResultProduct::name);
    if (found == _result.products.end()) return std::nullopt;
    return static_cast<unsigned int>(found - _result.products.begin());
}

void nxRecordReader::Reading::_TakeRun()
{
    const Json& run = _line.Get("run");
    _run.program = _line.GetText("program");
    _run.scripts = GetFiles(nxRecordLines::GetPart(run, "scripts"));
    _run.modules = GetFiles(nxRecordLines::GetPart(run, "modules"));
    _run.data = GetFiles(nxRecordLines::GetPart(run, "data"));
    _run.settings = GetPairs(nxRecordLines::GetPart(run, "settings"));
    _run.seed = nxRecordLines::GetCount(run, "seed");
    if (const double capital = nxRecordLines::ToNumber(nxRecordLines::GetPart(run, "capital")); capital > 0.0)
        _run.capital = capital;
    _run.hash = GetOptional(run, "hash");
    for (const Json& job : _line.Get("jobs")) {
        nxResultJob& made = _result.jobs.emplace_back();
        made.name = nxRecordLines::GetText(job, "name");
        made.script = nxRecordLines::GetText(job, "script");
        made.parameters = GetPairs(nxRecordLines::GetPart(job, "parameters"));
    }
}

void nxRecordReader::Reading::_TakeProduct()
{
    nxResultProduct& product = _result.products.emplace_back();
    product.name = _line.GetText("product");
    product.currency = _line.GetText("currency");
    product.pointValue = GetOr(_line.GetNumber("pointValue"), 1.0);
    product.tickSize = _line.GetNumber("tickSize");
}

void nxRecordReader::Reading::_TakeTrip()
{
    const auto product = _FindProduct(_line.GetText("product"));
    if (!product) return;
    nxRoundTrip trip;
    trip.product = *product;
    trip.side = _line.GetText("side") == "SELL" ? nxSide::Sell : nxSide::Buy;
    trip.volume = _line.GetCount("volume");
    trip.entryTime = _line.GetTime("entryTime").value_or(0);
    trip.exitTime = _line.GetTime("exitTime").value_or(0);
    trip.entryPrice = _line.GetNumber("entryPrice");
    trip.exitPrice = _line.GetNumber("exitPrice");
    trip.profit = _line.GetAmount("profit");
    trip.fees = _line.GetAmount("fees");
    trip.mae = _line.GetAmount("mae");
    trip.mfe = _line.GetAmount("mfe");
    trip.entryOrder = static_cast<unsigned int>(_line.GetCount("entryOrder"));
    trip.exitOrder = static_cast<unsigned int>(_line.GetCount("exitOrder"));
    _trips[{_line.GetText("job"), _result.products[*product].currency}].Add(trip);
}

void nxRecordReader::Reading::_TakeFailure()
{
    const unsigned int job = _GetJob(_line.GetText("job"));
    if (job >= _failures.size()) _failures.resize(job + 1);
    std::vector<nxResultFailure>& failures = _failures[job];
    const std::string &callback = _line.GetText("callback"), &text = _line.GetText("text");
    for (nxResultFailure& known : failures) {
        if (known.callback != callback || known.text != text) continue;
        ++known.count;
        return;
    }
    if (failures.size() < MostFailures)
        failures.push_back({_result.jobs[job].name, callback, text, 1, _line.GetTime("time"),
                            _line.GetText("file"), static_cast<unsigned int>(_line.GetCount("line"))});
}

// Where the market stood, which a whole record tells better at its end.
void nxRecordReader::Reading::_TakeMark(const std::string& type, long long time)
{
    const auto add = [&](const std::string& name, double price) {
        const auto product = _FindProduct(name);
        if (product && std::isfinite(price))
            _result.products[*product].prices.Add({time, price, price, price});
    };
    if (type == "fill") return add(_line.GetText("product"), _line.GetNumber("price"));
    for (const auto& item : _line.Get("prices").items())
        add(item.key(), nxRecordLines::ToNumber(item.value()));
}

void nxRecordReader::Reading::_TakeAccount()
{
    nxResultData& data = _result.results.emplace_back();
    if (const std::string& job = _line.GetText("job"); !job.empty()) data.job = _GetJob(job);
    if (const std::string& currency = _line.GetText("currency"); !currency.empty())
        static_cast<void>(data.currency.SetFromString(currency));
    TakeCounts(_line, data);
    data.profit = _line.GetAmount("profit");
    data.fees = _line.GetAmount("fees");
    data.turnover = _line.GetAmount("turnover");
    data.slippage = _line.GetAmount("slippage");
    data.openTime = static_cast<long long>(_line.GetCount("openTime"));
    TakeMarkouts(_line, data);
    for (const Json& profit : _line.Get("days"))
        data.days.push_back({0, nxRecordLines::ToAmount(profit)});  // dated by the last line
    std::size_t place = 0;
    for (const Json& price : _line.Get("benchmarkPrices"))
        if (place < data.days.size()) data.days[place++].benchmark = nxRecordLines::ToNumber(price);
    data.benchmark = _FindProduct(_line.GetText("benchmark"));
    data.drawdowns = GetDrawdowns(_line);
    data.equity = nxBuckets<nxEquityBucket>(GetBuckets<nxEquityBucket>(_line.Get("equity")));
}

void nxRecordReader::Reading::_TakePrices()
{
    if (const auto product = _FindProduct(_line.GetText("product")))
        _result.products[*product].prices =
            nxBuckets<nxPriceBucket>(GetBuckets<nxPriceBucket>(_line.Get("prices")));
}

void nxRecordReader::Reading::_TakeEnvelope()
{
    std::vector<nxResultVariant>& rows = _result.envelope.emplace();
    for (const Json& row : _line.Get("rows")) {
        const auto number = [&](const char* key) {
            return nxRecordLines::ToNumber(nxRecordLines::GetPart(row, key));
        };
        rows.push_back({nxRecordLines::GetText(row, "model"), nxRecordLines::GetText(row, "job"),
                        nxRecordLines::GetText(row, "currency"), nxRecordLines::GetCount(row, "orders"),
                        nxRecordLines::GetCount(row, "fills"), nxRecordLines::GetCount(row, "volume"),
                        number("fees"), number("profit"), number("drawdown")});
    }
}

void nxRecordReader::Reading::_TakeEnd()
{
    _hasEnd = true;
    _run.end = _line.GetText("end");
    // The process of the run was killed, and another one wrote this line.
    _isKilled = _line.GetBool("isCut");
    if (_isKilled) return;
    _run.first = _line.GetTime("first");
    _run.last = _line.GetTime("last");
    _run.quotes = _line.GetCount("quotes");
    _run.trades = _line.GetCount("trades");
    _run.depthChanges = _line.GetCount("depthChanges");
    _run.bars = _line.GetCount("bars");
    _run.remarks = nxRecordLines::ToTexts(_line.Get("remarks"));
    _run.notes = nxRecordLines::ToTexts(_line.Get("notes"));
    long long begin = 0;
    for (const std::string& day : nxRecordLines::ToTexts(_line.Get("days")))
        if (nxFeedTime::SetFromText(day, begin) == nullptr) _run.days.push_back(nxFeedTime::GetDay(begin));
    std::size_t file = 0;
    for (const Json& rows : _line.Get("rows"))
        if (file < _run.data.size() && rows.is_number_unsigned())
            _run.data[file++].rows = rows.get<unsigned long long>();
    _TakeJobsEnd();
}

void nxRecordReader::Reading::_TakeJobsEnd()
{
    _result.jobs.resize(_line.Get("jobs").size());
    std::size_t place = 0;
    for (const Json& from : _line.Get("jobs")) {
        nxResultJob& job = _result.jobs[place++];
        job.name = nxRecordLines::GetText(from, "name");
        job.end = nxRecordLines::GetText(from, "end");
        job.notes = nxRecordLines::ToTexts(nxRecordLines::GetPart(from, "notes"));
        for (const Json& callback : nxRecordLines::GetPart(from, "callbacks"))
            job.callbacks.push_back({nxRecordLines::GetText(callback, "name"),
                                     nxRecordLines::GetCount(callback, "count"),
                                     nxRecordLines::GetCount(callback, "failures")});
    }
}

void nxRecordReader::Reading::_Finish()
{
    _hasEnd && !_isKilled ? _FinishAccounts() : _FinishPart();
    for (std::vector<nxResultFailure>& failures : _failures)
        std::ranges::move(failures, std::back_inserter(_result.failures));
    _entries.MoveTo(_result);
}

// The accounts of single jobs come first, as those of all jobs are made of them.
void nxRecordReader::Reading::_FinishAccounts()
{
    for (nxResultData& data : _result.results) {
        for (std::size_t i = 0; i < std::min(data.days.size(), _run.days.size()); ++i)
            data.days[i].day = _run.days[i];
        if (data.job) {
            data.trips = std::move(_trips[{_result.jobs[*data.job].name, nxGetCurrency(data)}]);
            // The record has them as they were complete.
            data.trips.SortByExit();
            continue;
        }
        for (const nxResultData& part : _result.results)
            if (part.job && part.currency == data.currency) data.trips.Add(part.trips);
        data.trips.SortByExit();
    }
}

void nxRecordReader::Reading::_FinishPart()
{
    _run.last = _run.first ? std::optional(_last) : std::nullopt;
    _run.isComplete = _isOfVersion1 && !_line.IsCut();
    if (!_isKilled) _run.end = "not known";
    if (_isOfVersion1 && _result.jobs.size() == 1 && !_result.jobs.front().end.empty())
        _run.end = _result.jobs.front().end;
    for (const auto& [key, trips] : _trips)
        for (const nxRoundTrip& trip : trips)
            _accounts->AddTrip(_GetJob(key.first), trip);
    _result.results = _accounts->TakeResults(_last);
    if (!_isOfVersion1) _CountDays();
    _NameWhatIsMissing();
}

// The day that had not ended counts as far as it is known.
void nxRecordReader::Reading::_CountDays()
{
    const long long today = nxFeedTime::GetDay(_last);
    for (nxResultData& data : _result.results) {
        if (data.days.empty() || data.days.back().day < today) data.days.push_back({today, data.profit});
        if (data.days.size() <= _run.days.size()) continue;
        _run.days.clear();
        for (const nxResultDay& day : data.days)
            _run.days.push_back(day.day);
    }
}

void nxRecordReader::Reading::_NameWhatIsMissing()
{
    std::vector<std::string>& missing = _run.missing;
    if (_isOfVersion1)
        missing.insert(missing.end(),
                       {"Scripts, data, settings, seed and capital; whether the run went on.",
                        "Days, and what is made of them: ratios, intervals, months.",
                        "Slippage, how far the market went against a round trip and for it, and "
                        "orders that are children of brackets."});
    missing.insert(
        missing.end(),
        {"Prices, profits and drawdowns between fills and the ends of days; markouts; the benchmark.",
         "How many events there were, how often callbacks were called, and the notes of the run."});
}

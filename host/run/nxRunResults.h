#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/market/nxMarket.h"
#include "host/report/nxOutputFile.h"
#include "host/report/nxRunEntries.h"
#include "host/run/nxResultRecord.h"

// What a run came to: gathers it while the run goes on, and writes it to the files that were asked for. Used
// on the run's thread.
class nxRunResults
{
public:
    // All outlive it.
    nxRunResults(nxRunState& state, nxRunOutput& output);

    // Opens the files, and says in the record what is run. Null, or why one cannot be: "FILE: reason".
    [[nodiscard]] std::optional<std::string> Open();
    nxResultCollector& GetCollector() { return _collector; }
    // Of that market, once the venue trades it.
    void AddProduct(const nxMarket& market);
    // After the market has applied a row; nothing where only a summary is wanted.
    void OnMarket(const nxMarket& market, long long time)
    {
        if (_hasPrices) _AddPrice(market, time);
    }
    // The run begins now: what was read so far was history.
    void BeginCounting();
    // The UTC day, counted since 1970, is over.
    void EndDay(long long day);
    // Once the end of the run is named and the notes are made.
    void Finish(const nxRunStatistics& statistics);
    const nxResult& GetResult() const { return _result; }
    // Ends the record, and writes the files. envelope: what other models come to, where they were run. Null,
    // or why one is not whole.
    [[nodiscard]] std::optional<std::string> Write(std::optional<std::vector<nxResultVariant>> envelope);

    void CountRows(unsigned int file, unsigned int rows) { _rows[file] += rows; }

private:
    void _AddPrice(const nxMarket& market, long long time);
    void _MakeFacts();
    void _Hash();
    void _TakeStatistics(const nxRunStatistics& statistics);
    void _TakeTiming(const nxRunStatistics& statistics);
    std::optional<std::string> _WritePage(const std::string& document);
    static std::optional<std::string> _Write(nxOutputFile& file, std::string_view text);

    nxRunState& _state;
    nxRunOutput& _output;
    const bool _isDetailed, _hasPrices;
    bool _isOpen = false;
    nxResultRecord _record;
    nxResultCollector _collector;
    nxRunEntries _entries;
    nxResult _result;
    std::vector<unsigned long long> _rows;          // by file
    unsigned long long _rowsBefore = 0;             // the day
    std::vector<nxBuckets<nxPriceBucket>> _prices;  // by the index of the market
    std::vector<std::size_t> _markets;              // of the products
    std::string _timing;                            // of the callbacks, as JSON
    nxOutputFile _json{"the result"}, _page{"the page"}, _trades{"the round trips"}, _equity{"the equity"};
};

#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "host/feed/nxCsvReader.h"
#include "host/feed/nxFeedEvent.h"
#include "host/feed/nxFeedOptions.h"
#include "host/feed/nxFeedProductTable.h"

// The events of one file, front to back. Judges what nxCsvReader reads: time does not run backwards, sizes
// are whole lots and not negative, a bar's prices lie between its low and its high, a product has one bar at
// a time. Gaps between bars are no fault, but counted. Rows of a depth file that follow each
// other and have one time and one product are one event, up to MaxLevels of them. Owned by an nxFeed and used
// by its thread; the product table outlives it.
class nxFeedReader
{
public:
    static constexpr unsigned int PeekRows = nxCsvReader::FirstRows;
    static constexpr unsigned int MaxLevels =
        65536;  // what keeps memory flat; the next event goes on behind them
    static constexpr std::size_t MaxKeptErrors = 10;

    // `index` is the file's place in the order the files were named.
    nxFeedReader(const std::string& path, unsigned int index, nxFeedProductTable& products,
                 const nxFeedOptions& options);

    // Opens the file, reads the header row and looks at the first rows that the buffer holds, PeekRows at
    // most, so that their products, tick sizes and kinds are known before the first event. False: GetError()
    // tells why.
    [[nodiscard]] bool Open();
    // As for nxCsvReader.
    void ParseInTurnIfEasy() { _csv.ParseInTurnIfEasy(); }

    // The next event, good until the next call; null at the end and at an error.
    [[nodiscard]] const nxFeedEvent* Next();

    // Of an import: the numbers behind the last event as they are written, at their slots.
    [[nodiscard]] const nxCsvRow& GetRow() const { return *_row; }

    // Why Next() answered null before the end of the file, or why Open() failed. A depth file's error may
    // stand here while the event before it is still to be used.
    [[nodiscard]] const nxFeedError& GetError() const { return _error; }

    [[nodiscard]] const std::string& GetPath() const { return _path; }
    // Of the first good row, once it is open; none where there is none among those that were looked at.
    [[nodiscard]] std::optional<long long> GetFirstTime() const { return _firstTime; }
    [[nodiscard]] nxFeedKind GetKind() const { return _kind; }
    // Rows that were read and found good. At the end of a file with only a header, 0.
    [[nodiscard]] unsigned long long GetRowCount() const { return _rowCount; }
    [[nodiscard]] unsigned long long GetBadRowCount() const { return _badRowCount; }
    // The first few of a lenient reader's bad rows.
    [[nodiscard]] const std::vector<nxFeedError>& GetBadRows() const { return _badRows; }
    // Where a product's next bar came later than its bars are apart, and the longest of these gaps.
    struct Gaps
    {
        unsigned long long count = 0;
        long long longest = 0;        // nanoseconds between the bars on either side
        unsigned long long line = 0;  // behind the longest
    };
    // What a person should hear of the rows that were read.
    struct Tally
    {
        bool hasRows = false;  // good ones
        bool hasOpenEnd = false;
        unsigned long long badRows = 0;
        unsigned long long skipped = 0;
        Gaps gaps;
    };
    [[nodiscard]] Tally GetTally() const
    {
        return {_rowCount != 0, HasOpenEnd(), _badRowCount, GetSkippedCount(), _gaps};
    }
    // Greater whenever the tally is another one.
    [[nodiscard]] unsigned long long GetTallyVersion() const
    {
        return (_rowCount != 0) + HasOpenEnd() + _badRowCount + GetSkippedCount() + _gaps.count;
    }
    // What of a foreign file was taken for what; empty for one of our own formats.
    [[nodiscard]] std::string GetDescription() const;
    // The times of bars are their starts.
    [[nodiscard]] bool DoBarsBearStart() const { return _barsBearStart; }
    [[nodiscard]] const nxFileForm& GetForm() const { return _csv.GetForm(); }
    // As for nxCsvReader.
    [[nodiscard]] unsigned long long GetSkippedCount() const { return _csv.GetSkippedCount(); }
    [[nodiscard]] bool HasOpenEnd() const { return _csv.HasOpenEnd(); }
    [[nodiscard]] unsigned long long GetBytesConsumed() const { return _csv.GetBytesConsumed(); }
    [[nodiscard]] unsigned long long GetBytesTotal() const { return _csv.GetBytesTotal(); }

private:
    void _Peek();
    bool _NextRow();
    [[gnu::cold]] bool _PassOver(nxCsvReader::Result result);
    bool _Judge();
    bool _JudgeQuote(nxFeedProduct& product);
    bool _JudgeLevel(nxFeedProduct& product);
    bool _JudgeBar(nxFeedProduct& product);
    bool _JudgeBarTime(const nxFeedProduct& product);
    [[gnu::cold]] void _NoteGap(long long distance);
    bool _FindBarEnd(const nxFeedProduct& product);
    [[gnu::cold]] bool _Reject(std::string_view column, const std::string& reason);
    [[gnu::cold]] bool _RejectEmpty();
    [[gnu::cold]] bool _RejectBar(const nxFeedBar& bar);
    [[gnu::cold]] bool _RejectSecondBar(const nxFeedProduct& product);
    bool _GetPrice(nxFeedProduct& product, unsigned int slot, nxDecimal& price);
    bool _GetLots(nxFeedProduct& product, unsigned int slot, nxVolume& lots);
    [[gnu::cold]] bool _GetOtherLots(nxFeedProduct& product, unsigned int slot, nxVolume& lots);
    std::string_view _GetColumnName(unsigned int slot) const;
    const nxFeedEvent* _NextDepth();
    void _NoteProduct(nxFeedProduct& product) const;
    void _FollowBook();

    std::string _path;
    nxFeedProductTable& _products;
    nxFeedOptions _options;
    nxCsvReader _csv;
    nxFeedKind _kind = nxFeedKind::Quote;
    const nxCsvRow* _row = nullptr;  // read last
    unsigned int _productIndex = 0;  // of the row read last
    nxFeedProduct* _product = nullptr;
    nxFeedEvent _event;
    std::vector<nxFeedLevel> _levels;  // behind _event
    nxFeedLevel _level;                // depth: the row read last
    bool _isRowPending = false;        // depth: that row belongs to the next event
    // Depth with snapshots: whether the row before was of one, and the levels that are there, by product.
    bool _wasSnapshot = false;
    std::map<unsigned int, std::set<std::pair<nxSide, nxDecimal>>> _books;
    bool _barsBearStart = false;
    std::optional<long long> _firstTime;
    long long _lastTime;               // of the last good row
    long long _lastBarEnd;             // bars that bear their start: the time of the last event
    std::vector<long long> _barTimes;  // bars: of the last one, by product
    Gaps _gaps;
    bool _lacksPeriod = false;  // why the last bar was rejected
    bool _isOver = false;
    unsigned long long _rowCount = 0;
    unsigned long long _badRowCount = 0;
    std::vector<nxFeedError> _badRows;
    nxFeedError _rejection;
    nxFeedError _error;
};

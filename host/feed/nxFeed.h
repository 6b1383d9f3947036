#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/feed/nxFeedReader.h"
#include "host/feed/nxFeedTally.h"

// Recorded market data as one stream of events, ordered by time: on equal times bars, which end then, come
// before all else, then the file named earlier comes first, and a file's own order is kept. Memory stays flat
// whatever the length of the files: each has a few buffers of fixed size. Used by one thread. Nothing here
// throws but for want of memory.
class nxFeed
{
public:
    explicit nxFeed(const nxFeedOptions& options = {}) : _options(options), _products(options.barPeriods) {}
    nxFeed(const nxFeed&) = delete;
    nxFeed& operator=(const nxFeed&) = delete;

    // Opens the files and looks at the first rows of each. The products named come first in the product
    // table. Called once. False: GetError() tells why.
    [[nodiscard]] bool Open(const std::vector<std::string>& paths,
                            const std::vector<nxFeedProductTerms>& products = {});
    // As for nxCsvReader.
    void ParseEasyFilesInTurn();

    // The next event, good until the next call. Null: the end, or an error, which GetError() tells. All rows
    // before the one at fault have been delivered by then.
    [[nodiscard]] const nxFeedEvent* Next();

    [[nodiscard]] bool HasFailed() const { return _error.IsSet(); }
    [[nodiscard]] const nxFeedError& GetError() const { return _error; }

    [[nodiscard]] const nxFeedProductTable& GetProducts() const { return _products; }
    [[nodiscard]] nxFeedProductTable& GetProducts() { return _products; }
    [[nodiscard]] const std::vector<std::unique_ptr<nxFeedReader>>& GetReaders() const { return _readers; }

    // A price that a product is going to have beside those of its data, for the tick size.
    void NotePrice(std::string_view product, const nxDecimal& price);

    // What a person should hear at the end of a run beside errors: how the times of bars were taken, files
    // without rows or without an end, bad rows that were skipped, gaps between bars, rows that two files
    // hold, crossed and locked quotes.
    [[nodiscard]] std::vector<std::string> GetRemarks() const { return GetRemarks(GetTally()); }
    // The same of what it had come to earlier.
    [[nodiscard]] std::vector<std::string> GetRemarks(const nxFeedTally& tally) const;
    [[nodiscard]] nxFeedTally GetTally() const;

    // Of the files as they lie on the disk. The total is 0 when one of them is a pipe.
    [[nodiscard]] unsigned long long GetBytesConsumed() const;
    [[nodiscard]] unsigned long long GetBytesTotal() const;

private:
    struct Head
    {
        const nxFeedEvent* event;
        nxFeedReader* reader;
    };

    static bool _IsBefore(const Head& a, const Head& b);
    static void _RemarkForm(const nxFeedReader& reader, const nxFeedReader::Tally& tally,
                            std::vector<std::string>& remarks);
    static void _RemarkFile(const nxFeedReader& reader, const nxFeedReader::Tally& tally,
                            std::vector<std::string>& remarks);
    static void _RemarkProduct(const nxFeedProduct& product, const nxFeedProduct::Tally& tally,
                               std::vector<std::string>& remarks);
    [[gnu::cold]] bool _Start();
    bool _Advance(nxFeedReader& reader, const nxFeedEvent*& event);
    void _SiftDown();

    nxFeedOptions _options;
    nxFeedProductTable _products;
    std::vector<std::unique_ptr<nxFeedReader>> _readers;
    std::vector<Head> _heads;  // a heap, the earliest event in front
    nxFeedOverlaps _overlaps;
    bool _isStarted = false;
    nxFeedError _error;
};

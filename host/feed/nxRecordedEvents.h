#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "host/feed/nxEventSource.h"
#include "host/feed/nxFeedAhead.h"
#include "host/feed/nxFeedBlocks.h"

// Recorded files as the events of a run. Reads one event ahead, and not before it is asked for. Several runs
// may share what reads them: each then takes a block of events and waits for the next one.
class nxRecordedEvents : public nxEventSource
{
public:
    // blocks: what several runs share, which outlives it; null: nothing.
    nxRecordedEvents(const nxFeedOptions& options, nxFeedBlocks* blocks)
        : _options(options), _feed(options), _blocks(blocks)
    {
    }

    // Looks into the files and reads the first event. False: GetError() tells why.
    [[nodiscard]] bool Open(const std::vector<std::string>& paths,
                            const std::vector<nxFeedProductTerms>& products);
    bool HasFailed() const
    {
        return _blocks == nullptr ? _feed.HasFailed() : _isAtEnd && _blocks->GetFeed().HasFailed();
    }
    const nxFeedError& GetError() const
    {
        return _blocks == nullptr ? _feed.GetError() : _blocks->GetFeed().GetError();
    }
    // None of data without rows.
    std::optional<long long> GetFirstTime() const { return _firstTime; }
    // Of the rows that were read so far, which it ends. Where others have read more, it reads them again.
    std::vector<std::string> GetRemarks();
    // Of the files as they lie on the disk. The total is 0 when one of them is a pipe.
    unsigned long long GetBytesConsumed() const { return _feed.GetBytesConsumed(); }
    unsigned long long GetBytesTotal() const { return _feed.GetBytesTotal(); }

    // Whether the next event is of the time before, without the time itself but for bars, which end then.
    // Both when the next event is known.
    bool HasNextBefore(long long time) const
    {
        return _next != nullptr && _IsBefore(*_next, time, GetProducts());
    }
    bool HasNext() const { return _next != nullptr; }
    // Makes the next event known. False: it is not read yet.
    [[nodiscard]] bool Look() { return _isAhead || _Advance(); }
    // Of the rows that were read so far.
    long long GetLastTime() const { return _lastTime; }

    Step Next(long long deadline, long long deadlineOfBars, const nxFeedEvent*& event) override;
    long long GetHorizon() const override;
    const nxFeedProductTable& GetProducts() const override
    {
        return _blocks == nullptr ? _feed.GetProducts() : _blocks->GetProducts();
    }
    void NotePrice(std::string_view product, const nxDecimal& price) override
    {
        _blocks == nullptr ? _feed.NotePrice(product, price) : _blocks->NotePrice(product, price);
    }

    // The first of the files that cannot be read a second time; null when all can.
    const std::string* FindReadOnce() const;
    // Reads the first `count` events of the files anew, and gives each that is not before the beginning of
    // the part that counts, with the name of its product.
    void ReadAgain(
        unsigned long long count,
        const std::function<void(const nxFeedEvent& event, const std::string& product)>& take) const;

private:
    // A bar of days bears the date of its day, not its end.
    bool _IsBefore(const nxFeedEvent& event, long long time, const nxFeedProductTable& products) const;
    // False: there is no next event yet.
    bool _Advance();
    bool _TakeFromBlock();

    const nxFeedOptions _options;
    std::vector<std::string> _paths;
    std::vector<nxFeedProductTerms> _terms;
    nxFeedAhead _feed;  // unless there are blocks
    nxFeedBlocks* const _blocks;
    unsigned long long _block = 0;  // of which events are taken
    std::size_t _place = 0;         // of the next one in it
    bool _isAtEnd = false;          // of the blocks
    unsigned long long _taken = 0;  // from blocks
    const nxFeedEvent* _next = nullptr;
    bool _isAhead = false;  // _next was read and not given yet
    std::optional<long long> _firstTime;
    long long _lastTime = 0;
};

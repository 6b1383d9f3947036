#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "host/feed/nxEventSource.h"
#include "host/feed/nxFeed.h"

// Recorded files as the events of a run. Reads one event ahead, and not before it is asked for.
class nxRecordedEvents : public nxEventSource
{
public:
    explicit nxRecordedEvents(const nxFeedOptions& options) : _options(options), _feed(options) {}

    // Looks into the files and reads the first event. False: GetError() tells why.
    [[nodiscard]] bool Open(const std::vector<std::string>& paths,
                            const std::vector<nxFeedProductTerms>& products);
    bool HasFailed() const { return _feed.HasFailed(); }
    const nxFeedError& GetError() const { return _feed.GetError(); }
    // None of data without rows.
    std::optional<long long> GetFirstTime() const { return _firstTime; }
    std::vector<std::string> GetRemarks() const { return _feed.GetRemarks(); }
    // Of the files as they lie on the disk. The total is 0 when one of them is a pipe.
    unsigned long long GetBytesConsumed() const { return _feed.GetBytesConsumed(); }
    unsigned long long GetBytesTotal() const { return _feed.GetBytesTotal(); }

    // Whether the next event is of the time before, without the time itself but for bars, which end then.
    bool HasNextBefore(long long time);
    bool HasNext()
    {
        if (!_isAhead) _Advance();
        return _next != nullptr;
    }
    // Of the rows that were read so far.
    long long GetLastTime() const { return _lastTime; }

    Step Next(long long deadline, long long deadlineOfBars, const nxFeedEvent*& event) override;
    long long GetHorizon() const override;
    const nxFeedProductTable& GetProducts() const override { return _feed.GetProducts(); }
    void NotePrice(std::string_view product, const nxDecimal& price) override
    {
        _feed.NotePrice(product, price);
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
    void _Advance();

    const nxFeedOptions _options;
    std::vector<std::string> _paths;
    std::vector<nxFeedProductTerms> _terms;
    nxFeed _feed;
    const nxFeedEvent* _next = nullptr;
    bool _isAhead = false;  // _next was read and not given yet
    std::optional<long long> _firstTime;
    long long _lastTime = 0;
};

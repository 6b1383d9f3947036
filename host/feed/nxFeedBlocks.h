#pragma once

#include <span>

#include "host/feed/nxFeed.h"
#include "host/feed/nxFeedEventList.h"

// Recorded data that several runs go through side by side, so that they are read once: a block of events,
// then the next one when all runs have had it. What is known of the products changes only between blocks, so
// that each run knows at each event what it would know alone. Used by one thread.
class nxFeedBlocks
{
public:
    // How many events a block has at most: enough that a run which takes its turn has its memory back in the
    // processor's cache for most of them. Some 4 MB.
    static constexpr std::size_t UsualSize = 16'384;

    explicit nxFeedBlocks(std::size_t size = UsualSize) : _size(size) {}

    // Called by each run with the same arguments, of which the first ones count. False: GetFeed() has failed.
    [[nodiscard]] bool Open(const nxFeedOptions& options, const std::vector<std::string>& paths,
                            const std::vector<nxFeedProductTerms>& products);
    // On to the next block. There must be one.
    void Advance();

    // Good until Advance.
    std::span<const nxFeedEvent> GetEvents() const { return _events.Get(); }
    // Each block has another one.
    unsigned long long GetNumber() const { return _number; }
    // After it comes the end of the data, or a failure.
    bool IsLast() const { return _isLast; }
    // As they are known during the block.
    const nxFeedProductTable& GetProducts() const { return _products; }
    const nxFeed& GetFeed() const { return *_feed; }
    void NotePrice(std::string_view product, const nxDecimal& price);

private:
    void _Read();

    const std::size_t _size;
    std::unique_ptr<nxFeed> _feed;
    nxFeedProductTable _products;
    unsigned long long _version = 0;  // of the feed's products, which these are like
    nxFeedEventList _events;
    const nxFeedEvent* _held = nullptr;  // the first of the next block, where it was read already
    unsigned long long _number = 0;
    bool _isLast = false;
};

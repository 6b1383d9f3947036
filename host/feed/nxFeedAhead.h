#pragma once

#include <array>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "host/feed/nxFeed.h"
#include "host/feed/nxFeedEventList.h"

// An nxFeed for one run, read ahead: a thread merges and judges the rows a few blocks of events far, so that
// the run's own thread only walks over them. What is known of the products, and what remarks tell, follows
// the events that were given, not those that were read. Where a file is a pipe, whose rows are wanted as they
// come, or where no threads are, it is the feed and nothing else. Used by one thread.
class nxFeedAhead
{
public:
    explicit nxFeedAhead(const nxFeedOptions& options) : _options(options), _feed(options) {}
    ~nxFeedAhead() { _Stop(); }
    nxFeedAhead(const nxFeedAhead&) = delete;
    nxFeedAhead& operator=(const nxFeedAhead&) = delete;

    // These are as for nxFeed.
    [[nodiscard]] bool Open(const std::vector<std::string>& paths,
                            const std::vector<nxFeedProductTerms>& products);
    [[nodiscard]] const nxFeedEvent* Next()
    {
        if (_next == _until) [[unlikely]]
            return _NextBeyond();
        return _next++;
    }
    bool HasFailed() const { return (!_isAhead || _isAtEnd) && _feed.HasFailed(); }
    const nxFeedError& GetError() const { return _feed.GetError(); }
    const nxFeedProductTable& GetProducts() const { return *_known; }
    void NotePrice(std::string_view product, const nxDecimal& price);
    unsigned long long GetBytesConsumed() const
    {
        return _isAhead ? _current->bytesConsumed : _feed.GetBytesConsumed();
    }
    unsigned long long GetBytesTotal() const { return _feed.GetBytesTotal(); }
    // It reads no further then: there is no Next() after it.
    std::vector<std::string> GetRemarks();

private:
    // A change that came with an event, told by the event's place in the block. Behind them all: with the
    // end.
    template <class T>
    struct Change
    {
        std::size_t event;
        unsigned int index;  // of the file or the product
        T value;
    };
    // Belongs to one of the two threads at a time. Used again, it allocates nothing.
    struct Block
    {
        nxFeedEventList events;
        std::vector<Change<nxFeedProduct>> known;
        std::vector<Change<nxFeedProduct::Tally>> products;
        std::vector<Change<nxFeedReader::Tally>> files;
        unsigned long long bytesConsumed = 0;
        bool isLast = false;
        bool IsFull() const;
        void Clear();
    };
    static constexpr std::size_t BlockCount = 4;

    // On the thread, but for the first block.
    void _ReadAhead();
    template <class Do>
    void _Guard(Do part);
    void _Fill(Block& block);
    void _Read(Block& block);
    bool _HasChanges() const;
    [[gnu::cold]] void _NoteChanges(Block& block);
    void _NoteFile(Block& block, unsigned int file);
    // Counts what came with the first events of a block.
    void _Count(const Block& block, std::size_t count, nxFeedTally& tally) const;

    const nxFeedEvent* _NextBeyond();
    void _FollowProducts();
    void _WaitForNext();
    std::size_t _GetPlace() const { return static_cast<std::size_t>(_next - _GetBegin()); }
    const nxFeedEvent* _GetBegin() const { return _current->events.Get().data(); }
    const nxFeedEvent* _GetEnd() const { return _GetBegin() + _current->events.GetSize(); }
    void _Stop();

    const nxFeedOptions _options;
    nxFeed _feed;
    bool _isAhead = false;
    const nxFeedProductTable* _known = &_products;
    nxFeedProductTable _products;  // as they are known at the event that was given last

    std::array<Block, BlockCount> _blocks;  // a ring
    Block* _current = &_blocks[0];          // the one that events are taken of
    const nxFeedEvent* _next = nullptr;     // in it
    const nxFeedEvent* _until = nullptr;    // where more is to be done than to go on
    std::size_t _change = 0;                // of what is known, the next one in it
    bool _isBegun = false;
    bool _isAtEnd = false;

    std::thread _thread;
    std::optional<unsigned int> _file;              // of the event that was read last
    std::vector<unsigned long long> _fileVersions;  // of their tallies, as they were then
    nxFeedTally _tally;                             // of the blocks that were counted
    std::size_t _counted = 0;                       // of them
    std::exception_ptr _thrown;                     // behind the last block, such as for lack of memory
    std::mutex _mutex;                              // guards what follows
    std::condition_variable _changed;
    bool _isLeaving = false;
    std::size_t _filled = 1;  // blocks ever filled and ever given back, each at its count in the ring
    std::size_t _freed = 0;
};

#include "host/feed/nxFeedAhead.h"

#include <algorithm>
#include <utility>

namespace {

// Of a block: enough that the two threads seldom wait for each other, and few enough that a run needs little
// memory for them.
constexpr std::size_t MostEvents = 1024;
constexpr std::size_t MostLevels = 2048;
constexpr std::size_t MostKnown = 64;  // changes of what is known of products

}  // namespace

bool nxFeedAhead::Block::IsFull() const
{
    return events.GetSize() >= MostEvents || events.GetLevelCount() >= MostLevels ||
           known.size() >= MostKnown;
}

void nxFeedAhead::Block::Clear()
{
    events.Clear();
    known.clear();
    products.clear();
    files.clear();
}

bool nxFeedAhead::Open(const std::vector<std::string>& paths, const std::vector<nxFeedProductTerms>& products)
{
    _known = &std::as_const(_feed).GetProducts();
    if (!_feed.Open(paths, products)) return false;
    // The total is not known where one of them is a pipe.
    _isAhead = _options.readsAhead && _feed.GetBytesTotal() != 0;
    if (!_isAhead) return true;
    _feed.ParseEasyFilesInTurn();
    _products = nxFeedProductTable(_options.barPeriods);
    _products.Follow(*_known);
    _known = &_products;
    _tally = _feed.GetTally();
    for (const auto& reader : _feed.GetReaders())
        _fileVersions.push_back(reader->GetTallyVersion());
    _feed.GetProducts().TakeChanges([](unsigned int, const nxFeedProduct&, nxFeedProduct::Change) {});
    _Fill(*_current);
    _next = _until = _GetBegin();
    return true;
}

void nxFeedAhead::NotePrice(std::string_view product, const nxDecimal& price)
{
    _isAhead ? _products.NotePrice(product, price) : _feed.NotePrice(product, price);
}

// Where a block ends, at events with which something of products became known, and at the first two: a run
// that cannot begin asks for one only, and needs no thread.
const nxFeedEvent* nxFeedAhead::_NextBeyond()
{
    if (!_isAhead) return _feed.Next();
    const bool isFirst = !std::exchange(_isBegun, true);
    if (!isFirst && !_current->isLast && !_thread.joinable()) _thread = std::thread([this] { _ReadAhead(); });
    if (_next == _GetEnd() && !_current->isLast) _WaitForNext();
    _FollowProducts();
    if (_next == _GetEnd()) {
        _isAtEnd = true;
        if (_thrown) std::rethrow_exception(_thrown);
        return nullptr;
    }
    if (isFirst) _until = _next + 1;
    return _next++;
}

// Up to the next event, and finds where that is to be done again.
void nxFeedAhead::_FollowProducts()
{
    const std::vector<Change<nxFeedProduct>>& known = _current->known;
    for (; _change < known.size() && known[_change].event == _GetPlace(); ++_change)
        _products.Follow(known[_change].value);
    _until = _change < known.size() ? _GetBegin() + known[_change].event : _GetEnd();
}

void nxFeedAhead::_WaitForNext()
{
    std::unique_lock lock(_mutex);
    ++_freed;
    if (_filled - _freed <= BlockCount / 2) _changed.notify_all();
    _changed.wait(lock, [&] { return _freed != _filled; });
    _current = &_blocks[_freed % BlockCount];
    _next = _GetBegin();
    _change = 0;
}

void nxFeedAhead::_Stop()
{
    if (!_thread.joinable()) return;
    {
        const std::lock_guard lock(_mutex);
        _isLeaving = true;
    }
    _changed.notify_all();
    _thread.join();
}

void nxFeedAhead::_ReadAhead()
{
    for (std::size_t next = 1;; ++next) {
        {
            std::unique_lock lock(_mutex);
            if (next - _freed == BlockCount)
                _changed.wait(lock, [&] { return _isLeaving || next - _freed <= BlockCount / 2; });
            if (_isLeaving) return;
        }
        Block& block = _blocks[next % BlockCount];
        _Fill(block);
        bool isWaiting;
        const bool isLast = block.isLast;
        {
            const std::lock_guard lock(_mutex);
            _filled = next + 1;
            isWaiting = next == _freed;
        }
        if (isWaiting) _changed.notify_all();
        if (isLast) return;
    }
}

// What goes wrong, such as for lack of memory, is told behind the events that were read before.
template <class Do>
void nxFeedAhead::_Guard(Do part)
{
    try {
        if (!_thrown) part();
    } catch (...) {
        _thrown = std::current_exception();
    }
}

void nxFeedAhead::_Fill(Block& block)
{
    if (block.events.GetSize() != 0) {
        _Guard([&] { _Count(block, block.events.GetSize(), _tally); });
        ++_counted;
    }
    block.Clear();
    _Guard([&] { _Read(block); });
    if (_thrown) block.isLast = true;
    block.bytesConsumed = _feed.GetBytesConsumed();
    block.events.Finish();
}

void nxFeedAhead::_Read(Block& block)
{
    block.events.Reserve(MostEvents);
    while (!block.IsFull()) {
        const nxFeedEvent* const event = _feed.Next();
        if (_HasChanges()) _NoteChanges(block);
        block.isLast = event == nullptr;
        if (block.isLast) return;
        block.events.Add(*event);
        _file = event->file;
    }
}

// Of products or of the file of the event before, in which the feed has read on.
bool nxFeedAhead::_HasChanges() const
{
    return !_file || _feed.GetReaders()[*_file]->GetTallyVersion() != _fileVersions[*_file] ||
           _feed.GetProducts().HasChanges();
}

void nxFeedAhead::_NoteChanges(Block& block)
{
    const std::size_t event = block.events.GetSize();
    _feed.GetProducts().TakeChanges(
        [&](unsigned int index, const nxFeedProduct& product, nxFeedProduct::Change change) {
            if (change == nxFeedProduct::Change::Known) block.known.push_back({event, index, product});
            block.products.push_back({event, index, product.GetTally()});
        });
    // The feed has read on in the file of the event before; to begin, in all.
    if (_file)
        _NoteFile(block, *_file);
    else
        for (unsigned int file = 0; file < _fileVersions.size(); ++file)
            _NoteFile(block, file);
}

void nxFeedAhead::_NoteFile(Block& block, unsigned int file)
{
    const nxFeedReader& reader = *_feed.GetReaders()[file];
    const unsigned long long version = reader.GetTallyVersion();
    if (version == _fileVersions[file]) return;
    _fileVersions[file] = version;
    block.files.push_back({block.events.GetSize(), file, reader.GetTally()});
}

void nxFeedAhead::_Count(const Block& block, std::size_t count, nxFeedTally& tally) const
{
    if (_fileVersions.size() > 1)
        for (std::size_t i = 0; i < std::min(count, block.events.GetSize()); ++i)
            tally.overlaps.Note(block.events.Get()[i]);
    for (const auto& change : block.files)
        if (change.event < count) tally.files[change.index] = change.value;
    for (const auto& change : block.products) {
        if (change.event >= count) break;
        if (change.index >= tally.products.size()) tally.products.resize(change.index + 1);
        tally.products[change.index] = change.value;
    }
}

std::vector<std::string> nxFeedAhead::GetRemarks()
{
    if (!_isAhead) return _feed.GetRemarks();
    _Stop();
    nxFeedTally tally = _tally;
    for (std::size_t block = _counted; block < _freed; ++block)
        _Count(_blocks[block % BlockCount], _blocks[block % BlockCount].events.GetSize(), tally);
    _Count(*_current, _GetPlace() + (_isAtEnd ? 1 : 0), tally);
    return _feed.GetRemarks(tally);
}

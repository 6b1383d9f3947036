#include "host/feed/nxFeedBlocks.h"

bool nxFeedBlocks::Open(const nxFeedOptions& options, const std::vector<std::string>& paths,
                        const std::vector<nxFeedProductTerms>& products)
{
    if (_feed != nullptr) return !_feed->HasFailed() || _events.GetSize() != 0;
    _feed = std::make_unique<nxFeed>(options);
    _products = nxFeedProductTable(options.barPeriods);
    if (!_feed->Open(paths, products)) {
        _isLast = true;
        return false;
    }
    _Read();
    return !_feed->HasFailed() || _events.GetSize() != 0;
}

void nxFeedBlocks::Advance()
{
    ++_number;
    _Read();
}

// The runs note the same prices, each when it begins: those that come later find them noted.
void nxFeedBlocks::NotePrice(std::string_view product, const nxDecimal& price)
{
    _feed->NotePrice(product, price);
    _products.NotePrice(product, price);
}

// From the event that is held to the one after which the block is full, or what is known of products changes.
void nxFeedBlocks::_Read()
{
    _events.Clear();
    if (_held == nullptr) _held = _feed->Next();
    if (_version != _feed->GetProducts().GetVersion()) {
        _products.Follow(_feed->GetProducts());
        _version = _feed->GetProducts().GetVersion();
    }
    while (_held != nullptr && _events.GetSize() < _size && _version == _feed->GetProducts().GetVersion()) {
        _events.Add(*_held);
        _held = _events.GetSize() < _size ? _feed->Next() : nullptr;
    }
    _isLast = _held == nullptr && _events.GetSize() < _size;
    _events.Finish();
}

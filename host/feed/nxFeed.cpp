#include "host/feed/nxFeed.h"

#include <fmt/format.h>

#include <algorithm>

bool nxFeed::Open(const std::vector<std::string>& paths, const std::vector<nxFeedProductTerms>& products)
{
    for (const nxFeedProductTerms& product : products)
        _products.Add(product);
    if (std::ranges::count(paths, "-") > 1) {
        _error = {"-", 0, 0, "standard input can be read only once"};
        return false;
    }
    for (const std::string& path : paths) {
        _readers.push_back(std::make_unique<nxFeedReader>(path, static_cast<unsigned int>(_readers.size()),
                                                          _products, _options));
        if (!_readers.back()->Open()) {
            _error = _readers.back()->GetError();
            return false;
        }
    }
    return true;
}

const nxFeedEvent* nxFeed::Next()
{
    if (HasFailed()) return nullptr;
    if (!_isStarted) {
        _isStarted = true;
        for (const auto& reader : _readers) {
            const nxFeedEvent* event = nullptr;
            if (!_Advance(*reader, event)) return nullptr;
            if (event != nullptr) _heads.push_back({event, reader.get()});
        }
        std::ranges::make_heap(_heads, [](const Head& a, const Head& b) { return _IsBefore(b, a); });
    } else if (!_heads.empty()) {
        // Only now: the front's event belonged to the caller until this call.
        Head& front = _heads.front();
        if (!_Advance(*front.reader, front.event)) return nullptr;
        if (front.event == nullptr) {
            front = _heads.back();
            _heads.pop_back();
        }
        _SiftDown();
    }
    return _heads.empty() ? nullptr : _heads.front().event;
}

void nxFeed::NotePrice(std::string_view product, const nxDecimal& price)
{
    _products.Get(_products.Add(product)).NotePrice({price.GetMantissa(), price.GetDecimalPlaces(), true});
}

std::vector<std::string> nxFeed::GetRemarks() const
{
    std::vector<std::string> remarks;
    const auto count = [](unsigned long long number, const char* what) {
        return std::to_string(number) + " " + what + (number == 1 ? "" : "s");
    };
    for (const auto& reader : _readers) {
        if (reader->GetBadRowCount() != 0)
            remarks.push_back(reader->GetPath() + ": " + count(reader->GetBadRowCount(), "bad row") +
                              " skipped");
        else if (reader->GetRowCount() == 0)
            remarks.push_back(reader->GetPath() + ": no rows");
        if (reader->HasOpenEnd())
            remarks.push_back(reader->GetPath() + ": the last line has no end; the file may be cut");
        const nxFeedReader::Gaps& gaps = reader->GetGaps();
        if (gaps.count != 0) {
            const long long seconds = gaps.longest / 1'000'000'000;
            remarks.push_back(
                fmt::format("{}:{}: {} between bars, the longest of {}:{:02}:{:02} in front of this line",
                            reader->GetPath(), gaps.line, count(gaps.count, "gap"), seconds / 3600,
                            seconds / 60 % 60, seconds % 60));
        }
    }
    for (unsigned int i = 0; i < _products.GetCount(); ++i) {
        const nxFeedProduct& product = _products.Get(i);
        if (product.GetCrossedCount() != 0)
            remarks.push_back(product.GetName() + ": " + count(product.GetCrossedCount(), "crossed quote") +
                              " (bid above ask)");
        if (product.GetLockedCount() != 0)
            remarks.push_back(product.GetName() + ": " + count(product.GetLockedCount(), "locked quote") +
                              " (bid equal to ask)");
    }
    return remarks;
}

unsigned long long nxFeed::GetBytesConsumed() const
{
    unsigned long long sum = 0;
    for (const auto& reader : _readers)
        sum += reader->GetBytesConsumed();
    return sum;
}

unsigned long long nxFeed::GetBytesTotal() const
{
    unsigned long long sum = 0;
    for (const auto& reader : _readers) {
        const unsigned long long total = reader->GetBytesTotal();
        if (total == 0) return 0;
        sum += total;
    }
    return sum;
}

bool nxFeed::_IsBefore(const Head& a, const Head& b)
{
    return a.event->time != b.event->time ? a.event->time < b.event->time : a.event->file < b.event->file;
}

// False: the reader failed, and with it the feed. A null event is the reader's end.
bool nxFeed::_Advance(nxFeedReader& reader, const nxFeedEvent*& event)
{
    event = reader.Next();
    if (event != nullptr || !reader.GetError().IsSet()) return true;
    _error = reader.GetError();
    return false;
}

// Brings the front, whose event has changed, to its place.
void nxFeed::_SiftDown()
{
    for (std::size_t parent = 0;;) {
        std::size_t least = parent;
        for (std::size_t child = 2 * parent + 1; child < std::min(2 * parent + 3, _heads.size()); ++child) {
            if (_IsBefore(_heads[child], _heads[least])) least = child;
        }
        if (least == parent) return;
        std::swap(_heads[parent], _heads[least]);
        parent = least;
    }
}

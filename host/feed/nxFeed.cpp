#include "host/feed/nxFeed.h"

#include <fmt/format.h>

#include <algorithm>

#include "base/time/nxTime.h"

namespace {

std::string Count(unsigned long long number, const char* what)
{
    return std::to_string(number) + " " + what + (number == 1 ? "" : "s");
}

}  // namespace

bool nxFeed::Open(const std::vector<std::string>& paths, const std::vector<nxFeedProductTerms>& products)
{
    for (const nxFeedProductTerms& product : products)
        _products.Add(product);
    for (const auto& [name, lotSize] : _options.lotSizes)
        _products.Get(_products.Add(name)).SetFoundLots(lotSize);
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

void nxFeed::ParseEasyFilesInTurn()
{
    for (const auto& reader : _readers)
        reader->ParseInTurnIfEasy();
}

// False: as for _Advance.
bool nxFeed::_Start()
{
    _isStarted = true;
    for (const auto& reader : _readers) {
        const nxFeedEvent* event = nullptr;
        if (!_Advance(*reader, event)) return false;
        if (event != nullptr) _heads.push_back({event, reader.get()});
    }
    std::ranges::make_heap(_heads, [](const Head& a, const Head& b) { return _IsBefore(b, a); });
    return true;
}

const nxFeedEvent* nxFeed::Next()
{
    if (HasFailed()) return nullptr;
    if (!_isStarted) {
        if (!_Start()) return nullptr;
    } else if (!_heads.empty()) {
        // Only now: the front's event belonged to the caller until this call.
        Head& front = _heads.front();
        if (!_Advance(*front.reader, front.event)) return nullptr;
        if (front.event == nullptr) {
            front = _heads.back();
            _heads.pop_back();
        }
        if (_heads.size() > 1) _SiftDown();
    }
    if (_heads.empty()) return nullptr;
    const nxFeedEvent* const event = _heads.front().event;
    if (_readers.size() > 1) _overlaps.Note(*event);
    return event;
}

void nxFeed::NotePrice(std::string_view product, const nxDecimal& price)
{
    _products.NotePrice(product, price);
}

void nxFeed::_RemarkForm(const nxFeedReader& reader, const nxFeedReader::Tally& tally,
                         std::vector<std::string>& remarks)
{
    const std::string text = reader.GetDescription();
    if (text.empty()) return;
    remarks.push_back(reader.GetPath() + ": " + text);
    const nxFileForm& form = reader.GetForm();
    if (tally.skipped != 0)
        remarks.push_back(fmt::format("{}: {} {} nothing that counts, and {} left out", reader.GetPath(),
                                      Count(tally.skipped, "row"), tally.skipped == 1 ? "holds" : "hold",
                                      tally.skipped == 1 ? "was" : "were"));
    if (const unsigned long long twice = form.time.GetTwiceCount(); twice != 0)
        remarks.push_back(
            fmt::format("{}: {} of local times that clocks show twice; the first was taken where the rows "
                        "had not come farther",
                        reader.GetPath(), Count(twice, "row")));
    if (const unsigned long long never = form.time.GetNeverCount(); never != 0)
        remarks.push_back(
            fmt::format("{}: {} of local times that clocks leave out, taken as the moment of the change",
                        reader.GetPath(), Count(never, "row")));
}

void nxFeed::_RemarkFile(const nxFeedReader& reader, const nxFeedReader::Tally& tally,
                         std::vector<std::string>& remarks)
{
    _RemarkForm(reader, tally, remarks);
    const std::string& path = reader.GetPath();
    if (tally.badRows != 0)
        remarks.push_back(path + ": " + Count(tally.badRows, "bad row") + " skipped");
    else if (!tally.hasRows)
        remarks.push_back(path + ": no rows");
    if (tally.hasOpenEnd) remarks.push_back(path + ": the last line has no end; the file may be cut");
    const nxFeedReader::Gaps& gaps = tally.gaps;
    if (gaps.count == 0) return;
    const long long seconds = gaps.longest / nxTime::NanosecondsPerSecond;
    remarks.push_back(
        fmt::format("{}:{}: {} between bars, the longest of {}:{:02}:{:02} in front of this line", path,
                    gaps.line, Count(gaps.count, "gap"), seconds / 3600, seconds / 60 % 60, seconds % 60));
}

void nxFeed::_RemarkProduct(const nxFeedProduct& product, const nxFeedProduct::Tally& tally,
                            std::vector<std::string>& remarks)
{
    if (product.HasFoundLots())
        remarks.push_back(
            fmt::format("{0}: one lot is {1} of the recorded size, and its point value {1}; "
                        "--products tells another",
                        product.GetName(), product.GetLotSize().GetAsString()));
    if (tally.rounded != 0)
        remarks.push_back(fmt::format("{}: {} rounded to lots of {}, by {:.2g} % of their sum",
                                      product.GetName(), Count(tally.rounded, "size"),
                                      product.GetLotSize().GetAsString(),
                                      100 * tally.roundedOff / tally.roundedSize));
    if (tally.crossed != 0)
        remarks.push_back(product.GetName() + ": " + Count(tally.crossed, "crossed quote") +
                          " (bid above ask)");
    if (tally.locked != 0)
        remarks.push_back(product.GetName() + ": " + Count(tally.locked, "locked quote") +
                          " (bid equal to ask)");
}

nxFeedTally nxFeed::GetTally() const
{
    nxFeedTally tally;
    for (const auto& reader : _readers)
        tally.files.push_back(reader->GetTally());
    tally.products.reserve(_products.GetCount());
    for (unsigned int i = 0; i < _products.GetCount(); ++i)
        tally.products.push_back(_products.Get(i).GetTally());
    tally.overlaps = _overlaps;
    return tally;
}

std::vector<std::string> nxFeed::GetRemarks(const nxFeedTally& tally) const
{
    std::vector<std::string> remarks;
    for (std::size_t i = 0; i < tally.files.size(); ++i)
        _RemarkFile(*_readers[i], tally.files[i], remarks);
    for (const nxFeedOverlaps::Overlap& overlap : tally.overlaps.Get())
        remarks.push_back(fmt::format(
            "{}: {} of {} {} among those of {}; all are delivered", _products.Get(overlap.product).GetName(),
            Count(overlap.rows, overlap.kind), _readers[overlap.file]->GetPath(),
            overlap.rows == 1 ? "lies" : "lie", _readers[overlap.among]->GetPath()));
    for (unsigned int i = 0; i < tally.products.size(); ++i)
        _RemarkProduct(_products.Get(i), tally.products[i], remarks);
    if (std::ranges::any_of(_readers, [](const auto& reader) {
            return reader->GetKind() == nxFeedKind::Bar && !reader->GetForm().isForeign;
        }))
        remarks.push_back(_options.barsBearStart.value_or(false)
                              ? "the times of bars are their starts (--bar-time start)"
                              : "the times of bars are their ends (--bar-time end)");
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
    if (a.event->time != b.event->time) return a.event->time < b.event->time;
    // A bar is the past of its time, a quote its present.
    const bool isBar = a.event->kind == nxFeedKind::Bar;
    if (isBar != (b.event->kind == nxFeedKind::Bar)) return isBar;
    return a.event->file < b.event->file;
}

// False: the reader failed, and with it the feed. A null event is the reader's end.
bool nxFeed::_Advance(nxFeedReader& reader, const nxFeedEvent*& event)
{
    event = reader.Next();
    if (event != nullptr || !reader.GetError().IsSet()) return true;
    _error = reader.GetError();
    return false;
}

// Brings the front, whose event has changed, to its place among the others.
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

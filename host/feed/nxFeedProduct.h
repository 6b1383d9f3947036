#pragma once

#include <algorithm>
#include <array>
#include <string>
#include <utility>
#include <vector>

#include "base/values/nxDecimal.h"
#include "host/feed/nxCsvRow.h"
#include "host/feed/nxLotScale.h"

// Which products of a table have changed.
struct nxFeedProductChanges
{
    // Counted up when what the jobs of a run can know of a product changes, but for the rows so far.
    unsigned long long version = 0;
    // Products that have changed since they were taken from here, also in what remarks tell; each once.
    std::vector<unsigned int> products;
};

// A product of the recorded data: what is known of it and what has been read of it. Owned by the
// nxFeedProductTable and written by the readers as rows pass.
class nxFeedProduct
{
public:
    // index: in its table. changes: of the table; outlives the product.
    nxFeedProduct(std::string name, unsigned int index, nxFeedProductChanges& changes)
        : _name(std::move(name)), _index(index), _changes(&changes)
    {
        _NoteKnown();
    }

    // What a person should hear of its rows.
    struct Tally
    {
        // Sizes that were rounded, their sum and by how much; in recorded units.
        unsigned long long rounded = 0;
        double roundedSize = 0, roundedOff = 0;
        // Rows with a bid or an ask after which the bid stood above the ask, or met it.
        unsigned long long crossed = 0, locked = 0;
    };

    [[nodiscard]] const std::string& GetName() const { return _name; }

    // As described; else the greatest power of ten, at most 1, of which all prices seen so far are multiples.
    [[nodiscard]] const nxDecimal& GetTickSize() const { return _tickSize; }
    [[nodiscard]] const nxDecimal& GetLotSize() const { return _lots.GetLotSize(); }

    // The times of its bars in their file are their starts.
    [[nodiscard]] bool DoBarsBearStart() const { return _doBarsBearStart; }
    // A file of it has bids or asks, or may have.
    [[nodiscard]] bool HasQuoteColumns() const { return _hasQuoteColumns; }
    // Whether any file holds rows of this kind, as far as it was looked into.
    [[nodiscard]] bool Has(nxFeedKind kind) const { return _hasKind[static_cast<std::size_t>(kind)]; }
    // Rows delivered so far.
    [[nodiscard]] unsigned long long GetRowCount(nxFeedKind kind) const
    {
        return _rows[static_cast<std::size_t>(kind)];
    }
    // Nanoseconds between its bars, as given; else the least distance between two of those that were looked
    // at in front; 0 where there were none.
    [[nodiscard]] long long GetBarPeriod() const { return _barPeriod; }
    [[nodiscard]] bool IsBarPeriodGiven() const { return _isBarPeriodGiven; }
    [[nodiscard]] const Tally& GetTally() const { return _tally; }

    // For nxFeedProductTable and nxFeedReader.

    void SetTickSize(const nxDecimal& tickSize)
    {
        _tickSize = tickSize;
        _isTickGiven = true;
        _NoteKnown();
    }
    void SetLotSize(const nxDecimal& lotSize)
    {
        _lots = nxLotScale(lotSize);
        _NoteKnown();
    }
    // Its lot size is 1 unless the description says otherwise.
    void SetDescribed() { _isDescribed = true; }
    // A lot that makes whole numbers of the sizes seen so far, of a product that nothing describes.
    // isRounding: one that holds the largest of them with room to spare, where none does so exactly.
    void FindLots(bool isRounding);
    // One that was found before, of a product that nothing describes.
    void SetFoundLots(const nxDecimal& lotSize)
    {
        if (_isDescribed) return;
        SetLotSize(lotSize);
        _hasFoundLots = true;
    }
    // By FindLots or SetFoundLots, and not 1.
    [[nodiscard]] bool HasFoundLots() const { return _hasFoundLots; }
    // A size that was rounded to lots, and by how much; both in recorded units.
    void NoteRounded(double size, double lost)
    {
        ++_tally.rounded;
        _tally.roundedSize += size;
        _tally.roundedOff += lost;
        _Note(Change::Tally);
    }
    [[nodiscard]] const nxLotScale& GetLots() const { return _lots; }
    void NoteBarStamp(bool isStart) { _Set(_doBarsBearStart, isStart); }
    void NoteQuoteColumns() { _Set(_hasQuoteColumns, true); }
    void NoteKind(nxFeedKind kind) { _Set(_hasKind[static_cast<std::size_t>(kind)], true); }
    void CountRows(nxFeedKind kind, unsigned int rows) { _rows[static_cast<std::size_t>(kind)] += rows; }
    // A price seen, for the tick size.
    void NotePrice(const nxDecimal& price)
    {
        if (price.GetDecimalPlaces() > _pricePlaces && !_isTickGiven) _NoteFinerPrice(price);
    }
    // A size seen, for the lot size to suggest.
    void NoteSize(const nxDecimal& size)
    {
        if (size.GetDecimalPlaces() > _sizePlaces)
            _sizePlaces = std::max(_sizePlaces, _GetSignificantPlaces(size, _sizePlaces));
        _NoteLargest(size);
    }
    [[nodiscard]] unsigned char GetSizePlaces() const { return _sizePlaces; }
    // The best prices after a row that gave one of them; a number not given leaves the earlier one.
    void NoteQuote(const nxDecimal& bid, const nxDecimal& ask);
    [[nodiscard]] bool HasBid() const { return _bid.IsValid(); }
    [[nodiscard]] bool HasAsk() const { return _ask.IsValid(); }
    [[nodiscard]] bool HasLast() const { return _hasLast; }
    void SetBarPeriod(long long period)
    {
        _barPeriod = period;
        _isBarPeriodGiven = true;
        _NoteKnown();
    }
    // The time of a bar's row, of those that are looked at in front.
    void NoteBarTime(long long time)
    {
        long long distance = 0;
        if (_hasBarTime && !_isBarPeriodGiven && !__builtin_sub_overflow(time, _lastBarTime, &distance) &&
            distance > 0 && (_barPeriod == 0 || distance < _barPeriod))
        {
            _barPeriod = distance;
            _NoteKnown();
        }
        _lastBarTime = time;
        _hasBarTime = true;
    }
    void NoteLast() { _Set(_hasLast, true); }

    // Since it was taken last: nothing, what remarks tell, or what jobs can know.
    enum class Change : unsigned char { None, Tally, Known };
    Change TakeChange() { return std::exchange(_change, Change::None); }
    // Becomes what that one is, which another table has; but a finer price that was noted here counts.
    void Follow(const nxFeedProduct& other);

private:
    void _Set(bool& member, bool value)
    {
        if (member == value) return;
        member = value;
        _NoteKnown();
    }
    void _NoteKnown()
    {
        ++_changes->version;
        _Note(Change::Known);
    }
    void _Note(Change change)
    {
        if (_change == Change::None) _changes->products.push_back(_index);
        _change = std::max(_change, change);
    }
    // The places of the number without the zeros at its end, but not below `least`.
    static unsigned char _GetSignificantPlaces(const nxDecimal& number, unsigned char least);
    void _NoteFinerPrice(const nxDecimal& price);
    void _NoteLargest(const nxDecimal& size);

    std::string _name;
    unsigned int _index;
    nxFeedProductChanges* _changes;
    Change _change = Change::None;
    nxDecimal _tickSize = nxDecimalOne;
    bool _isTickGiven = false;
    bool _hasLast = false;
    unsigned char _pricePlaces = 0;
    unsigned char _sizePlaces = 0;
    nxDecimal _largestSize = nxDecimalZero;
    bool _isDescribed = false;
    bool _hasFoundLots = false;
    bool _doBarsBearStart = false;
    bool _hasQuoteColumns = false;
    nxDecimal _bid, _ask;  // null until a row gave one
    nxLotScale _lots;
    bool _isBarPeriodGiven = false;
    bool _hasBarTime = false;
    long long _lastBarTime = 0;
    long long _barPeriod = 0;
    std::array<bool, 3> _hasKind{};
    std::array<unsigned long long, 3> _rows{};
    Tally _tally;
};

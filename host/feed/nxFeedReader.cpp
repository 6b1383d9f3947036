#include "host/feed/nxFeedReader.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "host/feed/nxFeedTime.h"

nxFeedReader::nxFeedReader(const std::string& path, unsigned int index, nxFeedProductTable& products,
                           const nxFeedOptions& options)
    : _path(path),
      _products(products),
      _options(options),
      _csv(path, options.interrupted, options.form, options.readsAhead),
      _lastTime(std::numeric_limits<long long>::min()),
      _lastBarEnd(_lastTime)
{
    _event.file = index;
}

bool nxFeedReader::Open()
{
    if (!_csv.Open()) {
        _error = _csv.GetError();
        _isOver = true;
        return false;
    }
    _kind = _event.kind = _csv.GetFormat().kind;
    if (_kind == nxFeedKind::Bar) _event.bar = {};
    if (_kind == nxFeedKind::Depth) _event.levels = {};
    _barsBearStart = _options.barsBearStart.value_or(GetForm().stamp == nxFeedLayout::Stamp::Start);
    _Peek();
    return true;
}

const nxFeedEvent* nxFeedReader::Next()
{
    if (_kind == nxFeedKind::Depth) return _NextDepth();
    if (!_NextRow()) return nullptr;
    _product->CountRows(_kind, 1);
    _event.time = _kind == nxFeedKind::Bar && _barsBearStart ? _lastBarEnd : _row->time;
    _event.product = _productIndex;
    _event.line = _row->line;
    return &_event;
}

// Bad rows are passed over here: they are told when their turn comes.
void nxFeedReader::_Peek()
{
    using enum nxFeedColumnType;
    for (const nxCsvRow& row : _csv.GetFirstRows()) {
        if (row.isBad || row.product.empty()) continue;
        if (!_firstTime) _firstTime = row.time;
        nxFeedProduct& product = _products.Get(_products.Add(row.product));
        _NoteProduct(product);
        if (_kind == nxFeedKind::Bar) product.NoteBarTime(row.time);
        for (const nxFeedColumn& column : _csv.GetFormat().columns) {
            if (column.type != Number || !row.numbers[column.slot].IsValid()) continue;
            if (column.isSize)
                product.NoteSize(row.numbers[column.slot]);
            else
                product.NotePrice(row.numbers[column.slot]);
        }
    }
    for (unsigned int i = 0; i < _products.GetCount(); ++i)
        _products.Get(i).FindLots(_options.roundsVolumes);
}

void nxFeedReader::_NoteProduct(nxFeedProduct& product) const
{
    product.NoteKind(_kind);
    if (_kind == nxFeedKind::Bar) product.NoteBarStamp(_barsBearStart);
    if (_kind == nxFeedKind::Quote && std::ranges::any_of(GetForm().columns, [](const nxFeedColumn& column) {
            return column.name == "bid" || column.name == "ask";
        }))
        product.NoteQuoteColumns();
}

// Reads up to the next good row. False: the end, or an error that is kept.
bool nxFeedReader::_NextRow()
{
    while (!_isOver) {
        const nxCsvReader::Result result = _csv.Next();
        if (result == nxCsvReader::Result::Row) [[likely]] {
            _row = &_csv.GetRow();
            if (_Judge()) [[likely]] {
                ++_rowCount;
                _lastTime = _row->time;
                return true;
            }
        }
        if (!_PassOver(result)) break;
    }
    return false;
}

// What is no good row. False: there is nothing behind it.
bool nxFeedReader::_PassOver(nxCsvReader::Result result)
{
    const nxFeedError& error = result == nxCsvReader::Result::Row ? _rejection : _csv.GetError();
    const bool isRowBad = result == nxCsvReader::Result::Row || result == nxCsvReader::Result::Bad;
    // Nothing is wrong with a row of which only the period is not known, so none is skipped for it.
    if (isRowBad && _options.isLenient && !_lacksPeriod) {
        ++_badRowCount;
        if (_badRows.size() < MaxKeptErrors) _badRows.push_back(error);
        return true;
    }
    _isOver = true;
    if (result != nxCsvReader::Result::End) _error = error;
    return false;
}

bool nxFeedReader::_Judge()
{
    if (_row->isProductNew || _product == nullptr) {
        if (_row->product.empty()) return _Reject("product", "is empty");
        _productIndex = _products.Add(_row->product);
        _product = &_products.Get(_productIndex);
        _NoteProduct(*_product);
    }
    if (_row->time < _lastTime && !_options.takesRowsAsTheyStand)
        return _Reject("time", "runs backwards: " + nxFeedTime::GetAsString(_row->time) + " after " +
                                   nxFeedTime::GetAsString(_lastTime));
    switch (_kind) {
        case nxFeedKind::Quote:
            return _JudgeQuote(*_product);
        case nxFeedKind::Depth:
            return _JudgeLevel(*_product);
        case nxFeedKind::Bar:
            break;
    }
    return _JudgeBar(*_product);
}

bool nxFeedReader::_JudgeQuote(nxFeedProduct& product)
{
    using namespace nxFeedSlot;
    nxFeedQuote& quote = _event.quote;
    if (!_GetPrice(product, Bid, quote.bid) || !_GetLots(product, BidVolume, quote.bidVolume) ||
        !_GetPrice(product, Ask, quote.ask) || !_GetLots(product, AskVolume, quote.askVolume) ||
        !_GetPrice(product, Last, quote.last) || !_GetLots(product, LastVolume, quote.lastVolume))
        return false;

    // A volume on its own changes what an earlier row gave, so there must have been one.
    if (quote.bidVolume.IsValid() && !quote.bid.IsValid() && !product.HasBid())
        return _Reject("bidVolume", "no row so far gave a bid of " + product.GetName());
    if (quote.askVolume.IsValid() && !quote.ask.IsValid() && !product.HasAsk())
        return _Reject("askVolume", "no row so far gave an ask of " + product.GetName());
    if (quote.lastVolume.IsValid() && !quote.last.IsValid() && !product.HasLast())
        return _Reject("lastVolume", "no row so far gave a last of " + product.GetName());

    if (quote.IsTrade())
        quote.side = _row->side == nxCsvSide::Buy    ? nxBuySell_Buy
                     : _row->side == nxCsvSide::Sell ? nxBuySell_Sell
                                                     : nxEnum_Undefined;
    else if (_row->side == nxCsvSide::None)
        quote.side = nxEnum_NoChange;
    else
        return _Reject("side", "stands without last and lastVolume");

    if (quote.last.IsValid()) product.NoteLast();
    if (quote.bid.IsValid() || quote.ask.IsValid()) product.NoteQuote(quote.bid, quote.ask);
    return true;
}

bool nxFeedReader::_JudgeLevel(nxFeedProduct& product)
{
    if (_row->side == nxCsvSide::None) return _Reject("side", "is empty");
    _level.side = _row->side == nxCsvSide::Buy ? nxSide::Buy : nxSide::Sell;
    for (const unsigned int slot : {nxFeedSlot::Price, nxFeedSlot::LevelVolume}) {
        if (!_row->numbers[slot].IsValid()) return _Reject(_GetColumnName(slot), "is empty");
    }
    return _GetPrice(product, nxFeedSlot::Price, _level.price) &&
           _GetLots(product, nxFeedSlot::LevelVolume, _level.volume);
}

bool nxFeedReader::_JudgeBar(nxFeedProduct& product)
{
    using namespace nxFeedSlot;
    const auto isGiven = [this](unsigned int slot) { return _row->numbers[slot].IsValid(); };
    if (!isGiven(nxFeedSlot::Open) || !isGiven(High) || !isGiven(Low) || !isGiven(Close) ||
        (!isGiven(BarVolume) && !GetForm().isForeign))
        return _RejectEmpty();
    nxFeedBar& bar = _event.bar;
    if (!_GetPrice(product, nxFeedSlot::Open, bar.open) || !_GetPrice(product, High, bar.high) ||
        !_GetPrice(product, Low, bar.low) || !_GetPrice(product, Close, bar.close) ||
        !_GetLots(product, BarVolume, bar.volume))
        return false;
    if (!bar.volume.IsValid()) bar.volume.SetValue(0);  // a publisher without volumes
    if (bar.open < bar.low || bar.open > bar.high || bar.close < bar.low || bar.close > bar.high)
        return _RejectBar(bar);
    return _JudgeBarTime(product);
}

// The first number that a bar lacks.
bool nxFeedReader::_RejectEmpty()
{
    unsigned int slot = nxFeedSlot::Open;
    while (_row->numbers[slot].IsValid())
        ++slot;
    return _Reject(_GetColumnName(slot), "is empty");
}

bool nxFeedReader::_RejectBar(const nxFeedBar& bar)
{
    if (bar.high < bar.low)
        return _Reject("high", bar.high.GetAsString() + " is below the low " + bar.low.GetAsString());
    const bool isOpen = bar.open < bar.low || bar.open > bar.high;
    return _Reject(isOpen ? "open" : "close", (isOpen ? bar.open : bar.close).GetAsString() +
                                                  " is outside of the bar, " + bar.low.GetAsString() +
                                                  " to " + bar.high.GetAsString());
}

bool nxFeedReader::_JudgeBarTime(const nxFeedProduct& product)
{
    constexpr long long never = std::numeric_limits<long long>::min();
    if (_productIndex >= _barTimes.size()) [[unlikely]]
        _barTimes.resize(_productIndex + 1, never);
    long long& last = _barTimes[_productIndex];
    if (last != never && !_options.takesRowsAsTheyStand) {
        if (last == _row->time) return _RejectSecondBar(product);
        long long distance = 0;
        if (__builtin_sub_overflow(_row->time, last, &distance))
            distance = std::numeric_limits<long long>::max();
        if (product.GetBarPeriod() != 0 && distance > product.GetBarPeriod()) _NoteGap(distance);
    }
    if (_barsBearStart && !_FindBarEnd(product)) return false;
    last = _row->time;
    return true;
}

bool nxFeedReader::_RejectSecondBar(const nxFeedProduct& product)
{
    return _Reject("time",
                   "a second bar of " + product.GetName() + " at " + nxFeedTime::GetAsString(_row->time));
}

void nxFeedReader::_NoteGap(long long distance)
{
    ++_gaps.count;
    if (distance > _gaps.longest) _gaps = {_gaps.count, distance, _row->line};
}

bool nxFeedReader::_FindBarEnd(const nxFeedProduct& product)
{
    _lacksPeriod = product.GetBarPeriod() == 0;
    if (_lacksPeriod)
        return _Reject("time", "the end of the bar is not known: the first rows have no two bars of " +
                                   product.GetName() + "; --bar-period " + product.GetName() +
                                   "=PERIOD tells it, such as 1m");
    long long end = 0;
    if (__builtin_add_overflow(_row->time, product.GetBarPeriod(), &end) || end > nxFeedTime::Latest)
        return _Reject("time", "the end of the bar is beyond all times");
    if (end < _lastBarEnd && !_options.takesRowsAsTheyStand)
        return _Reject("time", "the bar ends before the one in front: " + nxFeedTime::GetAsString(end) +
                                   " after " + nxFeedTime::GetAsString(_lastBarEnd) +
                                   "; give bars of different periods a file each");
    _lastBarEnd = end;
    return true;
}

bool nxFeedReader::_Reject(std::string_view column, const std::string& reason)
{
    _rejection = _csv.MakeError(column, reason);
    return false;
}

// A cell left empty is no change. Always true, so that the cells of a row read as one condition.
bool nxFeedReader::_GetPrice(nxFeedProduct& product, unsigned int slot, nxDecimal& price)
{
    price = _row->numbers[slot];
    product.NotePrice(price);
    return true;
}

bool nxFeedReader::_GetLots(nxFeedProduct& product, unsigned int slot, nxVolume& lots)
{
    const nxDecimal& size = _row->numbers[slot];
    if (!size.IsValid()) {
        lots.SetNoChange();
        return true;
    }
    unsigned int count = 0;
    if (size.GetMantissa() < 0 || _options.takesRowsAsTheyStand ||
        !product.GetLots().GetLots(size.GetMantissa(), size.GetDecimalPlaces(), count))
        return _GetOtherLots(product, slot, lots);
    lots.SetValue(count);
    return true;
}

// Of a size that is none, counts for something else, or is no whole number of lots.
bool nxFeedReader::_GetOtherLots(nxFeedProduct& product, unsigned int slot, nxVolume& lots)
{
    const nxDecimal& size = _row->numbers[slot];
    const long long mantissa = size.GetMantissa();
    const unsigned char places = size.GetDecimalPlaces();
    if (mantissa < 0) return _Reject(_GetColumnName(slot), "size " + size.GetAsString() + " is negative");
    if (_options.takesRowsAsTheyStand) {
        lots.SetValue(mantissa != 0 ? 1 : 0);
        return true;
    }
    if (!_options.roundsVolumes)
        return _Reject(_GetColumnName(slot),
                       product.GetLots().GetRefusal(mantissa, places, product.GetSizePlaces()));
    const unsigned int count = product.GetLots().GetRounded(mantissa, places);
    lots.SetValue(count);
    product.NoteRounded(size.GetAsDouble(),
                        std::abs(size.GetAsDouble() - count * product.GetLotSize().GetAsDouble()));
    return true;
}

std::string_view nxFeedReader::_GetColumnName(unsigned int slot) const
{
    return std::ranges::find_if(_csv.GetFormat().columns,
                                [slot](const nxFeedColumn& column) {
                                    return column.type == nxFeedColumnType::Number && column.slot == slot;
                                })
        ->name;
}

// A book that begins anew loses the levels that it had.
void nxFeedReader::_FollowBook()
{
    auto& book = _books[_productIndex];
    if (_row->isSnapshot && !_wasSnapshot) {
        for (const auto& [side, price] : book) {
            nxFeedLevel gone{price, {}, side};
            gone.volume.SetValue(0);
            _levels.push_back(gone);
        }
        book.clear();
    }
    _wasSnapshot = _row->isSnapshot;
    if (_level.volume.GetValue() == 0)
        book.erase({_level.side, _level.price});
    else
        book.insert({_level.side, _level.price});
}

std::string nxFeedReader::GetDescription() const
{
    std::string text = GetForm().description;
    if (text.empty() || _kind != nxFeedKind::Bar) return text;
    return text + (_barsBearStart ? "; bars bear their start" : "; bars bear their end");
}

const nxFeedEvent* nxFeedReader::_NextDepth()
{
    if (!_isRowPending && !_NextRow()) return nullptr;
    _levels.clear();
    _event.time = _row->time;
    _event.product = _productIndex;
    _event.line = _row->line;
    nxFeedProduct* const product = _product;
    do {
        if (GetForm().isForeign) _FollowBook();
        _levels.push_back(_level);
        _isRowPending = !_options.takesRowsAsTheyStand && _NextRow();
    } while (_isRowPending && _row->time == _event.time && _product == product && _levels.size() < MaxLevels);
    _event.levels = _levels;
    _event.rows = static_cast<unsigned int>(_levels.size());
    product->CountRows(_kind, _event.rows);
    return &_event;
}

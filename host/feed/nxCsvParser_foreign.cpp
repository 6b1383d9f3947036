// Rows of files that others write.
#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#include "host/feed/nxCsvCells.h"
#include "host/feed/nxCsvParser.h"
#include "host/feed/nxFeedTime.h"

namespace {

using namespace nxCsvCells;

// A cell as it is meant: without the blanks and the quotes around it, and where it ends. A quote that stays
// open ends with the line.
struct Cell
{
    std::string_view text;
    const char* end;
};

Cell GetCell(const char* text, const nxCsvCells::Marks& ends)
{
    while (*text == ' ')
        ++text;
    if (*text != '"') {
        const char* const end = FindCellEnd(text, ends);
        std::string_view cell(text, static_cast<std::size_t>(end - text));
        while (cell.ends_with(' ') || cell.ends_with('\r'))
            cell.remove_suffix(1);
        return {cell, end};
    }
    const char* close = ++text;
    while (*close != '"' && *close != '\n')
        ++close;
    return {{text, static_cast<std::size_t>(close - text)}, FindCellEnd(close, ends)};
}

// What publishers write where there is no number.
bool IsNothing(std::string_view text)
{
    constexpr std::array nothing{
        "", "null", "NULL", "None", "NaN", "nan", "N/A", "n/a", "-", "NA", "9223372036854775807"};
    return std::ranges::find(nothing, text) != nothing.end();
}

// 10 for K, M and B; 0: no such mark.
int GetPowerOfMark(char mark)
{
    return mark == 'K' ? 3 : mark == 'M' ? 6 : mark == 'B' ? 9 : 0;
}

// Digits as they come, of which those beyond what a number holds are rounded off.
class Digits
{
public:
    void Add(char c, bool isFraction)
    {
        const auto digit = static_cast<long long>(GetDigit(c));
        if (_mantissa > 99'999'999'999'999'999) {
            if (!isFraction) ++_power;
            if (!_isCut && digit >= 5) ++_mantissa;
            _isCut = true;
            return;
        }
        _mantissa = _mantissa * 10 + digit;
        if (isFraction) --_power;
    }
    // False: too large. Zeros at the end of the fraction go first.
    bool Store(bool isNegative, int power, nxDecimal& number)
    {
        power += _power;
        for (; _mantissa != 0 && power < 0 && _mantissa % 10 == 0; ++power)
            _mantissa /= 10;
        if (_mantissa == 0) power = 0;
        for (; power > 0; --power)
            if (_mantissa > 99'999'999'999'999'999 || __builtin_mul_overflow(_mantissa, 10, &_mantissa))
                return false;
        for (; - power > static_cast<int>(MaxDigits); ++power)
            _mantissa = (_mantissa + 5) / 10;
        number =
            nxDecimal::FromMantissa(isNegative ? -_mantissa : _mantissa, static_cast<unsigned char>(-power));
        return true;
    }

private:
    long long _mantissa = 0;
    int _power = 0;
    bool _isCut = false;
};

// With a sign of a currency, marks of thousands, K, M or B, an exponent, or none at all.
bool ReadAnyNumber(std::string_view text, nxDecimal& number)
{
    number.SetNoChange();
    if (IsNothing(text)) return true;
    const bool isNegative = text.starts_with('-');
    if (isNegative || text.starts_with('+')) text.remove_prefix(1);
    if (text.starts_with('$')) text.remove_prefix(1);
    Digits digits;
    bool isFraction = false, hasDigit = false;
    for (; !text.empty(); text.remove_prefix(1)) {
        const char c = text.front();
        if (GetDigit(c) <= 9) {
            hasDigit = true;
            digits.Add(c, isFraction);
        } else if (c == '.' && !isFraction) {
            isFraction = true;
        } else if (c != ',' || isFraction) {
            break;
        }
    }
    int power = 0;
    if (text.size() == 1) {
        power = GetPowerOfMark(text.front());
        if (power == 0) return false;
    } else if (!text.empty()) {
        if (text.front() != 'e' && text.front() != 'E') return false;
        text.remove_prefix(1);
        const bool isDown = text.starts_with('-');
        if (isDown || text.starts_with('+')) text.remove_prefix(1);
        if (text.empty() || text.size() > 2) return false;
        for (const char c : text) {
            if (GetDigit(c) > 9) return false;
            power = power * 10 + static_cast<int>(GetDigit(c));
        }
        if (isDown) power = -power;
    }
    return hasDigit && digits.Store(isNegative, power, number);
}

bool IsWord(std::string_view text, std::string_view word)
{
    return text.size() == word.size() && std::ranges::equal(text, word, [](char c, char lower) {
               return (c >= 'A' && c <= 'Z' ? c + 32 : c) == lower;
           });
}

// False: it is none.
bool ReadAnySide(std::string_view text, nxCsvSide& side)
{
    side = nxCsvSide::None;
    if (text.empty()) return true;
    switch (text.front() | 0x20) {
        case 'b':
            side = nxCsvSide::Buy;
            return text.size() == 1 || IsWord(text, "buy") || IsWord(text, "bid");
        case 's':
            side = nxCsvSide::Sell;
            return text.size() == 1 || IsWord(text, "sell");
        case 'a':
            side = nxCsvSide::Sell;
            return text.size() == 1 || IsWord(text, "ask");
        case 't':
            side = nxCsvSide::Buy;
            return IsWord(text, "true");
        case 'f':
            side = nxCsvSide::Sell;
            return IsWord(text, "false");
        case '1':
        case '+':
            side = nxCsvSide::Buy;
            return text == "1" || text == "+1";
        case '-':
            side = nxCsvSide::Sell;
            return text == "-1";
        default:
            return text == "0" || IsWord(text, "n") || IsWord(text, "none") || IsWord(text, "unknown");
    }
}

// A number since 1970 of 13, 16 or 19 digits; null where the cell is something else.
const char* ReadEpoch(const char* cell, const nxCsvCells::Marks& ends, long long& time)
{
    std::uint64_t high = 0, middle = 0;
    if (!ReadEightDigits(cell, high) || high < 1'000'000) return nullptr;
    const char* text = cell + 8;
    std::uint64_t count = high;
    if (ReadEightDigits(text, middle)) {
        count = count * 100'000'000 + middle;
        text += 8;
    }
    for (; GetDigit(*text) <= 9 && text - cell < 19; ++text)
        count = count * 10 + GetDigit(*text);
    const auto digits = text - cell;
    if ((digits != 13 && digits != 16 && digits != 19) || !ends.IsCellEnd(text)) return nullptr;
    const std::uint64_t unit = digits == 13 ? 1'000'000 : digits == 16 ? 1'000 : 1;
    if (count > static_cast<std::uint64_t>(nxFeedTime::Latest) / unit) return nullptr;
    time = static_cast<long long>(count * unit);
    return text;
}

// By a scale of a power of ten mostly, so the digits stay as they are. False: it does not fit.
bool Scale(nxDecimal& number, const nxDecimal& scale)
{
    long long mantissa = number.GetMantissa();
    if (scale.GetMantissa() != 1 && __builtin_mul_overflow(mantissa, scale.GetMantissa(), &mantissa))
        return false;
    unsigned int places = number.GetDecimalPlaces() + scale.GetDecimalPlaces();
    for (; places > 0 && (places > MaxDigits || mantissa % 10 == 0); --places)
        mantissa /= 10;
    number = nxDecimal::FromMantissa(mantissa, static_cast<unsigned char>(places));
    return true;
}

}  // namespace

const char* nxCsvParser::_ReadForeignRow(nxCsvBlock& block, nxCsvRow& row)
{
    const char* text = row.text;
    if (*text == '#' || (*text == '/' && text[1] == '/')) {
        --block.count;
        return FindLineEnd(text, block.end) + 1;
    }
    RowMarks marks;
    std::string reason;
    row.side = nxCsvSide::None;
    const std::size_t count = _form.columns.size();
    for (std::size_t i = 0; i < count; ++i) {
        const nxFeedColumn& column = _form.columns[i];
        const char* const cell = text;
        text = _ReadForeignCell(column, cell, row, marks, reason);
        if (text == nullptr) return _Refuse(block, row, cell, std::string(column.name) + ": " + reason);
        if (i + 1 == count) break;
        if (*text != _form.separator)
            return _Refuse(
                block, row, text,
                "too few cells: " + std::to_string(i + 1) + " instead of " + std::to_string(count));
        ++text;
    }
    if (!marks.date.empty()) {
        const char* const refusal = _form.time.Read(marks.date, marks.timeOfDay, row.time);
        if (refusal != nullptr)
            return _Refuse(block, row, marks.date.data(),
                           std::string("date: ") + refusal + ": \"" + std::string(marks.date) + " " +
                               std::string(marks.timeOfDay) + "\"");
    }
    _FinishForeignRow(block, row, marks);
    return FindLineEnd(text, block.end) + 1;
}

const char* nxCsvParser::_ReadForeignCell(const nxFeedColumn& column, const char* cell, nxCsvRow& row,
                                          RowMarks& marks, std::string& reason)
{
    const nxCsvCells::Marks ends{_form.separator};
    if (column.type == nxFeedColumnType::Number) [[likely]] {
        nxDecimal& number = row.numbers[column.slot];
        const char* end = ReadNumber(cell, number, ends);
        if (end == nullptr) {
            const Cell any = GetCell(cell, ends);
            end = any.end;
            if (!ReadAnyNumber(any.text, number)) {
                reason = "not a number: \"" + std::string(any.text.substr(0, 40)) + "\"";
                return nullptr;
            }
        }
        if (number.IsValid() && !column.isSize) {
            marks.hasPrice = true;
            if (_form.isZeroNone && number.GetMantissa() == 0) {
                number.SetNoChange();
            } else if (_form.scale.IsValid() && !Scale(number, _form.scale)) {
                reason = "too large for prices in units of " + _form.scale.GetAsString();
                return nullptr;
            }
        }
        return end;
    }
    if (column.type == nxFeedColumnType::Skip && *cell != '"') return SkipCell(cell, _form.separator);
    if (column.type == nxFeedColumnType::Time && _form.time.dayUnit == nxTimeText::DayUnit::None)
        if (const char* const end = ReadEpoch(cell, ends, row.time)) return end;
    // The product of the row before, which fits the padding after the block.
    if (const std::size_t size = _before.size();
        column.type == nxFeedColumnType::Product && size != 0 && size < nxCsvBlock::Padding &&
        cell[size] == _form.separator && std::memcmp(cell, _before.data(), size) == 0)
    {
        row.isProductNew = false;
        row.product = _before;
        return cell + size;
    }
    const Cell any = GetCell(cell, ends);
    switch (column.type) {
        case nxFeedColumnType::Time:
            if (const char* const refusal = _form.time.Read(any.text, row.time)) {
                reason = std::string(refusal) + ": \"" + std::string(any.text.substr(0, 40)) + "\"";
                return nullptr;
            }
            break;
        case nxFeedColumnType::Date:
            marks.date = any.text;
            break;
        case nxFeedColumnType::TimeOfDay:
            marks.timeOfDay = any.text;
            break;
        case nxFeedColumnType::Product:
            _TakeProduct(any.text, row);
            break;
        case nxFeedColumnType::Side:
        case nxFeedColumnType::MakerSide:
            if (!ReadAnySide(any.text, row.side)) {
                reason = "neither a buyer nor a seller: \"" + std::string(any.text.substr(0, 40)) + "\"";
                return nullptr;
            }
            if (column.type == nxFeedColumnType::MakerSide && row.side != nxCsvSide::None)
                row.side = row.side == nxCsvSide::Buy ? nxCsvSide::Sell : nxCsvSide::Buy;
            break;
        case nxFeedColumnType::Snapshot:
            row.isSnapshot = any.text == "true" || any.text == "True" || any.text == "1";
            break;
        case nxFeedColumnType::Keep:
            marks.isKept = std::ranges::find(_form.keep, any.text) != _form.keep.end();
            break;
        case nxFeedColumnType::TradeMark:
            marks.isTrade = any.text == _form.trade;
            break;
        case nxFeedColumnType::Number:
        case nxFeedColumnType::Skip:
            break;
    }
    return any.end;
}

void nxCsvParser::_TakeProduct(std::string_view cell, nxCsvRow& row)
{
    row.isProductNew = cell != _before || _before.empty();
    if (row.isProductNew) _before = cell;
    row.product = _before;
}

void nxCsvParser::_FinishForeignRow(nxCsvBlock& block, nxCsvRow& row, const RowMarks& marks)
{
    using namespace nxFeedSlot;
    if (!_form.product.empty()) {
        row.isProductNew = _before.empty();
        row.product = _before = _form.product;
    }
    if (!marks.isTrade) {
        for (const unsigned int slot : {Last, LastVolume})
            row.numbers[slot].SetNoChange();
        row.side = nxCsvSide::None;
    }
    if (_form.format->kind == nxFeedKind::Quote) {
        // A size without its price changes nothing, and a side belongs to a trade.
        for (const auto& [price, size] :
             {std::pair(Bid, BidVolume), std::pair(Ask, AskVolume), std::pair(Last, LastVolume)})
            if (!row.numbers[price].IsValid()) row.numbers[size].SetNoChange();
        if (!row.numbers[Last].IsValid()) row.side = nxCsvSide::None;
    }
    if (marks.isKept && marks.hasPrice) return;
    --block.count;
    if (row.isProductNew) _before = {};
    ++block.skipped;
}

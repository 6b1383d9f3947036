#include "host/feed/nxCsvReader.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

#include "host/feed/nxFeedTime.h"

namespace {

constexpr std::size_t Padding = 32;
constexpr std::size_t MaxDigits = 18;  // what a long long surely holds

bool IsCellEnd(const char* text)
{
    return *text == ',' || *text == '\n' || (*text == '\r' && text[1] == '\n');
}

const char* FindCellEnd(const char* text)
{
    while (!IsCellEnd(text))
        ++text;
    return text;
}

// A cell as a message shows it: in quotes, printable and short.
std::string Show(std::string_view cell)
{
    constexpr std::size_t Longest = 40;
    std::string text(cell.substr(0, Longest));
    std::ranges::replace_if(
        text, [](unsigned char c) { return c < ' ' || c == 0x7F; }, '?');
    return "\"" + text + (cell.size() > Longest ? "...\"" : "\"");
}

// Eight digits at once: the bytes are the digits of one number in little-endian order, so three
// multiplications add neighbours up to pairs, fours and the whole.
bool ReadEightDigits(const char* text, std::uint64_t& value)
{
    if constexpr (std::endian::native == std::endian::little) {
        std::uint64_t bytes = 0;
        std::memcpy(&bytes, text, sizeof bytes);
        constexpr std::uint64_t HighHalves = 0xF0F0F0F0F0F0F0F0;
        if (((bytes & HighHalves) | (((bytes + 0x0606060606060606) & HighHalves) >> 4)) != 0x3333333333333333)
            return false;
        bytes = ((bytes & 0x0F0F0F0F0F0F0F0F) * 2561) >> 8;
        bytes = ((bytes & 0x00FF00FF00FF00FF) * 6553601) >> 16;
        value = ((bytes & 0x0000FFFF0000FFFF) * 42949672960001) >> 32;
        return true;
    }
    value = 0;
    for (int i = 0; i < 8; ++i) {
        if (text[i] < '0' || text[i] > '9') return false;
        value = value * 10 + static_cast<std::uint64_t>(text[i] - '0');
    }
    return true;
}

unsigned GetDigit(char c)
{
    return static_cast<unsigned char>(c - '0');
}

// Zeros in front of the first digit that counts.
std::size_t CountZeros(const char* text)
{
    std::size_t count = 0;
    for (; *text == '0' || *text == '.'; ++text)
        count += *text == '0' ? 1 : 0;
    return count;
}

// Reads a cell's number; returns where the cell ends, or null when it is none.
const char* ReadNumber(const char* text, nxCsvNumber& number)
{
    number.isGiven = false;
    if (IsCellEnd(text)) return text;
    const bool isNegative = *text == '-';
    if (isNegative || *text == '+') ++text;
    const char* const first = text;
    unsigned long long sum = 0;
    for (; GetDigit(*text) <= 9; ++text)
        sum = sum * 10 + GetDigit(*text);
    std::size_t digits = static_cast<std::size_t>(text - first);
    std::size_t places = 0;
    if (digits == 0) return nullptr;
    if (*text == '.') {
        const char* const fraction = ++text;
        for (; GetDigit(*text) <= 9; ++text)
            sum = sum * 10 + GetDigit(*text);
        places = static_cast<std::size_t>(text - fraction);
        if (places == 0) return nullptr;
        digits += places;
    }
    if (!IsCellEnd(text) ||
        (digits > MaxDigits && (places > MaxDigits || digits - CountZeros(first) > MaxDigits)))
        return nullptr;
    number.mantissa = isNegative ? -static_cast<long long>(sum) : static_cast<long long>(sum);
    number.places = static_cast<unsigned char>(places);
    number.isGiven = true;
    return text;
}

std::string GetNumberReason(std::string_view cell)
{
    const auto digits =
        static_cast<std::size_t>(std::ranges::count_if(cell, [](char c) { return c >= '0' && c <= '9'; }));
    const bool isTooLong =
        digits > MaxDigits && cell.find_first_not_of("0123456789.", cell[0] == '-') == cell.npos;
    return isTooLong ? "number with more than 18 digits: " + Show(cell) : "not a number: " + Show(cell);
}

const char* ReadSide(const char* cell, nxCsvSide& side)
{
    side = nxCsvSide::None;
    if (IsCellEnd(cell)) return cell;
    if (std::memcmp(cell, "BUY", 3) == 0 && IsCellEnd(cell + 3)) {
        side = nxCsvSide::Buy;
        return cell + 3;
    }
    if (std::memcmp(cell, "SELL", 4) == 0 && IsCellEnd(cell + 4)) {
        side = nxCsvSide::Sell;
        return cell + 4;
    }
    return nullptr;
}

}  // namespace

nxCsvReader::nxCsvReader(std::string path) : _path(std::move(path)) {}

bool nxCsvReader::Open()
{
    if (!_stream.Open(_path)) {
        _error = {_path, 0, 0, _stream.GetFailure()};
        return false;
    }
    _buffer = std::make_unique<char[]>(BufferSize + Padding);
    _cursor = _linesEnd = _filledEnd = _buffer.get();
    return _ReadHeader();
}

nxCsvReader::Result nxCsvReader::Next(nxCsvRow& row)
{
    for (;;) {
        if (_cursor == _linesEnd) {
            if (_mark != nullptr) return Result::End;
            if (!_Fill()) return _hasFailed ? Result::Failed : Result::End;
        }
        ++_line;
        if (*_cursor == '\n' || (*_cursor == '\r' && _cursor[1] == '\n'))
            _cursor += *_cursor == '\n' ? 1 : 2;
        else
            return _ReadRow(row);
    }
}

void nxCsvReader::Mark()
{
    _mark = _cursor;
    _markLine = _line;
}

void nxCsvReader::Rewind()
{
    _cursor = _mark;
    _line = _markLine;
    _mark = nullptr;
    _product.clear();
    _error = {};
}

nxFeedError nxCsvReader::MakeError(std::string_view column, const std::string& reason) const
{
    const char* cell = _rowBegin;
    for (const nxFeedColumn& known : _columns) {
        if (known.name == column)
            return {_path, _line, static_cast<unsigned>(cell - _rowBegin + 1),
                    std::string(column) + ": " + reason};
        if (*cell == '"') {
            // A comma within the quotes ends nothing; two quotes there are one that belongs to the name.
            for (++cell; *cell != '"' || cell[1] == '"'; ++cell)
                if (*cell == '"') ++cell;
            ++cell;
        }
        cell = FindCellEnd(cell) + 1;
    }
    return {_path, _line, 0, std::string(column) + ": " + reason};
}

// Moves the unfinished line to the front and reads until a whole line has come. False: the end, or an error.
bool nxCsvReader::_Fill()
{
    char* const begin = _buffer.get();
    const std::size_t left = static_cast<std::size_t>(_filledEnd - _linesEnd);
    std::memmove(begin, _linesEnd, left);
    char* filled = begin + left;
    // The whole buffer is filled once, for the look ahead; later a pipe's rows are handed on as they come.
    const bool isFirst = _line == 0;
    _cursor = _linesEnd = begin;
    while (!_isStreamOver && (_linesEnd == begin || (isFirst && filled != begin + BufferSize))) {
        if (filled == begin + BufferSize) {
            _error = {_path, _line + 1, 0, "row longer than " + std::to_string(BufferSize) + " bytes"};
            _isStreamOver = _hasFailed = true;
            _filledEnd = _linesEnd;
            return false;
        }
        const long long count = _stream.Read(filled, static_cast<std::size_t>(begin + BufferSize - filled));
        _isStreamOver = count <= 0;
        if (count > 0) {
            const void* lastEnd = memrchr(filled, '\n', static_cast<std::size_t>(count));
            filled += count;
            if (lastEnd != nullptr) _linesEnd = static_cast<const char*>(lastEnd) + 1;
        } else if (count == 0 && _linesEnd != filled) {
            *filled++ = '\n';  // the padding has room for it
            _linesEnd = filled;
        }
    }
    _filledEnd = filled;
    if (_linesEnd != begin) return true;
    if (!_stream.GetFailure().empty()) {
        _hasFailed = true;
        _error = {_path, _line, 0, _stream.GetFailure()};
        if (_line != 0) _error.reason += "; line " + std::to_string(_line) + " is the last whole one";
    }
    return false;
}

bool nxCsvReader::_ReadHeader()
{
    const auto fail = [this](unsigned column, std::string reason) {
        _error = {_path, _line, column, std::move(reason)};
        return false;
    };
    do {
        if (_cursor == _linesEnd && !_Fill())
            return !_hasFailed && fail(0, "no header row: the file is empty");
        if (_line == 0 && std::memcmp(_cursor, "\xEF\xBB\xBF", 3) == 0) _cursor += 3;
        ++_line;
        _rowBegin = _cursor;
        _cursor = static_cast<const char*>(
                      std::memchr(_rowBegin, '\n', static_cast<std::size_t>(_linesEnd - _rowBegin))) +
                  1;
    } while (*_rowBegin == '\n' || (*_rowBegin == '\r' && _rowBegin[1] == '\n'));

    std::vector<std::string> names;
    std::vector<unsigned> places;
    for (const char* cell = _rowBegin; cell != _cursor && (names.empty() || cell[-1] == ',');) {
        const char* const end = FindCellEnd(cell);
        std::string_view name(cell, static_cast<std::size_t>(end - cell));
        if (std::ranges::any_of(name, [](char c) { return c >= 0 && c < ' ' && c != '\t'; }))
            return fail(0, "no header row: the file is not text");
        places.push_back(static_cast<unsigned>(cell - _rowBegin + 1));
        if (name.size() >= 2 && name.front() == '"' && name.back() == '"')
            name = name.substr(1, name.size() - 2);
        names.emplace_back(name);
        cell = end + 1;
    }
    std::string reason;
    std::size_t wrong = 0;
    _format = nxFeedFormat::Tell(names, _columns, reason, wrong);
    return _format != nullptr || fail(places[wrong], reason);
}

nxCsvReader::Result nxCsvReader::_ReadRow(nxCsvRow& row)
{
    const char* text = _cursor;
    _rowBegin = text;
    row.line = _line;
    const std::size_t count = _columns.size();
    for (std::size_t i = 0; i < count; ++i) {
        const nxFeedColumn& column = _columns[i];
        const char* const cell = text;
        switch (column.type) {
            case nxFeedColumnType::Number:
                text = ReadNumber(cell, row.numbers[column.slot]);
                break;
            case nxFeedColumnType::Time: {
                std::string reason;
                text = _ReadTime(cell, row, reason);
                if (text == nullptr) return _Refuse(cell, "time: " + reason);
                break;
            }
            case nxFeedColumnType::Product:
                text = _ReadProduct(cell, row);
                if (text == nullptr) return _Refuse(cell, "product: a quote that does not end with the cell");
                break;
            case nxFeedColumnType::Side:
                text = ReadSide(cell, row.side);
                break;
        }
        if (text == nullptr) {
            const std::string_view content(cell, static_cast<std::size_t>(FindCellEnd(cell) - cell));
            const std::string reason = column.type == nxFeedColumnType::Side
                                           ? "neither BUY nor SELL: " + Show(content)
                                           : GetNumberReason(content);
            return _Refuse(cell, std::string(column.name) + ": " + reason);
        }
        if (i + 1 == count) break;
        if (*text != ',') return _Refuse(text, _GetCountReason(i + 1));
        ++text;
    }
    if (*text == '\r') ++text;
    if (*text != '\n') return _Refuse(text + 1, _GetCountReason(count + 1));
    _cursor = text + 1;
    return Result::Row;
}

const char* nxCsvReader::_ReadTime(const char* cell, nxCsvRow& row, std::string& reason) const
{
    // Nearly every recording counts nanoseconds in 19 digits.
    std::uint64_t high = 0;
    std::uint64_t middle = 0;
    if (ReadEightDigits(cell, high) && ReadEightDigits(cell + 8, middle) && cell[19] == ',') {
        const unsigned a = GetDigit(cell[16]);
        const unsigned b = GetDigit(cell[17]);
        const unsigned c = GetDigit(cell[18]);
        const std::uint64_t sum = (high * 100'000'000 + middle) * 1000 + a * 100 + b * 10 + c;
        if (a <= 9 && b <= 9 && c <= 9 && high >= 1'000'000 && sum <= INT64_MAX) {
            row.time = static_cast<long long>(sum);
            return cell + 19;
        }
    }
    const char* const end = FindCellEnd(cell);
    const std::string_view text(cell, static_cast<std::size_t>(end - cell));
    const char* const refusal = nxFeedTime::SetFromText(text, row.time);
    if (refusal == nullptr) return end;
    reason = std::string(refusal) + ": " + Show(text);
    return nullptr;
}

// Null: a quote without its fellow.
const char* nxCsvReader::_ReadProduct(const char* cell, nxCsvRow& row)
{
    const std::size_t size = _product.size();
    if (size != 0 && static_cast<std::size_t>(_linesEnd - cell) > size &&
        std::memcmp(cell, _product.data(), size) == 0 && IsCellEnd(cell + size))
    {
        row.isProductNew = false;
        row.product = _product;
        return cell + size;
    }
    row.isProductNew = true;
    const char* end = cell;
    if (*cell == '"') {
        _unquoted.clear();
        for (++end; *end != '\n' && (*end != '"' || end[1] == '"'); ++end) {
            if (*end == '"') ++end;
            _unquoted += *end;
        }
        if (*end != '"' || !IsCellEnd(end + 1)) return nullptr;
        // Not kept for the comparison above: a name with a comma would match two cells without quotes.
        _product.clear();
        row.product = _unquoted;
        return end + 1;
    }
    end = FindCellEnd(cell);
    _product.assign(cell, end);
    row.product = _product;
    return end;
}

// The cell at fault, or the place where one is missing, and why; the next row is the one behind.
nxCsvReader::Result nxCsvReader::_Refuse(const char* cell, const std::string& reason)
{
    _error = {_path, _line, static_cast<unsigned>(cell - _rowBegin + 1), reason};
    _cursor =
        static_cast<const char*>(std::memchr(cell, '\n', static_cast<std::size_t>(_linesEnd - cell))) + 1;
    // What follows is compared with a row that was delivered.
    _product.clear();
    return Result::Bad;
}

// `cells` is the first count at which the row was seen to differ from the header.
std::string nxCsvReader::_GetCountReason(std::size_t cells) const
{
    const std::size_t wanted = _columns.size();
    if (cells > wanted) {
        const char* const end = static_cast<const char*>(
            std::memchr(_rowBegin, '\n', static_cast<std::size_t>(_linesEnd - _rowBegin)));
        cells = static_cast<std::size_t>(std::count(_rowBegin, end, ',')) + 1;
    }
    return (cells > wanted ? "too many cells: " : "too few cells: ") + std::to_string(cells) +
           " instead of " + std::to_string(wanted);
}

#include "host/feed/nxCsvParser.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

#include "host/feed/nxCsvCells.h"
#include "host/feed/nxFeedTime.h"

namespace {

using namespace nxCsvCells;

constexpr Commas Ends{};

// A cell as a message shows it: in quotes, printable and short.
std::string Show(std::string_view cell)
{
    constexpr std::size_t Longest = 40;
    std::string text(cell.substr(0, Longest));
    std::ranges::replace_if(
        text, [](unsigned char c) { return c < ' ' || c == 0x7F; }, '?');
    return "\"" + text + (cell.size() > Longest ? "...\"" : "\"");
}

std::string GetNumberReason(std::string_view cell)
{
    const auto digits =
        static_cast<std::size_t>(std::ranges::count_if(cell, [](char c) { return c >= '0' && c <= '9'; }));
    const bool isTooLong =
        digits > MaxDigits && cell.find_first_not_of("0123456789.", cell[0] == '-') == cell.npos;
    return isTooLong ? "number with more than 18 digits: " + Show(cell) : "not a number: " + Show(cell);
}

// Nanoseconds in 19 digits, as nearly every recording counts them. Null where the cell is another.
const char* ReadNanoseconds(const char* cell, long long& time)
{
    std::uint64_t high = 0;
    std::uint64_t middle = 0;
    if (!ReadEightDigits(cell, high) || !ReadEightDigits(cell + 8, middle) || cell[19] != ',') return nullptr;
    const unsigned int a = GetDigit(cell[16]);
    const unsigned int b = GetDigit(cell[17]);
    const unsigned int c = GetDigit(cell[18]);
    const std::uint64_t sum = (high * 100'000'000 + middle) * 1000 + a * 100 + b * 10 + c;
    if (a > 9 || b > 9 || c > 9 || high < 1'000'000 || sum > nxFeedTime::Latest) return nullptr;
    time = static_cast<long long>(sum);
    return cell + 19;
}

const char* ReadSide(const char* cell, nxCsvSide& side)
{
    side = nxCsvSide::None;
    if (Ends.IsCellEnd(cell)) return cell;
    if (std::memcmp(cell, "BUY", 3) == 0 && Ends.IsCellEnd(cell + 3)) {
        side = nxCsvSide::Buy;
        return cell + 3;
    }
    if (std::memcmp(cell, "SELL", 4) == 0 && Ends.IsCellEnd(cell + 4)) {
        side = nxCsvSide::Sell;
        return cell + 4;
    }
    return nullptr;
}

}  // namespace

bool nxCsvParser::ReadHeader(nxCsvBlock& block, const std::string& entryName)
{
    if (_line == 0 && std::memcmp(block.begin, "\xEF\xBB\xBF", 3) == 0) block.begin += 3;
    for (; block.begin != block.end && IsLineEnd(block.begin); ++_line)
        block.begin += *block.begin == '\n' ? 1 : 2;
    if (block.begin == block.end) return true;

    const char* const rows = FindLineEnd(block.begin, block.end) + 1;
    std::string_view header(block.begin, static_cast<std::size_t>(rows - block.begin - 1));
    if (header.ends_with('\r')) header.remove_suffix(1);
    if (std::ranges::any_of(header, [](char c) { return c >= 0 && c < ' ' && c != '\t'; })) {
        block.error = {_path, _line + 1, 0, "no header row: the file is not text"};
        return false;
    }
    if (_options.columns.empty() && _options.layout == nullptr && _form.SetOwn(header)) {
        const auto& wanted = _form.format->columns;
        if (std::ranges::equal(_form.columns, wanted, {}, &nxFeedColumn::name, &nxFeedColumn::name))
            _usualNumbers = std::ranges::count(wanted, nxFeedColumnType::Number, &nxFeedColumn::type);
        ++_line;
        block.begin = rows;
        return true;
    }
    std::size_t begin = 0;
    const std::string_view text(block.begin, static_cast<std::size_t>(block.end - block.begin));
    if (!_form.Find(text, _path, entryName, _options, begin, _line, block.error)) return false;
    block.begin += begin;
    return true;
}

void nxCsvParser::Parse(nxCsvBlock& block, std::size_t most)
{
    block.count = 0;
    block.refusals.clear();
    block.names.clear();
    _before = {};  // it may stand in another block
    const char* text = block.begin;
    while (text != block.end && block.count < most) {
        _line += _step;
        if (IsLineEnd(text)) {
            text += *text == '\n' ? 1 : 2;
            continue;
        }
        if (block.count == block.rows.size()) block.rows.emplace_back();
        nxCsvRow& row = block.rows[block.count++];
        row.text = text;
        row.line = _line;
        row.isBad = false;
        const char* const next = _usualNumbers != 0 ? _ReadUsualRow(block, row) : nullptr;
        text = next != nullptr ? next : _form.isForeign ? _ReadForeignRow(block, row) : _ReadRow(block, row);
    }
    block.begin = text;
}

// Where the next line begins, of a row that gives nanoseconds and the product of the row before, as nearly
// all do: read without a question at each cell. Null where it is another: it is to be read cell by cell then,
// which also finds what is wrong with it.
const char* nxCsvParser::_ReadUsualRow(const nxCsvBlock& block, nxCsvRow& row) const
{
    const nxFeedKind kind = _form.format->kind;
    const char* text = ReadNanoseconds(row.text, row.time);
    if (text == nullptr || !_IsOfBefore(block, ++text)) return nullptr;
    row.isProductNew = false;
    row.product = _before;
    text += _before.size();
    const auto readSide = [&] { return *text == ',' && (text = ReadSide(text + 1, row.side)) != nullptr; };
    if (kind == nxFeedKind::Depth && !readSide()) return nullptr;
    for (std::ptrdiff_t slot = 0; slot < _usualNumbers; ++slot) {
        if (*text != ',') return nullptr;
        text = ReadNumber(text + 1, row.numbers[static_cast<std::size_t>(slot)], Ends);
        if (text == nullptr) return nullptr;
    }
    if (kind == nxFeedKind::Quote && !readSide()) return nullptr;
    if (*text == '\r') ++text;
    return *text == '\n' ? text + 1 : nullptr;
}

// Where the next line begins.
const char* nxCsvParser::_ReadRow(nxCsvBlock& block, nxCsvRow& row)
{
    const char* text = row.text;
    const std::size_t count = _form.columns.size();
    for (std::size_t i = 0; i < count; ++i) {
        const nxFeedColumn& column = _form.columns[i];
        const char* const cell = text;
        switch (column.type) {
            case nxFeedColumnType::Number:
                text = ReadNumber(cell, row.numbers[column.slot], Ends);
                break;
            case nxFeedColumnType::Time: {
                std::string reason;
                text = _ReadTime(cell, row, reason);
                if (text == nullptr) return _Refuse(block, row, cell, "time: " + reason);
                break;
            }
            case nxFeedColumnType::Product:
                text = _ReadProduct(block, cell, row);
                if (text == nullptr)
                    return _Refuse(block, row, cell, "product: a quote that does not end with the cell");
                break;
            case nxFeedColumnType::Side:
                text = ReadSide(cell, row.side);
                break;
            default:
                break;  // no columns of our own formats
        }
        if (text == nullptr) {
            const std::string_view content(cell, static_cast<std::size_t>(FindCellEnd(cell, Ends) - cell));
            const std::string reason = column.type == nxFeedColumnType::Side
                                           ? "neither BUY nor SELL: " + Show(content)
                                           : GetNumberReason(content);
            return _Refuse(block, row, cell, std::string(column.name) + ": " + reason);
        }
        if (i + 1 == count) break;
        if (*text != ',') return _Refuse(block, row, text, _GetCountReason(block, row, i + 1));
        ++text;
    }
    if (*text == '\r') ++text;
    if (*text != '\n') return _Refuse(block, row, text + 1, _GetCountReason(block, row, count + 1));
    return text + 1;
}

const char* nxCsvParser::_ReadTime(const char* cell, nxCsvRow& row, std::string& reason) const
{
    if (const char* const end = ReadNanoseconds(cell, row.time)) return end;
    const char* const end = FindCellEnd(cell, Ends);
    const std::string_view text(cell, static_cast<std::size_t>(end - cell));
    const char* const refusal = nxFeedTime::SetFromText(text, row.time);
    if (refusal == nullptr) return end;
    reason = std::string(refusal) + ": " + Show(text);
    return nullptr;
}

// Whether the cell holds the product of the row before, where there is one.
bool nxCsvParser::_IsOfBefore(const nxCsvBlock& block, const char* cell) const
{
    const std::size_t size = _before.size();
    if (size == 0) return false;
    if constexpr (std::endian::native == std::endian::little) {
        if (size <= 8) {
            std::uint64_t before = 0, now = 0;
            std::memcpy(&before, _before.data(), sizeof before);
            std::memcpy(&now, cell, sizeof now);
            return (before ^ now) << 8 * (8 - size) == 0 && Ends.IsCellEnd(cell + size);
        }
    }
    return static_cast<std::size_t>(block.end - cell) > size &&
           std::memcmp(cell, _before.data(), size) == 0 && Ends.IsCellEnd(cell + size);
}

// Null: a quote without its fellow.
const char* nxCsvParser::_ReadProduct(nxCsvBlock& block, const char* cell, nxCsvRow& row)
{
    if (_IsOfBefore(block, cell)) {
        row.isProductNew = false;
        row.product = _before;
        return cell + _before.size();
    }
    row.isProductNew = true;
    const char* end = cell;
    if (*cell == '"') {
        std::string& name = block.names.emplace_back();
        for (++end; *end != '\n' && (*end != '"' || end[1] == '"'); ++end) {
            if (*end == '"') ++end;
            name += *end;
        }
        if (*end != '"' || !Ends.IsCellEnd(end + 1)) return nullptr;
        // Not kept for the comparison above: a name with a comma would match two cells without quotes.
        _before = {};
        row.product = name;
        return end + 1;
    }
    end = FindCellEnd(cell, Ends);
    row.product = _before = {cell, end};
    return end;
}

// The cell at fault, or the place where one is missing, and why; the next row is the one behind.
const char* nxCsvParser::_Refuse(nxCsvBlock& block, nxCsvRow& row, const char* cell,
                                 const std::string& reason)
{
    row.isBad = true;
    block.refusals.push_back({_path, _line, static_cast<unsigned int>(cell - row.text + 1), reason});
    // What follows is compared with a row that was delivered.
    _before = {};
    return FindLineEnd(cell, block.end) + 1;
}

// `cells` is the first count at which the row was seen to differ from the header.
std::string nxCsvParser::_GetCountReason(const nxCsvBlock& block, const nxCsvRow& row,
                                         std::size_t cells) const
{
    const std::size_t wanted = _form.columns.size();
    if (cells > wanted)
        cells = static_cast<std::size_t>(std::count(row.text, FindLineEnd(row.text, block.end), ',')) + 1;
    return (cells > wanted ? "too many cells: " : "too few cells: ") + std::to_string(cells) +
           " instead of " + std::to_string(wanted);
}

nxFeedError nxCsvParser::MakeError(const nxCsvRow& row, std::string_view column,
                                   const std::string& reason) const
{
    const nxCsvCells::Marks ends{_form.separator};
    const char* cell = row.text;
    for (const nxFeedColumn& known : _form.columns) {
        if (known.name == column)
            return {_path, row.line, static_cast<unsigned int>(cell - row.text + 1),
                    std::string(column) + ": " + reason};
        if (*cell == '"') {
            // A comma within the quotes ends nothing; two quotes there are one that belongs to the name.
            for (++cell; *cell != '\n' && (*cell != '"' || cell[1] == '"'); ++cell)
                if (*cell == '"') ++cell;
            if (*cell == '"') ++cell;
        }
        cell = FindCellEnd(cell, ends);
        if (*cell == '\n') break;
        ++cell;
    }
    return {_path, row.line, 0, std::string(column) + ": " + reason};
}

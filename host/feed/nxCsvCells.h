#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

#include "host/feed/nxCsvRow.h"

// How the cells of a row are read, for nxCsvParser alone. A cell ends with the separator or with its line;
// the line has its end, and nxCsvBlock's padding comes after that.
namespace nxCsvCells {

inline constexpr std::size_t MaxDigits = 18;  // what a long long surely holds

inline bool IsLineEnd(const char* text)
{
    return *text == '\n' || (*text == '\r' && text[1] == '\n');
}

// Of a line that ends before `end`.
inline const char* FindLineEnd(const char* text, const char* end)
{
    return static_cast<const char*>(std::memchr(text, '\n', static_cast<std::size_t>(end - text)));
}

// The ends of cells in a file of commas, which our own formats are.
struct Commas
{
    static bool IsCellEnd(const char* text) { return *text == ',' || IsLineEnd(text); }
};

// And of another mark.
struct Marks
{
    char separator;
    bool IsCellEnd(const char* text) const { return *text == separator || IsLineEnd(text); }
};

template <class Ends>
const char* FindCellEnd(const char* text, const Ends& ends)
{
    while (!ends.IsCellEnd(text))
        ++text;
    return text;
}

// Where a cell of any text ends, at the mark or at the line feed: eight bytes at once, of which a zero byte
// in what differs tells the first.
inline const char* SkipCell(const char* text, char separator)
{
    if constexpr (std::endian::native == std::endian::little) {
        constexpr std::uint64_t ones = 0x0101010101010101, highs = 0x8080808080808080;
        const std::uint64_t marks = ones * static_cast<unsigned char>(separator), feeds = ones * '\n';
        for (;; text += 8) {
            std::uint64_t bytes = 0;
            std::memcpy(&bytes, text, sizeof bytes);
            const std::uint64_t a = bytes ^ marks, b = bytes ^ feeds;
            const std::uint64_t found = (((a - ones) & ~a) | ((b - ones) & ~b)) & highs;
            if (found != 0) return text + std::countr_zero(found) / 8;
        }
    }
    while (*text != separator && *text != '\n')
        ++text;
    return text;
}

inline constexpr std::uint64_t EachByte = 0x0101010101010101;

// Of the bytes of one number in little-endian order, each 0 to 9: three multiplications add neighbours up to
// pairs, fours and the whole.
inline std::uint64_t AddUpDigits(std::uint64_t digits)
{
    digits = (digits * 2561) >> 8;
    digits = ((digits & 0x00FF00FF00FF00FF) * 6553601) >> 16;
    return ((digits & 0x0000FFFF0000FFFF) * 42949672960001) >> 32;
}

// Eight digits at once.
inline bool ReadEightDigits(const char* text, std::uint64_t& value)
{
    if constexpr (std::endian::native == std::endian::little) {
        std::uint64_t bytes = 0;
        std::memcpy(&bytes, text, sizeof bytes);
        constexpr std::uint64_t HighHalves = 0xF0 * EachByte;
        if (((bytes & HighHalves) | (((bytes + 0x06 * EachByte) & HighHalves) >> 4)) != 0x33 * EachByte)
            return false;
        value = AddUpDigits(bytes & 0x0F * EachByte);
        return true;
    }
    value = 0;
    for (int i = 0; i < 8; ++i) {
        if (text[i] < '0' || text[i] > '9') return false;
        value = value * 10 + static_cast<std::uint64_t>(text[i] - '0');
    }
    return true;
}

inline unsigned int GetDigit(char c)
{
    return static_cast<unsigned char>(c - '0');
}

// Zeros in front of the first digit that counts.
inline std::size_t CountZeros(const char* text)
{
    std::size_t count = 0;
    for (; *text == '0' || *text == '.'; ++text)
        count += *text == '0' ? 1 : 0;
    return count;
}

// Most numbers have no sign and at most eight characters, a point among them: read at once. Null where this
// is another, or none.
template <class Ends>
const char* ReadShortNumber(const char* text, nxDecimal& number, const Ends& ends)
{
    std::uint64_t bytes = 0;
    std::memcpy(&bytes, text, sizeof bytes);
    const std::uint64_t digits = bytes ^ '0' * EachByte;
    const std::uint64_t others = (((digits & 0x7F * EachByte) + 0x76 * EachByte) | digits) & 0x80 * EachByte;
    const auto findFirst = [](std::uint64_t marks) {  // 8: none of the bytes
        return static_cast<unsigned int>(std::countr_zero(marks)) / 8;
    };
    const unsigned int whole = findFirst(others);
    if (whole == 0) return nullptr;
    unsigned int count = whole;
    std::uint64_t kept = digits;
    unsigned int end = whole;
    if (whole < 8 && text[whole] == '.') {
        end = findFirst(others & (others - 1));
        count = end - 1;
        if (count == whole) return nullptr;
        const std::uint64_t before = (std::uint64_t{1} << 8 * whole) - 1;
        kept = (digits & before) | (digits >> 8 & ~before);
    }
    if (!ends.IsCellEnd(text + end)) return nullptr;
    number = nxDecimal::FromMantissa(static_cast<long long>(AddUpDigits(kept << 8 * (8 - count))),
                                     static_cast<unsigned char>(count - whole));
    return text + end;
}

// Reads a cell's number; returns where the cell ends, or null when it is none.
template <class Ends>
const char* ReadNumber(const char* text, nxDecimal& number, const Ends& ends)
{
    if constexpr (std::endian::native == std::endian::little) {
        if (const char* const end = ReadShortNumber(text, number, ends)) return end;
    }
    number.SetNoChange();
    if (ends.IsCellEnd(text)) return text;
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
    if (!ends.IsCellEnd(text) ||
        (digits > MaxDigits && (places > MaxDigits || digits - CountZeros(first) > MaxDigits)))
        return nullptr;
    const auto mantissa = static_cast<long long>(sum);
    number = nxDecimal::FromMantissa(isNegative ? -mantissa : mantissa, static_cast<unsigned char>(places));
    return text;
}

}  // namespace nxCsvCells

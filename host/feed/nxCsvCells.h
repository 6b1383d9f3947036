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

// Eight digits at once: the bytes are the digits of one number in little-endian order, so three
// multiplications add neighbours up to pairs, fours and the whole.
inline bool ReadEightDigits(const char* text, std::uint64_t& value)
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

// Reads a cell's number; returns where the cell ends, or null when it is none.
template <class Ends>
const char* ReadNumber(const char* text, nxCsvNumber& number, const Ends& ends)
{
    number.isGiven = false;
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
    number.mantissa = isNegative ? -static_cast<long long>(sum) : static_cast<long long>(sum);
    number.places = static_cast<unsigned char>(places);
    number.isGiven = true;
    return text;
}

}  // namespace nxCsvCells

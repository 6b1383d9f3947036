#include "base/values/nxStringHelper.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace {

template <class Integer>
std::string WriteInteger(Integer value)
{
    char text[24];
    return {text, std::to_chars(text, text + sizeof text, value).ptr};
}

nxErrorEnum ErrorOf(std::from_chars_result result, const char* last)
{
    // A number that does not fit is still read to its end, and only a whole text is a number at all.
    if (result.ec == std::errc::invalid_argument || result.ptr != last) return nxError_NotANumber;
    return result.ec == std::errc() ? nxErrorEnum() : nxErrorEnum(nxError_NumberOutOfRange);
}

template <class Integer>
nxErrorEnum ReadInteger(std::string_view text, Integer& value)
{
    const bool plus = std::is_signed_v<Integer> && text.starts_with('+');
    const char* const first = text.data() + (plus ? 1 : 0);
    const char* const last = text.data() + text.size();
    if (plus && first != last && *first == '-') return nxError_NotANumber;
    Integer read = 0;
    const nxErrorEnum error = ErrorOf(std::from_chars(first, last, read), last);
    if (error.IsSuccess()) value = read;
    return error;
}

}  // namespace

std::string nxStringHelper::GetAsString(double value)
{
    // 1e-308 in full takes some 340 characters.
    char text[400];
    const bool full = std::abs(value) < 1e15;
    const auto end = full ? std::to_chars(text, text + sizeof text, value, std::chars_format::fixed)
                          : std::to_chars(text, text + sizeof text, value);
    return {text, end.ptr};
}

std::string nxStringHelper::GetAsString(int value)
{
    return WriteInteger(value);
}

std::string nxStringHelper::GetAsString(unsigned int value)
{
    return WriteInteger(value);
}

std::string nxStringHelper::GetAsString(long long value)
{
    return WriteInteger(value);
}

std::string nxStringHelper::GetAsString(unsigned long long value)
{
    return WriteInteger(value);
}

nxErrorEnum nxStringHelper::SetFromString(std::string_view text, double& value, char separator)
{
    // std::from_chars knows one separator and no plus sign, and it knows "nan", "inf" and their like.
    std::string plain(text.starts_with('+') ? text.substr(1) : text);
    const bool signs = text.starts_with('+') && plain.starts_with('-');
    const bool foreign = separator != '.' && plain.find('.') != std::string::npos;
    if (signs || foreign) return nxError_NotANumber;
    std::ranges::replace(plain, separator, '.');
    if (plain.find_first_not_of("0123456789.+-eE") != std::string::npos) return nxError_NotANumber;

    double read = 0;
    const char* const last = plain.data() + plain.size();
    const nxErrorEnum error = ErrorOf(std::from_chars(plain.data(), last, read), last);
    if (error.IsSuccess()) value = read;
    return error;
}

nxErrorEnum nxStringHelper::SetFromString(std::string_view text, int& value)
{
    return ReadInteger(text, value);
}

nxErrorEnum nxStringHelper::SetFromString(std::string_view text, long long& value)
{
    return ReadInteger(text, value);
}

nxErrorEnum nxStringHelper::SetFromString(std::string_view text, unsigned int& value)
{
    return ReadInteger(text, value);
}

nxErrorEnum nxStringHelper::SetFromString(std::string_view text, unsigned short& value)
{
    return ReadInteger(text, value);
}

nxErrorEnum nxStringHelper::SetFromString(std::string_view text, unsigned long long& value)
{
    return ReadInteger(text, value);
}

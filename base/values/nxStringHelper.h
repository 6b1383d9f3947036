#pragma once

#include <string>
#include <string_view>

#include "base/enums/nxErrorEnum.h"

// Numbers to text and back, the same in every locale. Reading takes the whole text and refuses blanks; on an
// error the result is left as it was. nxError_NotANumber: the text has another form.
// nxError_NumberOutOfRange: the number does not fit.
class nxStringHelper
{
public:
    // The shortest text that reads back to the same double, without an exponent below 1e15 in magnitude.
    static std::string GetAsString(double value);
    static std::string GetAsString(int value);
    static std::string GetAsString(unsigned int value);
    static std::string GetAsString(long long value);
    static std::string GetAsString(unsigned long long value);

    // [+-]digits with at most one separator, digits on at least one side of it, and an optional exponent.
    // What is neither decimal nor finite (hexadecimal, "nan", "inf") is not a number; one too large, or too
    // small to tell from zero, is out of range.
    static nxErrorEnum SetFromString(std::string_view text, double& value, char separator);
    // [+-]digits.
    static nxErrorEnum SetFromString(std::string_view text, int& value);
    static nxErrorEnum SetFromString(std::string_view text, long long& value);
    // digits, without a sign.
    static nxErrorEnum SetFromString(std::string_view text, unsigned int& value);
    static nxErrorEnum SetFromString(std::string_view text, unsigned short& value);
    static nxErrorEnum SetFromString(std::string_view text, unsigned long long& value);
};

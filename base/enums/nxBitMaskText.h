#pragma once

#include <bit>
#include <string>

#include "base/values/nxValueMarks.h"

// The text of a mask's flags for both widths: each set bit's number behind `prefix`, joined by `separator`.
template <class Mask>
std::string nxBitMaskText(const Mask& mask, const char* prefix, const std::string& separator)
{
    if (mask.IsNull()) return nxNullText;
    if (mask.IsNoChange()) return nxNoChangeText;
    std::string text;
    for (auto bits = mask.GetValue(); bits != 0; bits &= bits - 1) {
        if (!text.empty()) text += separator;
        text += prefix + std::to_string(std::countr_zero(bits));
    }
    return text;
}

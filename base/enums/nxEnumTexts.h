#pragma once

#include <cstddef>
#include <string>

#include "base/enums/nxEnumValue.h"

// The texts of every enumerator. Built at first use and never destroyed; read from any thread.
class nxEnumTexts
{
public:
    struct Texts
    {
        nxEnumValue value;
        std::string name;
        std::string shortDescription;
        std::string longDescription;
    };

    // Of a mark: its text in all three places. Of a value that has no texts: "NOT_REGISTERED" likewise.
    static const Texts& Get(unsigned int value);
    // The value within the exclusive limits whose name or short description is `text`, or 0.
    static unsigned int Find(const std::string& text, unsigned int minValue, unsigned int maxValue);
};

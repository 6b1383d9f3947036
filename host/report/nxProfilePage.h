#pragma once

#include <ostream>
#include <string>

#include "host/report/nxProfile.h"

// A profile as one HTML file that opens without a network, and its memory as a text.
class nxProfilePage
{
public:
    // Whether all was written, the stream tells.
    static void Write(std::ostream& out, const nxProfile& profile);
    // The same with the document as JSON in UTF-8.
    static void Write(std::ostream& out, const std::string& document);
    static void WriteMemory(std::ostream& out, const nxProfile& profile);
};

// The page as the build put it together; @DATA@ stands where the data belong.
const std::string& nxProfilePageText();

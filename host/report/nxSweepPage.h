#pragma once

#include <ostream>
#include <string>

// A sweep as one HTML file that opens without a network: the page of web/ with the sweep in it as data.
class nxSweepPage
{
public:
    // The document of the sweep, JSON in UTF-8. Whether all was written, the stream tells.
    static void Write(std::ostream& out, const std::string& document);
};

// The page as the build put it together; @DATA@ stands where the data belong.
const std::string& nxSweepPageText();

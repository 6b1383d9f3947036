#pragma once

#include <ostream>
#include <string>
#include <vector>

// Results as one HTML file that opens without a network: the page of web/ with the results in it as data.
// Whatever texts they hold, the page shows them as text.
class nxResultPage
{
public:
    struct Run
    {
        std::string name;    // tells it from the others; empty: its scripts do
        std::string result;  // the result document, JSON in UTF-8
        std::string timing;  // what its callbacks cost, JSON; empty: not known
    };
    // At least one run, in the order in which the page shows them. Whether all was written, the stream tells.
    static void Write(std::ostream& out, const std::vector<Run>& runs);
};

// The page as the build put it together; @DATA@ stands where the data belong.
const std::string& nxResultPageText();

#pragma once

#include <ostream>
#include <string>
#include <string_view>
#include <vector>

// An HTML file of web/ with data in it. Whatever texts the data hold, no browser takes them for markup.
class nxDataPage
{
public:
    struct Block
    {
        std::string id;         // of the element that holds it
        std::string_view json;  // in UTF-8; must outlive the call
    };
    // `page` is as the build put it together, with @DATA@ where the blocks belong. Whether all was written,
    // the stream tells.
    static void Write(std::ostream& out, std::string_view page, const std::vector<Block>& blocks);
};

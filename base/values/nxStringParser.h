#pragma once

#include <deque>
#include <string>

// Splits texts.
class nxStringParser
{
public:
    // Replaces `out` by the parts of `text` between separators. An empty text is one empty part; `skipEmpty`
    // leaves out the parts that are empty.
    static void ExtractAllSubstrings(const std::string& text, std::deque<std::string>& out, bool skipEmpty,
                                     char separator);
};

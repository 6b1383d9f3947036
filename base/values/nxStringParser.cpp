#include "base/values/nxStringParser.h"

void nxStringParser::ExtractAllSubstrings(const std::string& text, std::deque<std::string>& out,
                                          bool skipEmpty, char separator)
{
    out.clear();
    for (std::size_t begin = 0; begin <= text.size();) {
        const std::size_t end = std::min(text.find(separator, begin), text.size());
        if (end != begin || !skipEmpty) out.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
}

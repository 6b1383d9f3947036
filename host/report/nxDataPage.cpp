#include "host/report/nxDataPage.h"

#include <algorithm>

namespace {

// In JSON "<" stands only within texts, where it may be escaped.
void WriteEscaped(std::ostream& out, std::string_view json)
{
    for (std::size_t from = 0; from < json.size();) {
        const std::size_t found = std::min(json.find('<', from), json.size());
        out << json.substr(from, found - from);
        if (found < json.size()) out << "\\u003c";
        from = found + 1;
    }
}

}  // namespace

void nxDataPage::Write(std::ostream& out, std::string_view page, const std::vector<Block>& blocks)
{
    constexpr std::string_view Mark = "@DATA@";
    const std::size_t place = page.find(Mark);
    out << page.substr(0, place);
    for (const Block& block : blocks) {
        out << R"(<script type="application/json" id=")" << block.id << R"(">)";
        WriteEscaped(out, block.json);
        out << "</script>\n";
    }
    out << page.substr(place + Mark.size());
}

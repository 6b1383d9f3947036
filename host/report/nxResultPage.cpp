#include "host/report/nxResultPage.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string_view>

namespace {

// A block of data that no browser takes for markup: in JSON "<" stands only within texts, where it may be
// escaped.
void WriteBlock(std::ostream& out, const std::string& id, std::string_view json)
{
    out << R"(<script type="application/json" id=")" << id << R"(">)";
    for (std::size_t from = 0; from < json.size();) {
        const std::size_t found = std::min(json.find('<', from), json.size());
        out << json.substr(from, found - from);
        if (found < json.size()) out << "\\u003c";
        from = found + 1;
    }
    out << "</script>\n";
}

}  // namespace

void nxResultPage::Write(std::ostream& out, const std::vector<Run>& runs)
{
    const std::string_view page = nxResultPageText();
    constexpr std::string_view Mark = "@DATA@";
    const std::size_t place = page.find(Mark);
    out << page.substr(0, place);
    auto names = nlohmann::json::array();
    for (const Run& run : runs)
        names.push_back(run.name);
    WriteBlock(out, "names", names.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
    for (std::size_t index = 0; index < runs.size(); ++index) {
        // The first is "result", as on the page of a single run; those after it are numbered from 2.
        const std::string number = index == 0 ? "" : std::to_string(index + 1);
        WriteBlock(out, "result" + number, runs[index].result);
        if (!runs[index].timing.empty()) WriteBlock(out, "timing" + number, runs[index].timing);
    }
    out << page.substr(place + Mark.size());
}

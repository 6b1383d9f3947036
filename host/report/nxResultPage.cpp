#include "host/report/nxResultPage.h"

#include <nlohmann/json.hpp>

#include "host/report/nxDataPage.h"

void nxResultPage::Write(std::ostream& out, const std::vector<Run>& runs)
{
    auto list = nlohmann::json::array();
    for (const Run& run : runs)
        list.push_back(run.name);
    const std::string names = list.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    std::vector<nxDataPage::Block> blocks = {{"names", names}};
    for (std::size_t index = 0; index < runs.size(); ++index) {
        // The first is "result", as on the page of a single run; those after it are numbered from 2.
        const std::string number = index == 0 ? "" : std::to_string(index + 1);
        blocks.push_back({"result" + number, runs[index].result});
        if (!runs[index].timing.empty()) blocks.push_back({"timing" + number, runs[index].timing});
    }
    nxDataPage::Write(out, nxResultPageText(), blocks);
}

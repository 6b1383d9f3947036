#include <fstream>
#include <iostream>
#include <iterator>

#include "host/report/nxResultPage.h"
#include "host/report/nxSweepPage.h"

namespace {

std::string Read(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace

// make_page PAGE RESULT.json...: the page of the results, each with RESULT.json.timing where there is such a
// file. make_page PAGE --sweep SWEEP.json: the page of a sweep.
int main(int argc, char** argv)
{
    std::ofstream page(argv[1], std::ios::binary);
    if (std::string(argv[2]) == "--sweep") {
        nxSweepPage::Write(page, Read(argv[3]));
        return page.flush() ? 0 : 1;
    }
    std::vector<nxResultPage::Run> runs;
    for (int index = 2; index < argc; ++index) {
        const std::string path = argv[index];
        runs.push_back({path.substr(path.rfind('/') + 1), Read(path), Read(path + ".timing")});
    }
    nxResultPage::Write(page, runs);
    return page.flush() ? 0 : 1;
}

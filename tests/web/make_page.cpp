#include <fstream>
#include <iostream>
#include <iterator>

#include "host/report/nxResultPage.h"

namespace {

std::string Read(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace

// make_page PAGE RESULT.json...: the page of the results, each with RESULT.json.timing where there is such a
// file.
int main(int argc, char** argv)
{
    std::vector<nxResultPage::Run> runs;
    for (int index = 2; index < argc; ++index) {
        const std::string path = argv[index];
        runs.push_back({path.substr(path.rfind('/') + 1), Read(path), Read(path + ".timing")});
    }
    std::ofstream page(argv[1], std::ios::binary);
    nxResultPage::Write(page, runs);
    return page.flush() ? 0 : 1;
}

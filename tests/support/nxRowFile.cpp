#include "tests/support/nxRowFile.h"

#include <gtest/gtest.h>

#include <fstream>

std::vector<nxRow> nxReadRows(const std::string& name)
{
    std::ifstream file(NX_TEST_DIR "/data/" + name);
    std::vector<nxRow> rows;
    nxRow row;
    for (std::string text; std::getline(file, text);) {
        ++row.line;
        if (text.empty() || text.starts_with('#')) continue;
        if (text.starts_with("--- ") || text.starts_with("=== ")) {
            row.section = text;
            continue;
        }
        const std::size_t arrow = text.find("=>");
        row.what +=
            (row.what.empty() ? "" : "\n") + text.substr(0, text.find_last_not_of(' ', arrow - 1) + 1);
        if (arrow == std::string::npos) continue;
        const std::size_t outcome = text.find_first_not_of(' ', arrow + 2);
        row.outcome = outcome == std::string::npos ? "" : text.substr(outcome);
        rows.push_back(row);
        row.what.clear();
    }
    EXPECT_FALSE(rows.empty() || !row.what.empty()) << name;
    return rows;
}

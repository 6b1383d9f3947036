#include "tests/support/nxRowFile.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <sstream>

std::string nxTrim(const std::string& text)
{
    const std::size_t first = text.find_first_not_of(" \n");
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(" \n") + 1 - first);
}

std::vector<nxRow> nxReadRows(const std::string& name)
{
    std::ifstream file(NX_TEST_DIR "/data/" + name);
    std::vector<nxRow> rows;
    nxRow row;
    for (std::string text; std::getline(file, text);) {
        ++row.line;
        if ((text.empty() && row.what.empty()) || text.starts_with('#')) continue;
        if (text.starts_with("--- ") || text.starts_with("=== ")) {
            row.section = text;
            continue;
        }
        if (text.starts_with("| ")) {
            rows.at(rows.size() - 1).outcome += " " + text;
            continue;
        }
        const std::size_t arrow = text.find("=>");
        const std::string what = text.substr(0, arrow);
        row.what += (row.what.empty() ? "" : "\n") + what.substr(0, what.find_last_not_of(' ') + 1);
        if (arrow == std::string::npos) continue;
        row.outcome = nxTrim(text.substr(arrow + 2));
        rows.push_back(row);
        row.what.clear();
    }
    EXPECT_FALSE(rows.empty() || !row.what.empty()) << name;
    return rows;
}

void nxExpectRows(const std::string& name, const std::function<std::string(const std::string&)>& ask,
                  const std::string& part)
{
    const std::string test = testing::UnitTest::GetInstance()->current_test_info()->name();
    const std::string section = "--- " + test + (part.empty() ? "" : " " + part);
    bool isThere = false;
    for (const nxRow& row : nxReadRows(name)) {
        if (row.section != section) continue;
        isThere = true;
        std::string outcome = nxTrim(ask(row.what));
        for (std::size_t at = 0; (at = outcome.find('\n', at)) != std::string::npos; at += 3)
            outcome.replace(at, 1, " | ");
        EXPECT_EQ(outcome, row.outcome) << name << ":" << row.line << ": " << row.what;
    }
    EXPECT_TRUE(isThere) << name << " has no rows of " << section;
}

std::vector<std::string> nxGetWords(const std::string& text)
{
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), {}};
}

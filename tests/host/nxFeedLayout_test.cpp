#include "host/feed/nxFeedLayout.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <set>
#include <sstream>

#include "host/feed/nxFeedTime.h"
#include "host/feed/nxFormArguments.h"
#include "tests/host/nxFeedFixture.h"

namespace {

struct Case
{
    std::string name, content, events, remarks;
    std::map<std::string, std::string> options;
    int line = 0;
};

// "NAME [OPTION=VALUE ...]": a name may have blanks.
void ReadTitle(const std::string& title, Case& test)
{
    std::istringstream words(title);
    for (std::string word; words >> word;) {
        const std::size_t equals = word.find('=');
        if (equals == std::string::npos)
            test.name += (test.name.empty() ? "" : " ") + word;
        else
            test.options[word.substr(0, equals)] = word.substr(equals + 1);
    }
}

std::vector<Case> ReadCases(const std::string& path)
{
    std::vector<Case> cases;
    std::ifstream file(path);
    int number = 0;
    for (std::string line; std::getline(file, line);) {
        ++number;
        if (line.starts_with("file ")) {
            cases.emplace_back().line = number;
            ReadTitle(line.substr(5), cases.back());
        } else if (line.starts_with("  ")) {
            cases.back().content += line.substr(2) + "\n";
        } else if (line.starts_with("> ")) {
            cases.back().events += line.substr(2) + "\n";
        } else if (line.starts_with("? ")) {
            cases.back().remarks += line.substr(2) + "\n";
        }
    }
    return cases;
}

// With the time as people write it, without the zeros of its fraction.
std::string ShowCivil(const nxFeedEvent& event, const nxFeedProductTable& products)
{
    std::string time = nxFeedTime::GetAsString(event.time);
    time.erase(time.find_last_not_of('0') + 1);
    if (time.ends_with('.')) time.pop_back();
    const std::string text = Show(event, products);
    return time + text.substr(text.find(' ')) + "\n";
}

}  // namespace

TEST(nxFeedLayout, FilesOfOthersAreReadAsTheyAre)
{
    const std::filesystem::path folder = std::filesystem::path(testing::TempDir()) / "nxFeedLayout";
    std::set<std::string> tried;
    for (const Case& test : ReadCases(NX_TEST_DIR "/data/host/layouts.txt")) {
        SCOPED_TRACE("layouts.txt:" + std::to_string(test.line));
        std::filesystem::create_directories(folder);
        const std::string path = folder / test.name;
        std::ofstream(path) << test.content;
        nxFormArguments arguments;
        nxFeedOptions options;
        for (const auto& [name, value] : test.options) {
            const std::map<std::string, std::string*> texts = {
                {"layout", &arguments.layout},   {"columns", &arguments.columns},
                {"product", &arguments.product}, {"zone", &arguments.zone},
                {"date", &arguments.date},       {"date-order", &arguments.dateOrder},
                {"scale", &arguments.priceScale}};
            if (texts.contains(name)) *texts.at(name) = value;
            if (name == "bar-period") {
                ASSERT_TRUE(nxFeedTime::SetPeriodFromText(value, options.barPeriods[""]));
            }
            if (name == "round") options.roundsVolumes = true;
        }
        ASSERT_EQ(arguments.Apply(options.form), std::nullopt);
        nxFeed feed(options);
        std::string events, remarks;
        if (feed.Open({path})) {
            tried.insert(feed.GetReaders().front()->GetForm().layout);
            while (const nxFeedEvent* event = feed.Next())
                events += ShowCivil(*event, feed.GetProducts());
            for (std::string remark : feed.GetRemarks())
                remarks += remark.substr(remark.starts_with(path) ? remark.find(": ") + 2 : 0) + "\n";
        }
        if (feed.HasFailed()) events += feed.GetError().GetText().substr(path.size() + 1) + "\n";
        EXPECT_EQ(events, test.events);
        if (!test.remarks.empty()) {
            EXPECT_EQ(remarks, test.remarks);
        }
    }
    std::filesystem::remove_all(folder);
    for (const nxFeedLayout& layout : nxFeedLayout::GetAll())
        EXPECT_TRUE(tried.contains(std::string(layout.name))) << layout.name << " has no example";
}

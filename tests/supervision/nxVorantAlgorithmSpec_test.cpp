#include "scriptFramework/supervision/nxVorantAlgorithmSpec.h"

#include <gtest/gtest.h>

#include <random>

#include "tests/support/nxRowFile.h"

namespace {

using Parameters = std::map<std::string, std::string>;

TEST(nxVorantAlgorithmSpec, ExtractsWhatCanBeReadOfAnyText)
{
    nxExpectRows("scripts/watched.txt", [](const std::string& text) {
        Parameters parameters;
        const bool isWhole =
            nxVorantAlgorithmSpec::ExtractParametersFromUserString(text, parameters).IsSuccess();
        std::string told;
        for (const auto& [name, value] : parameters)
            told += "[" + name + "]=[" + value + "] ";
        return told + (isWhole ? "" : "and a fault");
    });
}

// Few different characters, so that what needs escaping comes often and side by side.
TEST(nxVorantAlgorithmSpec, ReadsBackWhatItJoined)
{
    constexpr std::string_view characters("\\;=a\0", 5);
    std::mt19937 random(20240521);
    const auto text = [&] {
        std::string result(random() % 6, ' ');
        for (char& character : result)
            character = characters[random() % characters.size()];
        return result;
    };
    for (int i = 0; i < 5000; ++i) {
        Parameters written;
        for (auto count = random() % 4; count > 0; --count)
            written[text()] = text();
        Parameters read;
        const std::string joined = nxVorantAlgorithmSpec::JoinParametersToUserString(written);
        EXPECT_TRUE(nxVorantAlgorithmSpec::ExtractParametersFromUserString(joined, read).IsSuccess())
            << joined;
        EXPECT_EQ(read, written) << joined;
    }
}

}  // namespace

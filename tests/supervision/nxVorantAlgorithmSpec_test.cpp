#include "scriptFramework/supervision/nxVorantAlgorithmSpec.h"

#include <gtest/gtest.h>

#include <random>

namespace {

using Parameters = std::map<std::string, std::string>;

TEST(nxVorantAlgorithmSpec, ExtractsWhatCanBeReadOfAnyText)
{
    const std::tuple<const char*, Parameters, bool> rows[] = {
        {"a=1;b=;c=x y", {{"a", "1"}, {"b", ""}, {"c", "x y"}}, true},
        {";;a=1;;", {{"a", "1"}}, true},
        {"a=1;a=2", {{"a", "2"}}, true},
        {"a=1;b;c=3", {{"a", "1"}, {"c", "3"}}, false},
        {"a=b=c", {{"a", "b=c"}}, true},
        {"=1", {{"", "1"}}, true},
        {R"(a\;\=\\=\;\=\\;b=2)", {{R"(a;=\)", R"(;=\)"}, {"b", "2"}}, true},
        {R"(a=1\)", {{"a", R"(1\)"}}, true},
        {R"(a\=1)", {}, false},
    };
    for (const auto& [text, expected, whole] : rows) {
        Parameters parameters;
        EXPECT_EQ(nxVorantAlgorithmSpec::ExtractParametersFromUserString(text, parameters).IsSuccess(), whole)
            << text;
        EXPECT_EQ(parameters, expected) << text;
    }
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

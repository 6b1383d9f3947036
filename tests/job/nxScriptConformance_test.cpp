// Runs each file of tests/scripts as a job: a file makes its claims by assert in OnInit, and a wrong one
// fails the start with the file's line.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "tests/support/nxRecordingHost.h"
#include "tests/support/nxTestProduct.h"

#include "scriptFramework/job/nxAlgoJobObject.h"

namespace {

std::vector<std::string> Scripts()
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(NX_TEST_DIR "/scripts"))
        if (entry.path().extension() == ".lua") names.push_back(entry.path().stem());
    std::ranges::sort(names);
    return names;
}

class nxScriptConformance : public testing::TestWithParam<std::string>
{
};

TEST_P(nxScriptConformance, Holds)
{
    nxRecordingHost host;
    host.products["FDAX"] = std::make_unique<nxTestProduct>(&host, nxGenericProductID("FDAX"), 12);
    nxAlgoJobObject job(&host);
    ASSERT_TRUE(job.LoadFile(NX_TEST_DIR "/scripts/" + GetParam() + ".lua").IsSuccess());
    EXPECT_TRUE(job.StartJob().IsSuccess()) << job.GetErrorText();
}

INSTANTIATE_TEST_SUITE_P(Scripts, nxScriptConformance, testing::ValuesIn(Scripts()),
                         [](const auto& script) { return script.param; });

}  // namespace

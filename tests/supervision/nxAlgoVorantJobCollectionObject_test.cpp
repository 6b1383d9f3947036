#include "scriptFramework/supervision/nxAlgoVorantJobCollectionObject.h"

#include <gtest/gtest.h>

#include "tests/support/nxRecordingLog.h"
#include "tests/support/nxScriptJob.h"
#include "tests/support/nxTestVorantJob.h"

namespace {

// Holds one job, at index 1.
class Collection : public nxAlgoVorantJobCollectionObject
{
public:
    explicit Collection(nxAlgoJobInterface* job) : nxAlgoVorantJobCollectionObject(job), _job(job, 7) {}

protected:
    unsigned int _GetCount() override { return 1; }
    nxAlgoVorantJobObject* _GetVorantJob(unsigned int index) override { return index == 1 ? &_job : nullptr; }

private:
    nxTestVorantJob _job;
};

TEST(nxAlgoVorantJobCollectionObject, GivesTheJobsOfTheHost)
{
    const std::string logged = "32 [test] Get Vorant job at index ";
    const std::tuple<const char*, const char*, std::string> rows[] = {
        {"jobs.count", "1", ""},
        {"jobs:getVorantJob(1.9).id", "7", logged + "1\n"},
        {"jobs:getVorantJob(2 ^ 32 + 1).id", "7", logged + "4294967297\n"},
        {"jobs:getVorantJob(1e15), jobs:getVorantJob(-0.5), jobs:getVorantJob(2 ^ 63)", "table table table",
         logged + "1000000000000000\n" + logged + "0\n" + logged + "0\n"},
        {"jobs:getVorantJob(2), jobs:getVorantJob(2):stop()", "table", logged + "2\n" + logged + "2\n"},
        {"jobs:getVorantJob(2):getOutputParameter('a')", "", logged + "2\n"},
        {"jobs:getVorantJob(1, 2)", "error: ", ""},
    };
    nxScriptJob script;
    Collection collection(&script.host);
    script.host.vorantJobs = &collection;
    ASSERT_EQ(script.Evaluate("jobs = job:getVorantJobs()"), "");
    nxRecordingLog log;
    for (const auto& [code, answer, lines] : rows) {
        EXPECT_EQ(script.Evaluate(code), answer) << code;
        EXPECT_EQ(log.TakeLines(), lines) << code;
    }
}

}  // namespace

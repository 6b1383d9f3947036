#include "scriptFramework/supervision/nxAlgoVorantJobCollectionObject.h"

#include <gtest/gtest.h>

#include "tests/support/nxRowFile.h"
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
    nxScriptJob script;
    Collection collection(&script.host);
    script.host.vorantJobs = &collection;
    ASSERT_EQ(script.Evaluate("jobs = job:getVorantJobs()"), "");
    nxExpectRows("scripts/watched.txt", [&](const std::string& code) { return script.Tell(code); });
}

}  // namespace

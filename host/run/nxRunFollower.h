#pragma once

#include <cstddef>
#include <span>
#include <string>

#include "host/feed/nxFeedEvent.h"
#include "host/feed/nxFeedProductTable.h"
#include "host/report/nxRunRecord.h"
#include "scriptFramework/lua/nxScriptDebugger.h"

// Who goes through a run step by step, such as a debugger. The run waits while it is told, and makes no
// thread of its own, so that the follower may copy the process at any time. Called on the run's thread.
class nxRunFollower
{
public:
    // Follows the script of the job with that index; outlives the run.
    virtual nxScriptDebugger& GetDebugger(std::size_t job) = 0;
    // The next event of the data, or something else that is due when it is null, is about to happen.
    virtual void BeforeStep(const nxFeedEvent* event, const nxFeedProductTable& products, long long time) = 0;
    // Something left a script, or came in: a line of the record, whether there is one or not.
    virtual void OnEntry(const std::string& job, const char* type,
                         std::span<const nxRunRecord::Field> fields) = 0;
    // Nothing more will happen; the jobs are there still.
    virtual void BeforeEnd() = 0;

protected:
    ~nxRunFollower() = default;
};

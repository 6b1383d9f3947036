#pragma once

#include <string>
#include <vector>

#include "host/jobs/nxJobOptions.h"

// Parameters that were given to a run and that no script read: mostly a name that one side spells otherwise.
class nxUnreadParameters
{
public:
    // Each job that has started, with its parameters as they stand at its end.
    void Add(const nxJobOptions& job, bool definesOnParameter) { _jobs.push_back({job, definesOnParameter}); }
    // A parameter that scripts may also have read by its tag.
    void NoteTagged(const std::string& name) { _tagged.push_back(name); }

    // A line each. One that several jobs were given is unread when none of them read it.
    [[nodiscard]] std::vector<std::string> GetNotes() const;
    [[nodiscard]] std::vector<std::string> GetNames() const;

private:
    struct Job
    {
        const nxJobOptions& options;
        bool definesOnParameter;
    };

    bool _IsRead(const std::string& name) const;

    std::vector<Job> _jobs;
    std::vector<std::string> _tagged;
};

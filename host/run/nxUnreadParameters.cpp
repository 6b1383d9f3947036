#include "host/run/nxUnreadParameters.h"

#include <algorithm>
#include <set>

std::vector<std::string> nxUnreadParameters::GetNames() const
{
    std::set<std::string> given;
    for (const Job& job : _jobs)
        given.merge(job.options.parameters.GetNames());
    std::erase_if(given, [this](const std::string& name) { return _IsRead(name); });
    return {given.begin(), given.end()};
}

std::vector<std::string> nxUnreadParameters::GetNotes() const
{
    std::set<std::string> missed;
    for (const Job& job : _jobs)
        missed.merge(std::set(job.options.parameters.GetMissed()));
    std::string asked;
    for (const std::string& name : missed)
        asked += (asked.empty() ? "; asked for, and not given: " : ", ") + name;
    std::vector<std::string> notes;
    for (const std::string& name : GetNames())
        notes.push_back("parameter " + name + " is given, and no script reads it" + asked);
    return notes;
}

bool nxUnreadParameters::_IsRead(const std::string& name) const
{
    return std::ranges::find(_tagged, name) != _tagged.end() ||
           std::ranges::any_of(_jobs, [&name](const Job& job) {
               const nxParameterSet& parameters = job.options.parameters;
               return parameters.WasRead(name) || (job.definesOnParameter && parameters.WasChanged(name));
           });
}

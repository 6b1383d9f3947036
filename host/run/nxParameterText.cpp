#include "host/run/nxParameterText.h"

#include <algorithm>

std::optional<std::string> nxParameterName::SetFromText(std::string_view text,
                                                        const std::vector<nxJobOptions>& jobs)
{
    job.reset();
    if (const std::size_t slash = text.find('/'); slash != text.npos) {
        const std::string_view wanted = text.substr(0, slash);
        const auto found = std::ranges::find(jobs, wanted, &nxJobOptions::name);
        if (found == jobs.end()) {
            std::string known;
            for (const nxJobOptions& candidate : jobs)
                known += (known.empty() ? "" : ", ") + candidate.name;
            return "no job named \"" + std::string(wanted) + "\"; there is " + known;
        }
        job = static_cast<std::size_t>(found - jobs.begin());
        text.remove_prefix(slash + 1);
    }
    name = text;
    if (name.empty()) return "the parameter has no name";
    return std::nullopt;
}

std::optional<std::string> nxParameterText::SetFromText(const std::string& text,
                                                        const std::vector<nxJobOptions>& jobs)
{
    const std::size_t equals = text.find('=');
    if (equals == text.npos) return "is no NAME=VALUE";
    value = text.substr(equals + 1);
    std::string_view front = std::string_view(text).substr(0, equals);
    type.clear();
    if (const std::size_t colon = front.rfind(':'); colon != front.npos) {
        type = front.substr(colon + 1);
        if (!nxParameterSet::IsTypeName(type))
            return "unknown type \"" + type + "\"; known are " + nxParameterSet::TypeNames;
        front = front.substr(0, colon);
    }
    return name.SetFromText(front, jobs);
}

#include "host/sweep/nxSweepTable.h"

#include <limits>

const char* nxSweepPart::GetRoleName(Role role)
{
    static constexpr const char* names[] = {"whole", "train", "test", "holdout", "variant"};
    return names[static_cast<std::size_t>(role)];
}

const nxSweepOutcome* nxSweepTable::Find(std::size_t point, std::size_t part) const
{
    const auto found = outcomes.find({point, part});
    return found == outcomes.end() ? nullptr : &found->second;
}

double nxSweepTable::GetObjective(std::size_t point, std::size_t part) const
{
    const nxSweepOutcome* const outcome = Find(point, part);
    if (outcome == nullptr || outcome->HasFailed()) return std::numeric_limits<double>::quiet_NaN();
    return plan.GetObjective(outcome->measures);
}

std::vector<std::size_t> nxSweepTable::GetParts(nxSweepPart::Role role,
                                                std::optional<std::size_t> split) const
{
    std::vector<std::size_t> found;
    for (std::size_t i = 0; i < parts.size(); ++i)
        if (parts[i].role == role && (!split || parts[i].split == *split)) found.push_back(i);
    return found;
}

std::size_t nxSweepTable::GetSplitCount() const
{
    std::size_t count = 0;
    for (const nxSweepPart& part : parts)
        if (part.role == nxSweepPart::Role::Test) count = std::max(count, part.split + 1);
    return count;
}

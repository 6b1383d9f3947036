#include "host/sweep/nxGrid.h"

#include <algorithm>
#include <set>

namespace {

std::vector<unsigned long long> GetCounts(const std::vector<nxDimension>& dimensions)
{
    std::vector<unsigned long long> counts;
    for (const nxDimension& dimension : dimensions)
        counts.push_back(dimension.GetCount());
    return counts;
}

std::vector<const nxExpression*> GetPointers(const std::vector<nxExpression>& conditions)
{
    std::vector<const nxExpression*> pointers;
    for (const nxExpression& condition : conditions)
        pointers.push_back(&condition);
    return pointers;
}

// Conditions that name a dimension in common, directly or by way of others, and all their dimensions.
struct Group
{
    std::set<std::size_t> dimensions;
    std::vector<const nxExpression*> conditions;
};

std::vector<Group> GetGroups(const std::vector<const nxExpression*>& conditions)
{
    std::vector<Group> groups;
    for (const nxExpression* condition : conditions) {
        Group joined{{condition->GetNames().begin(), condition->GetNames().end()}, {condition}};
        std::erase_if(groups, [&](const Group& group) {
            const auto isCommon = [&](std::size_t name) { return group.dimensions.contains(name); };
            if (std::ranges::none_of(condition->GetNames(), isCommon)) return false;
            joined.dimensions.insert(group.dimensions.begin(), group.dimensions.end());
            joined.conditions.insert(joined.conditions.end(), group.conditions.begin(),
                                     group.conditions.end());
            return true;
        });
        groups.push_back(std::move(joined));
    }
    return groups;
}

std::size_t GetLastName(const nxExpression* condition)
{
    return condition->GetNames().empty() ? 0 : condition->GetNames().back();
}

}  // namespace

nxGrid::nxGrid(const std::vector<nxDimension>& dimensions, const std::vector<nxExpression>& conditions)
    : nxGrid(dimensions, GetPointers(conditions), GetCounts(dimensions))
{
}

nxGrid::nxGrid(const std::vector<nxDimension>& dimensions, std::vector<const nxExpression*> conditions,
               std::vector<unsigned long long> counts)
    : _dimensions(dimensions),
      _conditions(std::move(conditions)),
      _counts(std::move(counts)),
      _strides(_counts)
{
    std::ranges::stable_sort(_conditions, {}, GetLastName);
    for (std::size_t i = _counts.size(); i-- > 0;) {
        _strides[i] = _size;
        _size *= _counts[i];
    }
}

bool nxGrid::IsCountable(const std::vector<nxDimension>& dimensions)
{
    unsigned long long size = 1;
    return std::ranges::all_of(dimensions, [&](const nxDimension& dimension) {
        return dimension.GetCount() != 0 && !__builtin_mul_overflow(size, dimension.GetCount(), &size) &&
               size <= MaxSize;
    });
}

unsigned long long nxGrid::GetCombination(const std::vector<unsigned long long>& places) const
{
    unsigned long long combination = 0;
    for (std::size_t i = 0; i < places.size(); ++i)
        combination += places[i] * _strides[i];
    return combination;
}

unsigned long long nxGrid::FindAllowed(unsigned long long from) const
{
    std::vector<double> numbers(_dimensions.size());
    while (from < _size) {
        const auto refusal = std::ranges::find_if(_conditions, [&](const nxExpression* condition) {
            for (const std::size_t name : condition->GetNames())
                numbers[name] = _dimensions[name].GetNumber(GetPlace(from, name));
            return !condition->Holds(numbers);
        });
        if (refusal == _conditions.end()) return from;
        const unsigned long long alike =
            (*refusal)->GetNames().empty() ? _size : _strides[(*refusal)->GetNames().back()];
        from = (from / alike + 1) * alike;
    }
    return _size;
}

unsigned long long nxGrid::CountAllowed() const
{
    unsigned long long allowed = _size;
    for (const Group& group : GetGroups(_conditions)) {
        std::vector<unsigned long long> counts(_counts.size(), 1);
        for (const std::size_t dimension : group.dimensions)
            counts[dimension] = _counts[dimension];
        const nxGrid part(_dimensions, group.conditions, std::move(counts));
        unsigned long long found = 0;
        for (unsigned long long i = part.FindAllowed(0); i < part.GetSize(); i = part.FindAllowed(i + 1))
            ++found;
        allowed = allowed / part.GetSize() * found;
    }
    return allowed;
}

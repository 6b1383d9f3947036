#include "host/sweep/nxPlanPoints.h"

nxPlanPoints::nxPlanPoints(const nxPlan& plan) : _plan(plan)
{
    const std::size_t dimensions = plan.GetDimensions().size();
    if (nxGrid::IsCountable(plan.GetDimensions())) _grid.emplace(plan.GetDimensions(), plan.GetConditions());
    if (plan.GetMethod() == nxPlan::Method::Random && _grid)
        _permutation.emplace(_grid->GetSize(), plan.GetSeed());
    if (plan.GetMethod() != nxPlan::Method::Sobol) return;
    plan.IsScrambled() ? _sobol.emplace(dimensions, plan.GetSeed()) : _sobol.emplace(dimensions);
}

bool nxPlanPoints::Next(nxPlanPoint& point)
{
    if (_plan.GetMethod() == nxPlan::Method::Grid) return _NextCombination(point);
    return _plan.GetMethod() < nxPlan::Method::TreeParzen && _NextDraw(point);
}

bool nxPlanPoints::_NextCombination(nxPlanPoint& point)
{
    const unsigned long long combination = _grid->FindAllowed(_next);
    if (combination == _grid->GetSize()) return false;
    point = _GetCombination(combination);
    _next = combination + 1;
    return true;
}

bool nxPlanPoints::_NextDraw(nxPlanPoint& point)
{
    const unsigned long long all = _permutation ? _grid->GetSize() : nxSobolSequence::MaxPoints;
    if (_found == _plan.GetRuns() || (_sobol && _grid && _seen.size() == _grid->GetSize())) return false;
    for (unsigned long long vain = 0; _next < all && vain < MaxVain; ++vain) {
        const unsigned long long number = _next++;
        auto drawn = _Draw(number);
        if (!drawn) {
            ++_refused;
            continue;
        }
        if (_sobol && _grid && !_seen.insert(_grid->GetCombination(drawn->places)).second) continue;
        point = std::move(*drawn);
        point.number = number;
        ++_found;
        return true;
    }
    return false;
}

std::optional<nxPlanPoint> nxPlanPoints::_Draw(unsigned long long number)
{
    if (_sobol) return MakePoint(_plan, _sobol->GetPoint(number));
    if (_permutation) {
        const unsigned long long combination = _permutation->Get(number);
        return _grid->IsAllowed(combination) ? std::optional(_GetCombination(combination)) : std::nullopt;
    }
    // A row of random numbers for each draw, so that it can be made by its number.
    nxSplitMix random(nxSplitMix(_plan.GetSeed()).GetBits() ^ number);
    std::vector<double> shares(_plan.GetDimensions().size());
    for (double& share : shares)
        share = random.GetNext();
    return MakePoint(_plan, shares);
}

nxPlanPoint nxPlanPoints::_GetCombination(unsigned long long combination) const
{
    nxPlanPoint point;
    point.number = combination;
    for (std::size_t i = 0; i < _plan.GetDimensions().size(); ++i) {
        point.places.push_back(_grid->GetPlace(combination, i));
        point.values.push_back(_plan.GetDimensions()[i].GetText(point.places.back()));
    }
    return point;
}

std::optional<nxPlanPoint> nxPlanPoints::MakePoint(const nxPlan& plan, const std::vector<double>& shares)
{
    nxPlanPoint point;
    std::vector<double> numbers;
    bool hasPlaces = true;
    for (std::size_t i = 0; i < shares.size(); ++i) {
        const nxDimension& dimension = plan.GetDimensions()[i];
        point.values.push_back(dimension.GetTextAt(shares[i]));
        numbers.push_back(nxDimension::GetNumber(point.values.back()));
        hasPlaces = hasPlaces && dimension.GetCount() != 0;
        if (hasPlaces) point.places.push_back(dimension.GetPlaceAt(shares[i]));
    }
    if (!hasPlaces) point.places.clear();
    return plan.IsAllowed(numbers) ? std::optional(std::move(point)) : std::nullopt;
}

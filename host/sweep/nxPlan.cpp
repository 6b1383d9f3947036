#include "host/sweep/nxPlan.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <map>

#include "base/values/nxStringHelper.h"
#include "host/feed/nxSha256.h"
#include "host/sweep/nxGrid.h"
#include "host/sweep/nxSobolSequence.h"

namespace {

using Fault = std::optional<std::string>;

constexpr unsigned long long MaxRuns = 1'000'000'000;
constexpr const char* MethodNames[] = {"grid", "random", "sobol", "tpe", "cmaes"};

Fault SetCount(const std::string& text, unsigned long long& count)
{
    if (nxStringHelper::SetFromString(text, count).IsSuccess() && count > 0 && count <= MaxRuns) return {};
    return fmt::format("\"{}\" is no count of runs from 1 to {}", text, MaxRuns);
}

Fault SetTruth(const std::string& text, bool& truth)
{
    truth = text == "true";
    if (truth || text == "false") return {};
    return fmt::format("\"{}\" is neither true nor false", text);
}

}  // namespace

// Makes a plan of entries; lives while it does so.
class nxPlanReader
{
public:
    nxPlanReader(nxPlan& plan, const std::vector<std::string>& measures) : _plan(plan), _measures(measures) {}

    Fault Read(const std::vector<nxPlanEntry>& entries)
    {
        // Conditions name dimensions, which may stand after them.
        for (const bool isDimension : {true, false}) {
            for (const nxPlanEntry& entry : entries) {
                if ((entry.key == "parameters" || entry.key == "options") != isDimension) continue;
                const Fault fault = isDimension ? _TakeDimension(entry) : _Take(entry);
                if (fault) return fmt::format("{}: {}", entry.place, *fault);
                _places[entry.key] = entry.place;
            }
        }
        return _Check();
    }

    struct Key
    {
        const char* name;
        Fault (nxPlanReader::*take)(const std::string& text);
    };
    static std::span<const Key> GetKeys()
    {
        using Self = nxPlanReader;
        static constexpr Key keys[] = {{"conditions", &Self::_TakeCondition},
                                       {"maximise", &Self::_TakeMaximise},
                                       {"minimise", &Self::_TakeMinimise},
                                       {"constraints", &Self::_TakeConstraint},
                                       {"random", &Self::_TakeRandom},
                                       {"sobol", &Self::_TakeSobol},
                                       {"scramble", &Self::_TakeScramble},
                                       {"search", &Self::_TakeSearch},
                                       {"runs", &Self::_TakeRuns},
                                       {"seed", &Self::_TakeSeed},
                                       {"walk", &Self::_TakeWalk},
                                       {"anchored", &Self::_TakeAnchored},
                                       {"folds", &Self::_TakeFolds},
                                       {"purge", &Self::_TakePurge},
                                       {"embargo", &Self::_TakeEmbargo},
                                       {"holdout", &Self::_TakeHoldout}};
        return keys;
    }

private:
    using Method = nxPlan::Method;

    Fault _TakeDimension(const nxPlanEntry& entry)
    {
        const auto kind = entry.key == "options" ? nxDimension::Kind::Option : nxDimension::Kind::Parameter;
        nxDimension dimension;
        const Fault fault = entry.isList || entry.values.empty()
                                ? dimension.SetFromList(kind, entry.name, entry.values)
                                : dimension.SetFromText(kind, entry.name, entry.values.front());
        if (fault) return fault;
        _places["= " + dimension.GetShortName()] = entry.place;
        const auto same =
            std::ranges::find(_plan._dimensions, dimension.GetShortName(), &nxDimension::GetShortName);
        if (same == _plan._dimensions.end()) {
            _plan._dimensions.push_back(std::move(dimension));
        } else if (same->GetKind() != kind) {
            return dimension.GetName() + " is both a parameter and an option";
        } else {
            *same = std::move(dimension);
        }
        return {};
    }

    Fault _Take(const nxPlanEntry& entry)
    {
        const auto key = std::ranges::find_if(GetKeys(), [&](const Key& k) { return entry.key == k.name; });
        if (key == GetKeys().end())
            return fmt::format("unknown key \"{}\"; known are {}", entry.key, nxPlan::GetKeys());
        const bool takesMany = entry.key == "conditions" || entry.key == "constraints";
        if (!takesMany && (entry.isList || entry.values.size() != 1)) return entry.key + " is a list";
        for (const std::string& value : entry.values)
            if (const Fault fault = (this->*key->take)(value)) return fault;
        return {};
    }

    Fault _Add(const std::string& text, const std::vector<std::string>& names, nxExpression::Kind kind,
               std::vector<nxExpression>& list)
    {
        if (const Fault fault = list.emplace_back().SetFromText(text, names, kind))
            return text + ": " + *fault;
        return {};
    }
    Fault _TakeCondition(const std::string& text)
    {
        std::vector<std::string> names;
        for (const nxDimension& dimension : _plan._dimensions)
            names.push_back(dimension.GetShortName());
        if (const Fault fault = _Add(text, names, nxExpression::Kind::Truth, _plan._conditions)) return fault;
        for (const std::size_t name : _plan._conditions.back().GetNames())
            if (!_plan._dimensions[name].HasNumbers())
                return fmt::format("{}: {} has values that are no numbers", text, names[name]);
        return {};
    }
    Fault _TakeConstraint(const std::string& text)
    {
        return _Add(text, _measures, nxExpression::Kind::Truth, _plan._constraints);
    }
    Fault _TakeObjective(const std::string& text, bool isMinimised)
    {
        std::vector<nxExpression> list;
        if (const Fault fault = _Add(text, _measures, nxExpression::Kind::Number, list)) return fault;
        _plan._objective = std::move(list.back());
        _plan._isMinimised = isMinimised;
        return {};
    }
    Fault _TakeMaximise(const std::string& text) { return _TakeObjective(text, false); }
    Fault _TakeMinimise(const std::string& text) { return _TakeObjective(text, true); }

    Fault _TakeRandom(const std::string& text)
    {
        _plan._method = Method::Random;
        return SetCount(text, _plan._runs);
    }
    Fault _TakeSobol(const std::string& text)
    {
        _plan._method = Method::Sobol;
        return SetCount(text, _plan._runs);
    }
    Fault _TakeSearch(const std::string& text)
    {
        if (text != "tpe" && text != "cmaes")
            return fmt::format("unknown search \"{}\"; known are tpe, cmaes", text);
        _plan._method = text == "tpe" ? Method::TreeParzen : Method::CovarianceMatrix;
        return {};
    }
    Fault _TakeRuns(const std::string& text) { return SetCount(text, _searchRuns); }
    Fault _TakeScramble(const std::string& text) { return SetTruth(text, _plan._isScrambled); }
    Fault _TakeSeed(const std::string& text)
    {
        if (nxStringHelper::SetFromString(text, _plan._seed).IsSuccess()) return {};
        return fmt::format("\"{}\" is no seed, a whole number from 0 on", text);
    }

    Fault _TakeWalk(const std::string& text) { return _plan._splits.SetWalk(text); }
    Fault _TakeFolds(const std::string& text) { return _plan._splits.SetFolds(text); }
    Fault _TakePurge(const std::string& text) { return _plan._splits.SetPurge(text); }
    Fault _TakeEmbargo(const std::string& text) { return _plan._splits.SetEmbargo(text); }
    Fault _TakeHoldout(const std::string& text) { return _plan._splits.SetHoldout(text); }
    Fault _TakeAnchored(const std::string& text)
    {
        bool isAnchored = false;
        const Fault fault = SetTruth(text, isAnchored);
        _plan._splits.SetAnchored(isAnchored);
        return fault;
    }

    // What does not go together, at the place of the key that it is about.
    Fault _Refuse(const std::string& key, const std::string& reason)
    {
        const std::string& place = _places[key];
        return place.empty() ? reason : place + ": " + reason;
    }
    Fault _Check()
    {
        if (_plan._dimensions.empty()) return "the plan varies nothing";
        const bool isSearch = _plan._method >= Method::TreeParzen;
        if (isSearch && _searchRuns == 0) return _Refuse("search", "search is given without runs");
        if (!isSearch && _searchRuns != 0) return _Refuse("runs", "runs is given without search");
        if (isSearch) _plan._runs = _searchRuns;
        if (isSearch && !_plan._objective)
            return _Refuse("search", "search is given without maximise or minimise");
        if (_plan._isScrambled && _plan._method != Method::Sobol)
            return _Refuse("scramble", "scramble is given without sobol");
        if (const Fault fault = _CheckDimensions()) return fault;
        const auto fault = _plan._splits.Check();
        return fault ? _Refuse(fault->first, fault->second) : std::nullopt;
    }
    Fault _CheckDimensions()
    {
        const std::vector<nxDimension>& dimensions = _plan._dimensions;
        if (_plan._method == Method::Sobol && dimensions.size() > nxSobolSequence::MaxDimensions)
            return fmt::format("sobol takes at most {} dimensions", nxSobolSequence::MaxDimensions);
        for (const nxDimension& dimension : dimensions) {
            const std::string& name = dimension.GetShortName();
            if (_plan._method == Method::Grid && dimension.GetCount() == 0)
                return _Refuse("= " + name,
                               name + " has no steps: a grid needs FROM:TO:STEP or FROM:TO:logCOUNT");
            if (_plan._method == Method::CovarianceMatrix && !dimension.IsOrdered())
                return _Refuse("= " + name,
                               name + " has values that are no ascending numbers: search by tpe");
        }
        if (_plan._method == Method::Grid && !nxGrid::IsCountable(dimensions))
            return fmt::format("the grid has more than {} combinations", nxGrid::MaxSize);
        return {};
    }

    nxPlan& _plan;
    const std::vector<std::string>& _measures;
    unsigned long long _searchRuns = 0;
    std::map<std::string, std::string> _places;  // by key, and by "= " and the name of a dimension
};

Fault nxPlan::SetFromEntries(const std::vector<nxPlanEntry>& entries,
                             const std::vector<std::string>& measures)
{
    *this = nxPlan();
    return nxPlanReader(*this, measures).Read(entries);
}

std::string nxPlan::GetKeys()
{
    std::string keys = "parameters, options";
    for (const auto& key : nxPlanReader::GetKeys())
        keys += std::string(", ") + key.name;
    return keys;
}

bool nxPlan::IsAllowed(std::span<const double> numbers) const
{
    return std::ranges::all_of(_conditions, [&](const nxExpression& each) { return each.Holds(numbers); });
}

double nxPlan::GetObjective(std::span<const double> measures) const
{
    const auto holds = [&](const nxExpression& each) { return each.Holds(measures); };
    if (!_objective || !std::ranges::all_of(_constraints, holds))
        return std::numeric_limits<double>::quiet_NaN();
    return (_isMinimised ? -1.0 : 1.0) * _objective->Evaluate(measures);
}

std::string nxPlan::GetNormalForm() const
{
    std::string text;
    for (const nxDimension& dimension : _dimensions)
        text += dimension.GetNormalForm() + "\n";
    const auto add = [&](const char* key, const std::vector<nxExpression>& list) {
        std::vector<std::string> forms;
        for (const nxExpression& each : list)
            forms.push_back(each.GetNormalForm());
        std::ranges::sort(forms);
        for (const std::string& form : forms)
            text += fmt::format("{} {}\n", key, form);
    };
    add("condition", _conditions);
    add("constraint", _constraints);
    if (_objective)
        text += fmt::format("{} {}\n", _isMinimised ? "minimise" : "maximise", _objective->GetNormalForm());
    text += fmt::format("method {} runs {} seed {}{}\n", MethodNames[static_cast<std::size_t>(_method)],
                        _runs, _seed, _isScrambled ? " scrambled" : "");
    return text + _splits.GetNormalForm() + "\n";
}

std::string nxPlan::GetHash() const
{
    return nxSha256::GetOfText(GetNormalForm());
}

#include "host/sweep/nxSweepFacts.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "host/results/nxMeasures.h"
#include "host/sweep/nxSweepStore.h"

namespace {

using Json = nlohmann::json;

std::vector<std::string> GetMeasureNames()
{
    std::vector<std::string> names;
    for (const nxMeasure& measure : nxMeasure::GetAll())
        names.emplace_back(measure.name);
    return names;
}

// The places of the values that a point has, where all can be counted.
void FindPlaces(const nxPlan& plan, nxPlanPoint& point)
{
    constexpr unsigned long long most = 10'000;
    point.places.clear();
    for (std::size_t i = 0; i < plan.GetDimensions().size(); ++i) {
        const nxDimension& dimension = plan.GetDimensions()[i];
        unsigned long long place = 0;
        while (place < std::min(dimension.GetCount(), most) && dimension.GetText(place) != point.values[i])
            ++place;
        if (place == std::min(dimension.GetCount(), most)) return point.places.clear();
        point.places.push_back(place);
    }
}

}  // namespace

std::optional<std::string> nxSweepFacts::MakePlan(const std::vector<nxPlanEntry>& entries,
                                                  const std::string& objective, nxPlan& plan)
{
    std::vector<nxPlanEntry> all = entries;
    const auto isObjective = [](const nxPlanEntry& entry) {
        return entry.key == "maximise" || entry.key == "minimise";
    };
    if (std::ranges::none_of(entries, isObjective))
        all.push_back({"maximise", "", {objective}, false, "--maximise"});
    return plan.SetFromEntries(all, GetMeasureNames());
}

std::string nxSweepFacts::PackEntries(const std::vector<nxPlanEntry>& entries)
{
    Json packed = Json::array();
    for (const nxPlanEntry& entry : entries)
        packed.push_back({{"key", entry.key},
                          {"name", entry.name},
                          {"values", entry.values},
                          {"isList", entry.isList},
                          {"place", entry.place}});
    return packed.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::optional<std::string> nxSweepFacts::Read(nxSweepStore& store, nxSweepTable& table)
{
    std::map<std::string, std::string> facts = store.GetFacts();
    std::vector<nxPlanEntry> entries;
    try {
        for (const Json& entry : Json::parse(facts["plan"]))
            entries.push_back({entry.at("key"), entry.at("name"), entry.at("values"), entry.at("isList"),
                               entry.at("place")});
    } catch (const Json::exception&) {
        return store.GetPath() + ": holds no plan";
    }
    if (auto fault = MakePlan(entries, facts["objective"], table.plan))
        return store.GetPath() + ": its plan: " + *fault;
    if (facts.contains("capital")) table.capital = std::strtod(facts["capital"].c_str(), nullptr);
    if (auto fault = store.Read(table)) return fault;
    for (nxPlanPoint& point : table.points)
        FindPlaces(table.plan, point);
    return std::nullopt;
}

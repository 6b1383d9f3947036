#include "host/sweep/nxSweepIdentity.h"

#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>

#include "host/feed/nxSha256.h"
#include "host/run/nxRunSettings.h"

namespace {

using Json = nlohmann::json;

class Maker
{
public:
    void AddFile(const char* kind, const std::string& path)
    {
        const auto [known, isNew] = _hashes.try_emplace(path);
        if (isNew) known->second = nxSha256::GetOfFile(path).value_or("cannot be read twice");
        _Add(std::string(kind) + " " + path, known->second);
    }
    void AddOptions(const nxRunOptions& options)
    {
        for (const nxJobOptions& job : options.jobs)
            AddFile("script", job.script);
        for (const std::string& path : options.modules)
            AddFile("module", path);
        for (const std::string& path : options.data)
            AddFile("data", path);
        for (const nxJobOptions& job : options.jobs)
            for (const auto& [name, value] : job.parameters.GetTexts())
                _Add("parameter " + job.name + "/" + name, value);
        for (const auto& [name, value] : nxGetRunSettings(options))
            _Add("--" + name, value);
        _Add("--sandbox", options.profile == nxScriptProfile::Strict ? "strict" : "base");
        if (options.storeImage) _Add("the stores of --store", nxSha256::GetOfText(*options.storeImage));
        _Add("--seed", std::to_string(options.exchange.seed));
        _Add("--capital", options.capital.IsValid() ? options.capital.GetAsString() : "");
    }
    void AddProgram() { _Add("the program", "algoserver " NX_VERSION); }
    void AddPlan(const nxPlan& plan) { _Add("the plan", plan.GetHash()); }
    std::string Take() { return Json(_items).dump(-1, ' ', false, Json::error_handler_t::replace); }

private:
    // Of one with several values all are told.
    void _Add(const std::string& name, const std::string& value)
    {
        std::vector<std::string>& values = _items[name];
        if (std::ranges::find(values, value) == values.end()) values.push_back(value);
    }

    std::map<std::string, std::string> _hashes;  // by path
    std::map<std::string, std::vector<std::string>> _items;
};

}  // namespace

std::string nxSweepIdentity::Make(const nxPlan& plan, const std::vector<nxRunOptions>& all)
{
    Maker maker;
    maker.AddProgram();
    maker.AddPlan(plan);
    for (const nxRunOptions& options : all)
        maker.AddOptions(options);
    return maker.Take();
}

std::string nxSweepIdentity::FindChange(const std::string& before, const std::string& now)
{
    const Json a = Json::parse(before, nullptr, false), b = Json::parse(now, nullptr, false);
    if (!a.is_object() || !b.is_object()) return "the file";
    for (const auto& [name, value] : b.items())
        if (!a.contains(name) || a[name] != value) return name;
    for (const auto& [name, value] : a.items())
        if (!b.contains(name)) return name;
    return {};
}

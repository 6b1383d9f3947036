#pragma once

#include <compare>
#include <nlohmann/json.hpp>

// A moment of a run, the same in each run of the same: so many steps have been taken (events of the data and
// whatever else was due), so many lines of Lua have begun since the last of them, and the line has failed.
struct nxDebugPosition
{
    unsigned long long step = 0;
    unsigned long long line = 0;
    bool isFailure = false;

    auto operator<=>(const nxDebugPosition&) const = default;

    nlohmann::json GetAsJson() const { return {step, line, isFailure}; }
    static nxDebugPosition Get(const nlohmann::json& json)
    {
        return {json.at(0).get<unsigned long long>(), json.at(1).get<unsigned long long>(),
                json.at(2).get<bool>()};
    }
};

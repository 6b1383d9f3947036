#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/run/nxRunFollower.h"
#include "scriptFramework/lua/nxScriptInspector.h"

// What a test may expect something of: goes through a run of one job, takes down its orders, fills and texts,
// and looks at its globals at given times.
class nxTrialFollower : public nxRunFollower, private nxScriptDebugger
{
public:
    // A request that was sent, or a fill that the script was told of.
    struct Trade
    {
        long long time = 0;  // nanoseconds since 1970
        bool isFill = false;
        bool isBuy = false;
        double volume = 0.0, price = 0.0, stop = 0.0;  // not a number: none
        std::string product = {}, type = {};

        // "buy 2 SIM at 100.25", "sold 1 SIM at 100", "buy 1 SIM market".
        std::string Describe() const;
    };
    struct Text
    {
        long long time = 0;
        std::string text;
    };
    // A condition in Lua, and what the global in it was then.
    struct Look
    {
        long long time;  // after all that happens up to it
        std::string name, condition;
        bool holds = false;
        std::string came = {};
    };

    std::vector<Trade> trades;
    std::vector<Text> logs, failures;
    std::vector<Look> looks;  // by time; to be filled in before the run

    // At a time, after all that happened up to it. product: empty for that of all.
    double GetPosition(long long time, const std::string& product) const;

    nxScriptDebugger& GetDebugger(std::size_t) override { return *this; }
    void BeforeStep(const nxFeedEvent* event, const nxFeedProductTable& products, long long time) override;
    void OnEntry(const std::string& job, const char* type,
                 std::span<const nxRunRecord::Field> fields) override;
    void BeforeEnd() override;

private:
    void OnState(nxLuaState& state) override { _inspector = std::make_unique<nxScriptInspector>(state); }
    void OnLine(lua_State*, unsigned int) override {}
    void OnFailure(lua_State*, int, const std::string&) override {}
    void _LookUpTo(long long time);

    std::unique_ptr<nxScriptInspector> _inspector;
    std::size_t _looked = 0;
};

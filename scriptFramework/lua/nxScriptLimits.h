#pragma once

#include <array>
#include <cstddef>
#include <string>

// What a script may use at most. A plain value, in whose members 0 is no limit, but for the two allowances of
// OnShutdown. The host fills it in and gives it to nxAlgoJobObject::SetLimits before the load.
struct nxScriptLimits
{
    using Amount = unsigned long long;

    Amount memory = 0;
    Amount instructions = 0;
    Amount depth = 0;
    Amount timers = 0;
    Amount windows = 0;
    Amount collections = 0;
    Amount openOrders = 0;
    Amount orders = 0;
    Amount subscriptions = 0;
    Amount products = 0;
    Amount outputs = 0;
    Amount chartLines = 0;
    Amount logLine = 0;
    Amount log = 0;
    Amount pattern = 0;
    Amount subject = 0;
    // Count where `memory` and `instructions` are limited.
    Amount shutdownMemory = std::size_t{1} << 20;
    Amount shutdownInstructions = 1000000;

    bool operator==(const nxScriptLimits&) const = default;
};

// The members above, in their order; the place of one is that of its row.
enum class nxScriptLimit : unsigned int {
    Memory,
    Instructions,
    Depth,
    Timers,
    Windows,
    Collections,
    OpenOrders,
    Orders,
    Subscriptions,
    Products,
    Outputs,
    ChartLines,
    LogLine,
    Log,
    Pattern,
    Subject,
    ShutdownMemory,
    ShutdownInstructions,
    Count
};

struct nxScriptLimitRow
{
    const char* name;  // of the member
    nxScriptLimits::Amount nxScriptLimits::*member;
    const char* unit;    // as in "limit of 10 timers exceeded"
    unsigned int error;  // of nxErrorEnum
    const char* text;    // what is limited, for a person
};

extern const std::array<nxScriptLimitRow, static_cast<std::size_t>(nxScriptLimit::Count)> nxScriptLimitRows;

const nxScriptLimitRow& nxGetRow(nxScriptLimit which);
// What a script and the host are told when it has been exceeded.
std::string nxGetBreachText(nxScriptLimit which, nxScriptLimits::Amount value);

#pragma once

#include "scriptFramework/lua/nxScriptLimits.h"

// What a script may use at most in a strict run: far more than one needs that means well. docs/algoserver.md
// has the same as a table.
constexpr nxScriptLimits nxGetStrictLimits()
{
    constexpr nxScriptLimits::Amount KiB = 1024, MiB = 1024 * KiB, GiB = 1024 * MiB;
    constexpr nxScriptLimits::Amount many = 100'000;
    nxScriptLimits limits;
    limits.memory = GiB;
    limits.depth = 10'000;
    limits.timers = limits.windows = limits.collections = many;
    limits.subscriptions = limits.products = limits.outputs = limits.chartLines = many;
    limits.openOrders = many;
    limits.orders = 100 * many;
    limits.logLine = MiB;
    limits.log = GiB;
    limits.pattern = 64 * KiB;
    limits.subject = 64 * MiB;
    limits.shutdownMemory = 16 * MiB;
    return limits;
}

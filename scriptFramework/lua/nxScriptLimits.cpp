#include "scriptFramework/lua/nxScriptLimits.h"

#include "base/enums/nxEnumValue.h"

using Limits = nxScriptLimits;

const std::array<nxScriptLimitRow, static_cast<std::size_t>(nxScriptLimit::Count)> nxScriptLimitRows = {{
    {"memory", &Limits::memory, "bytes of memory", nxError_LimitMemory,
     "bytes that Lua and the script's objects in the library hold together"},
    {"instructions", &Limits::instructions, "instructions a callback", nxError_LimitInstructions,
     "instructions of Lua in one callback, and in the main chunk"},
    {"depth", &Limits::depth, "calls deep", nxError_LimitDepth, "calls within each other"},
    {"timers", &Limits::timers, "timers", nxError_LimitTimers, "timers that run"},
    {"windows", &Limits::windows, "trade windows", nxError_LimitWindows, "trade windows made"},
    {"collections", &Limits::collections, "tick data collections", nxError_LimitCollections,
     "tick data collections made"},
    {"openOrders", &Limits::openOrders, "open orders", nxError_LimitOpenOrders,
     "orders made that are not over"},
    {"orders", &Limits::orders, "orders", nxError_LimitOrders, "orders made"},
    {"subscriptions", &Limits::subscriptions, "subscriptions", nxError_LimitSubscriptions,
     "subscriptions to events of products"},
    {"products", &Limits::products, "products", nxError_LimitProducts, "names of products asked for"},
    {"outputs", &Limits::outputs, "outputs", nxError_LimitOutputs,
     "names of output parameters and published values"},
    {"chartLines", &Limits::chartLines, "chart lines", nxError_LimitChartLines, "chart lines shown"},
    {"logLine", &Limits::logLine, "bytes of a log line", nxError_LimitLogLine,
     "bytes of one text to the log or the user"},
    {"log", &Limits::log, "bytes of log", nxError_LimitLog, "bytes of all such texts"},
    {"pattern", &Limits::pattern, "bytes of a pattern", nxError_LimitPattern,
     "bytes of a pattern to match by"},
    {"subject", &Limits::subject, "bytes of a text to match", nxError_LimitSubject,
     "bytes of a text to match"},
    {"shutdownMemory", &Limits::shutdownMemory, "bytes of memory for OnShutdown", nxError_LimitMemory,
     "bytes beyond the memory that OnShutdown may take"},
    {"shutdownInstructions", &Limits::shutdownInstructions, "instructions of OnShutdown",
     nxError_LimitInstructions, "instructions of OnShutdown, in place of those of a callback"},
}};

const nxScriptLimitRow& nxGetRow(nxScriptLimit which)
{
    return nxScriptLimitRows[static_cast<std::size_t>(which)];
}

std::string nxGetBreachText(nxScriptLimit which, nxScriptLimits::Amount value)
{
    const nxScriptLimitRow& row = nxGetRow(which);
    const bool isMemory = row.error == nxError_LimitMemory;
    return "limit of " + std::to_string(value) + " " + row.unit + " exceeded" +
           (isMemory ? ": not enough memory" : "");
}

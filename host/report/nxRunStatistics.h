#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "host/jobs/nxScriptSource.h"

// The callbacks that the reference host delivers, in the order of the report.
enum class nxCallback { OnInit, OnPrice, OnMarketDepth, OnProductState, OnTimer, OnShutdown, Count };

inline constexpr std::array<const char*, static_cast<std::size_t>(nxCallback::Count)> nxCallbackNames = {
    "OnInit", "OnPrice", "OnMarketDepth", "OnProductState", "OnTimer", "OnShutdown"};

// What a run counted. Everything but the times is a function of script, data, options and seed.
struct nxRunStatistics
{
    struct Callback
    {
        bool defined = false;  // by the script
        unsigned long long count = 0;
        unsigned long long failures = 0;
        long long nanoseconds = 0;
    };
    // One way in which the script failed; the same text again only counts.
    struct Failure
    {
        nxScriptSource::Failure what;
        std::optional<nxCallback> callback;  // none: while the script was loaded
        std::optional<long long> firstTime;  // recorded, in nanoseconds since 1970; none in data without rows
        unsigned long long count;
    };

    unsigned long long quotes = 0;
    unsigned long long trades = 0;
    unsigned long long depthChanges = 0;
    unsigned long long depthRows = 0;
    unsigned long long bars = 0;
    unsigned long long timers = 0;
    long long firstTime = 0;
    long long lastTime = 0;
    std::array<Callback, nxCallbackNames.size()> callbacks;
    std::vector<Failure> failures;
    std::vector<std::string> remarks;  // what a person should know of the data
    std::string nothingDelivered;      // why no event reached the script; empty when one did
    long long wallNanoseconds = 0;

    Callback& operator[](nxCallback callback) { return callbacks[static_cast<std::size_t>(callback)]; }
    const Callback& operator[](nxCallback callback) const
    {
        return callbacks[static_cast<std::size_t>(callback)];
    }
    unsigned long long GetEventCount() const { return quotes + trades + depthChanges + bars + timers; }
    unsigned long long GetDeliveredCount() const
    {
        return (*this)[nxCallback::OnPrice].count + (*this)[nxCallback::OnMarketDepth].count +
               (*this)[nxCallback::OnProductState].count + (*this)[nxCallback::OnTimer].count;
    }
};

#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "host/accounts/nxTradingStatistics.h"
#include "host/report/nxScriptFailure.h"
#include "scriptFramework/job/nxCallback.h"

// What one job of a run counted. Everything but the times is a function of scripts, data, options and seed.
struct nxJobStatistics
{
    struct Callback
    {
        bool defined = false;  // by the script
        unsigned long long count = 0;
        unsigned long long failures = 0;
        unsigned long long timed = 0;  // calls whose time was taken: two looks at the clock cost as much as
                                       // a twentieth of a small callback
        long long nanoseconds = 0;     // of these calls

        // The first calls, then one in 61, which keeps time with no round number of a script.
        bool IsToBeTimed() const { return count < 64 || count % 61 == 0; }
        double GetMeanNanoseconds() const
        {
            return timed == 0 ? 0.0 : static_cast<double>(nanoseconds) / static_cast<double>(timed);
        }
    };
    // One way in which the script failed; the same text again only counts.
    struct Failure
    {
        nxScriptFailure what;
        std::optional<nxCallback> callback;  // none: while the script was loaded
        std::optional<long long> firstTime;  // recorded, in nanoseconds since 1970; none in data without rows
        unsigned long long count;
    };

    std::string name;
    std::string end;  // why it ended
    std::array<Callback, nxCallbackNames.size()> callbacks;
    std::vector<Failure> failures;
    nxTradingStatistics trading;
    std::vector<std::string> exits;  // of the positions that were to be closed on exit
    std::vector<std::string> notes;  // what a person should hear that went silently wrong
    std::string nothingDelivered;    // why no event reached the script; empty when one did

    Callback& operator[](nxCallback callback) { return callbacks[static_cast<std::size_t>(callback)]; }
    const Callback& operator[](nxCallback callback) const
    {
        return callbacks[static_cast<std::size_t>(callback)];
    }
    // Null when the same was known already, or when there are too many to keep one more: a script whose every
    // message differs would otherwise grow the list without end.
    const Failure* AddFailure(nxScriptFailure what, std::optional<nxCallback> callback,
                              std::optional<long long> time)
    {
        constexpr std::size_t mostKept = 100;
        for (Failure& known : failures) {
            if (known.callback != callback || known.what.message != what.message) continue;
            ++known.count;
            return nullptr;
        }
        if (failures.size() >= mostKept) return nullptr;
        return &failures.emplace_back(Failure{std::move(what), callback, time, 1});
    }
    bool IsAnyDelivered() const
    {
        for (std::size_t i = 0; i < callbacks.size(); ++i) {
            const auto callback = static_cast<nxCallback>(i);
            const bool isEvent = callback != nxCallback::OnInit && callback != nxCallback::OnShutdown;
            if (isEvent && callbacks[i].count != 0) return true;
        }
        return false;
    }
};

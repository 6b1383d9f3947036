#pragma once

#include <map>
#include <optional>
#include <string>

#include "host/feed/nxFeedEvent.h"
#include "host/report/nxProfile.h"
#include "scriptFramework/job/nxAlgoJobObject.h"

class nxScriptSource;

// Follows the calls of one job, for its profile. Used on the run's thread; outlives the job.
class nxJobProfiler
{
public:
    // What the run does just now.
    struct Moment
    {
        const char* kind = nullptr;  // of a row; null: something else was due
        unsigned int product = 0;
        long long time = 0;
    };
    // instructions: between samples; 0: none are taken. The moment outlives it.
    nxJobProfiler(unsigned int instructions, bool looksAtMemory, const Moment& moment);

    // Null: none is wanted.
    nxScriptSampler* GetSampler() { return _sampler ? &*_sampler : nullptr; }
    void Begin(const char* call);
    void End(nxAlgoJobObject& object);
    // The job's callbacks are over, but for OnShutdown.
    void EndMemory(nxAlgoJobObject& object);
    // What came of it. tell(moment) names what led to a call.
    template <class Tell>
    nxProfile::Job Make(const std::string& name, const nxScriptSource& source, Tell tell)
    {
        for (const auto& [call, longest] : _longest) {
            _callbacks[call].longestEvent = tell(longest);
            if (longest.time != 0) _callbacks[call].longestTime = longest.time;
        }
        return _Make(name, source);
    }

private:
    nxProfile::Job _Make(const std::string& name, const nxScriptSource& source);
    void _LookAtMemory(nxAlgoJobObject& object);
    void _Compare(nxProfile::Job& job) const;

    std::optional<nxScriptSampler> _sampler;
    const bool _looksAtMemory;
    const Moment& _moment;
    std::vector<const char*> _running;
    std::map<std::string, nxProfile::Callback, std::less<>> _callbacks;
    std::map<std::string, Moment, std::less<>> _longest;
    unsigned long long _calls = 0, _nextLook;
    std::vector<nxProfile::Heap> _heaps;
    std::string _failure;
};

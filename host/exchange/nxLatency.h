#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "base/time/nxTime.h"
#include "base/values/nxExactRandom.h"

// A time in nanoseconds that a message takes: constant, drawn evenly from a range, or as it was recorded.
struct nxLatency
{
    struct Sample
    {
        long long time;  // from when on messages take that
        long long duration;
    };
    using Samples = std::vector<Sample>;

    long long least = 0;  // also of samples
    long long most = 0;
    std::shared_ptr<const Samples> samples = nullptr;  // by time, at least one; null: there are none
    long long factor = 1, divisor = 1;                 // of the samples

    // Of a message that is sent now.
    long long Draw(nxExactRandom& random, long long now) const
    {
        if (most <= least) return least;
        if (samples != nullptr) return factor * _FindSample(now) / divisor;
        return least +
               static_cast<long long>(random.GetBelow(static_cast<unsigned long long>(most - least) + 1));
    }
    // When a message arrives that is sent now.
    long long GetArrival(nxExactRandom& random, long long now) const
    {
        return nxTime::GetLater(now, Draw(random, now));
    }
    nxLatency GetTwice() const { return {2 * least, 2 * most, samples, 2 * factor, divisor}; }
    nxLatency GetHalf() const { return {least / 2, most / 2, samples, factor, 2 * divisor}; }
    // By time, at least one.
    void SetSamples(Samples&& recorded);
    // One duration, or two with ".." or "-" between them, the first of which may leave its unit to the
    // second. False, and left alone, for another text.
    [[nodiscard]] bool SetFromText(const std::string& text);

    // A number with the unit s, ms, us or ns, such as "250us" or "1.5ms", up to an hour; bareUnit is that of
    // a number without one, empty where it needs one. False, and left alone, for another text.
    [[nodiscard]] static bool ReadDuration(std::string_view text, std::string_view bareUnit,
                                           long long& nanoseconds);

private:
    long long _FindSample(long long now) const;
};

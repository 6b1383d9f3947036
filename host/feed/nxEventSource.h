#pragma once

#include <string_view>

#include "host/feed/nxFeedEvent.h"
#include "host/feed/nxFeedProductTable.h"

// Where the market events of a run come from, in the order of their times: recorded files, or the world
// outside. Used on the run's thread.
class nxEventSource
{
public:
    enum class Step { Event, Deadline, Wait, End };

    // Gives the next event if it comes before its deadline; what is due at the time of an event comes first.
    // Bars have a deadline of their own, since what ends at a time ends after the bars of that time. The
    // event is good until the next call. Wait: what comes next is not known yet. End: there are no more, or
    // the source has failed.
    [[nodiscard]] virtual Step Next(long long deadline, long long deadlineOfBars,
                                    const nxFeedEvent*& event) = 0;
    // After Next has answered Deadline: no event comes before this time, as far as is known.
    virtual long long GetHorizon() const = 0;
    // The products in the order they were met, those with known terms first.
    virtual const nxFeedProductTable& GetProducts() const = 0;
    // A price that a product is going to have beside those of its data, for the tick size.
    virtual void NotePrice(std::string_view product, const nxDecimal& price) = 0;

protected:
    ~nxEventSource() = default;
};

#pragma once

#include <set>
#include <string>

#include "host/market/nxMarkets.h"
#include "host/run/nxRunClock.h"
#include "host/run/nxRunState.h"
#include "host/run/nxSchedule.h"
#include "host/run/nxTrading.h"

// The adjustments that a run was given, each at its recorded time. Used on the run's thread.
class nxAdjustmentSchedule
{
public:
    // All outlive it.
    nxAdjustmentSchedule(nxRunState& state, const nxRunClock& clock, nxMarkets& markets, nxTrading& trading,
                         nxSchedule& schedule);

    // The first of them waits for its time.
    void Begin() { _Reschedule(); }
    // At the end of the run: what of them met nobody.
    void NoteUnmet();

private:
    void _Apply();
    void _Reschedule();

    nxRunState& _state;
    const nxRunClock& _clock;
    nxMarkets& _markets;
    nxTrading& _trading;
    nxSchedule& _schedule;
    std::size_t _next = 0;
    std::set<std::string> _unknown;  // products at the time of their adjustments
};

#pragma once

#include "host/market/nxMarkets.h"
#include "host/run/nxJobList.h"
#include "host/run/nxTrading.h"

// What a person should hear of a run that went through and yet did not do what was meant, each with its cure:
// into the remarks of the run's statistics and the notes of its jobs'. At the end of the run, before the jobs
// close.
void nxNoteWhatIsMissing(nxRunState& state, nxJobList& jobs, const nxTrading& trading,
                         const nxFeedProductTable& products);
// Parameters that were given and that no script has read: into the notes of the run. At the end of the run.
void nxNoteUnreadParameters(nxRunState& state, nxJobList& jobs);
// Orders of which neither requests nor answers nor the market took any time: into the notes of the run. Once
// the jobs' orders have been counted.
void nxNoteNoLatency(nxRunState& state);

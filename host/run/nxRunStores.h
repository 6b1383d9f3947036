#pragma once

#include <optional>
#include <string>

#include "host/jobs/nxDataStores.h"
#include "host/jobs/nxStoreServices.h"
#include "host/run/nxRunClock.h"
#include "host/run/nxRunOutput.h"
#include "host/run/nxRunState.h"
#include "host/run/nxSchedule.h"

// The data stores of a run and when they are saved. Used on the run's thread.
class nxRunStores : public nxStoreServices
{
public:
    // All outlive it.
    nxRunStores(nxRunState& state, const nxRunClock& clock, nxRunOutput& output, nxSchedule& schedule);

    // Null, or why the directory cannot be used.
    [[nodiscard]] std::optional<std::string> Open();
    // The run begins at this recorded time; the times to save are counted from it.
    void Begin();
    // On the way a failure is logged, since a later save may make up for it.
    void Save();
    // The last save, whose failure fails the run.
    void Finish();
    // Something is about to happen at that time. Over a time in which nothing does, nothing is saved.
    void NoteActivity(long long time)
    {
        if (_isWaiting) [[unlikely]]
            _Arm(time);
    }

    nxAlgoDataStoreObject* GetDataStore(nxLaunchedJob& job, const std::string& name, bool create) override;

private:
    void _Arm(long long time);

    nxRunState& _state;
    const nxRunClock& _clock;
    nxRunOutput& _output;
    nxSchedule& _schedule;
    nxDataStores _stores;
    bool _isWaiting = false;  // all is saved, and the next save waits for something to happen
    long long _interval = 0;  // in nanoseconds
    long long _saved = 0;     // when the latest save was due
    std::string _failure;     // of one that could not be read
};

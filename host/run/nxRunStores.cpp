#include "host/run/nxRunStores.h"

#include <algorithm>

#include "base/log/nxLogMessage.h"
#include "host/jobs/nxLaunchedJob.h"

nxRunStores::nxRunStores(nxRunState& state, const nxRunClock& clock, nxRunOutput& output,
                         nxSchedule& schedule)
    : _state(state), _clock(clock), _output(output), _schedule(schedule)
{
    _schedule.SetTask(nxDue::Save, [this] {
        Save();
        _saved = _schedule.Get(nxDue::Save);
        _schedule.Set(nxDue::Save, nxTime::Never);
        _isWaiting = true;
    });
}

std::optional<std::string> nxRunStores::Open()
{
    if (_state.options.storeDirectory.empty()) return std::nullopt;
    const nxRunOptions& options = _state.options;
    return options.storeImage ? _stores.OpenImage(*options.storeImage) : _stores.Open(options.storeDirectory);
}

void nxRunStores::Begin()
{
    if (_state.options.storeEvery <= 0.0 || !_stores.IsOpen() || !_state.hasTime) return;
    constexpr double longest = 1e9;
    const double seconds = std::clamp(_state.options.storeEvery, 1.0 / nxTime::NanosecondsPerSecond, longest);
    _interval = static_cast<long long>(seconds * nxTime::NanosecondsPerSecond);
    _schedule.Set(nxDue::Save, nxTime::GetLater(_clock.Get(), _interval));
}

// At the first multiple of the interval after that time.
void nxRunStores::_Arm(long long time)
{
    _isWaiting = false;
    // Modulo 2^64, where the distance of any two times fits.
    const unsigned long long since =
        static_cast<unsigned long long>(time) - static_cast<unsigned long long>(_saved);
    const auto over = static_cast<long long>(since % static_cast<unsigned long long>(_interval));
    _schedule.Set(nxDue::Save, nxTime::GetLater(time, _interval - over));
}

void nxRunStores::Save()
{
    const std::optional<std::string> failure = _stores.IsOpen() ? _stores.Save() : std::nullopt;
    if (failure) nxLogMessage(nxLogLevel::Error, *failure);
}

void nxRunStores::Finish()
{
    const std::optional<std::string> failure = _stores.IsOpen() ? _stores.Save() : std::nullopt;
    for (const std::string& text : {_failure, failure.value_or("")}) {
        if (text.empty()) continue;
        _output.Complain(text);
        _state.NoteScriptFailure();
    }
}

nxAlgoDataStoreObject* nxRunStores::GetDataStore(nxLaunchedJob& job, const std::string& name, bool create)
{
    if (!_stores.IsOpen()) {
        // Only who looks whether there is one may go on without.
        nxLogMessage(create ? nxLogLevel::Error : nxLogLevel::Info, job.GetLogPrefix(),
                     "getDataStore. no store ", name,
                     ": the server was given no directory for data stores (--store)");
        return nullptr;
    }
    std::string failure;
    nxAlgoDataStoreObject* const store = _stores.Get(name, create, failure);
    if (!failure.empty()) {
        nxLogMessage(nxLogLevel::Error, job.GetLogPrefix(), failure);
        _failure = failure;
    }
    return store;
}

#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/run/nxCallWatch.h"
#include "host/run/nxJobRunner.h"
#include "host/run/nxRunOutput.h"
#include "host/run/nxSettler.h"

// The jobs of a run in their order, and the way into their scripts: what a call cost, that it failed, and
// what it left to do. Used on the run's thread.
class nxJobList
{
public:
    // All outlive it.
    nxJobList(nxRunState& state, const nxRunClock& clock, nxRunOutput& output, nxCallWatch& watch)
        : _state(state), _clock(clock), _output(output), _watch(watch)
    {
    }

    // One for each job of the options, in their order. The settler outlives the list.
    void Make(const nxHostServices& services, std::vector<nxScriptSource> sources, nxSettler& settler);
    // The scripts end, one after the other, while all jobs are still there for their finalizers.
    void Close();

    std::size_t GetCount() const { return _runners.size(); }
    nxJobRunner& Get(std::size_t index) { return *_runners[index]; }
    nxJobRunner& Get(const nxLaunchedJob& job) { return *_runners[job.GetIndex()]; }
    auto begin() const { return _runners.begin(); }
    auto end() const { return _runners.end(); }

    // Calls the script, and has done what it left to do.
    template <class Entry, class... Arguments>
    void Call(nxCallback callback, nxJobRunner& runner, Entry entry, Arguments&... arguments)
    {
        _watch.Enter({runner.GetJob().GetIndex(), nxRunCall::Part::Callback, callback});
        const bool succeeded = runner.Call(callback, entry, arguments...);
        _watch.Leave();
        if (!succeeded) [[unlikely]]
            NoteFailure(runner, callback);
        if (_isUnsettled) [[unlikely]]
            Settle(runner);
    }
    // The same for an event, which a job that has ended does not get.
    template <class Entry, class... Arguments>
    void Deliver(nxCallback callback, nxJobRunner& runner, Entry entry, Arguments&... arguments)
    {
        if (!runner.IsOver()) Call(callback, runner, entry, arguments...);
    }
    // Loads the script, and runs its OnInit. Both false on a failure, of which the job object knows the text.
    [[nodiscard]] bool Load(nxJobRunner& runner);
    [[nodiscard]] bool Start(nxJobRunner& runner);
    // A callback left something to do.
    void NoteUnsettled() { _isUnsettled = true; }
    void Settle(nxJobRunner& runner)
    {
        _isUnsettled = false;
        _settler->Settle(runner);
    }
    nxSettler& GetSettler() { return *_settler; }

    // No callback: while the script was loaded. `message` is told instead of what the script left.
    void NoteFailure(nxJobRunner& runner, std::optional<nxCallback> callback,
                     const std::string& message = {});

private:
    void _NameStop(std::string& message, std::optional<nxCallback> callback) const;

    nxRunState& _state;
    const nxRunClock& _clock;
    nxRunOutput& _output;
    nxCallWatch& _watch;
    nxSettler* _settler = nullptr;
    std::vector<std::unique_ptr<nxJobRunner>> _runners;
    bool _isUnsettled = false;
};

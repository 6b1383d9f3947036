#include "host/run/nxJobList.h"

#include <fmt/format.h>

void nxJobList::Make(const nxHostServices& services, std::vector<nxScriptSource> sources, nxSettler& settler)
{
    _settler = &settler;
    const std::vector<nxJobOptions>& jobs = _state.options.jobs;
    _state.statistics.jobs.resize(jobs.size());
    for (std::size_t i = 0; i < jobs.size(); ++i) {
        nxJobStatistics& statistics = _state.statistics.jobs[i];
        statistics.name = jobs[i].name;
        _runners.push_back(std::make_unique<nxJobRunner>(services, jobs[i], static_cast<unsigned int>(i),
                                                         _state.IsAlone() ? jobs[i].script : jobs[i].name,
                                                         std::move(sources[i]), statistics));
    }
}

void nxJobList::Close()
{
    for (const auto& runner : _runners) {
        _watch.Enter({runner->GetJob().GetIndex(), nxRunCall::Part::Closing});
        runner->GetJob().Close();
        _watch.Leave();
    }
    _runners.clear();
}

bool nxJobList::Load(nxJobRunner& runner)
{
    _watch.Enter({runner.GetJob().GetIndex(), nxRunCall::Part::Loading});
    const bool succeeded = runner.Load(_state.options, _watch.GetScriptPulse());
    _watch.Leave();
    return succeeded;
}

bool nxJobList::Start(nxJobRunner& runner)
{
    _watch.Enter({runner.GetJob().GetIndex(), nxRunCall::Part::Callback, nxCallback::OnInit});
    const bool succeeded = runner.Start();
    _watch.Leave();
    return succeeded;
}

// The library knows only that the host stopped the callback.
void nxJobList::_NameStop(std::string& message, std::optional<nxCallback> callback) const
{
    constexpr std::string_view told = "stopped by the host";
    if (!message.ends_with(told)) return;
    message.resize(message.size() - told.size());
    const char* const name = callback ? nxGetCallbackName(*callback) : "the main part of the script";
    message += _state.IsInterrupted()
                   ? fmt::format("{} did not return when the run was interrupted", name)
                   : fmt::format("{} has run for {:.3g} s", name,
                                 std::chrono::duration<double>(_state.options.callbackLimit).count());
}

void nxJobList::NoteFailure(nxJobRunner& runner, std::optional<nxCallback> callback,
                            const std::string& message)
{
    _state.NoteScriptFailure();
    nxScriptFailure what{message, std::nullopt};
    if (message.empty()) what = runner.GetSource().Explain(runner.GetJob().GetObject().GetErrorText());
    const nxRunOptions& options = _state.options;
    if (options.memoryLimit != 0 && what.message.ends_with("not enough memory"))
        what.message += fmt::format("; the script may hold {:.3g} MiB",
                                    static_cast<double>(options.memoryLimit) / (1 << 20));
    _NameStop(what.message, callback);
    const std::string& name = runner.GetJob().GetName();
    _output.Record(runner.GetJob(), "callbackFailure",
                   {{"callback", callback ? nxGetCallbackName(*callback) : ""},
                    {"text", what.message},
                    {"file", what.location ? what.location->file : ""},
                    {"line", what.location ? what.location->line : 0}});
    // A job that did not start leaves the others alone.
    if (!options.continueOnError && callback && callback != nxCallback::OnInit)
        _state.End(_state.IsAlone() ? "a callback failed" : "a callback of " + name + " failed");

    const auto time = _state.hasTime ? std::optional(_clock.Get()) : std::nullopt;
    if (const auto* failure = runner.GetStatistics().AddFailure(std::move(what), callback, time))
        _output.WriteFailure(*failure, _state.IsAlone() ? std::string() : name);
}

#include "host/run/nxRunOutput.h"

#include <fmt/format.h>

#include <cstdio>
#include <string_view>

#include "host/feed/nxFeedTime.h"
#include "host/jobs/nxLaunchedJob.h"
#include "host/report/nxRunSummary.h"
#include "host/run/nxRunFollower.h"

nxRunOutput::nxRunOutput(nxRunState& state, const nxRunClock& clock, std::ostream& out, std::ostream& err)
    : _state(state),
      _clock(clock),
      _out(out),
      _err(err),
      _progress(state.options.progress == nullptr ? err : *state.options.progress, state.options.showProgress,
                state.options.progressLabel)
{
}

std::optional<std::string> nxRunOutput::OpenRecord()
{
    if (_state.options.recordFile.empty()) return std::nullopt;
    return _record.Open(_state.options.recordFile, _state.options.recordBuffer);
}

void nxRunOutput::LogText(const nxLaunchedJob& job, const std::string& text)
{
    Log(_state.IsAlone() ? text : job.GetLogPrefix() + text);
}

void nxRunOutput::Log(const std::string& text)
{
    constexpr std::size_t toMilliseconds = std::string_view("YYYYMMDD:HH:MM:SS.mmm").size();
    const std::string stamp = _state.hasTime ? nxFeedTime::GetAsString(_clock.Get()) : std::string();
    const std::scoped_lock lock(_mutex);
    _progress.Erase();
    _out << std::string_view(stamp).substr(0, toMilliseconds) << "  " << text << "\n";
    if (_out.fail()) _state.End("the log cannot be written");
}

void nxRunOutput::Record(const nxLaunchedJob& job, const char* type, nxRunRecord::Fields fields)
{
    RecordAt(_clock.Get(), job.GetName(), type, fields);
}

void nxRunOutput::RecordAt(long long time, const std::string& job, const char* type,
                           nxRunRecord::Fields fields)
{
    if (_entries != nullptr) _entries->Take(time, job, type, fields);
    if (_state.options.follower != nullptr) _state.options.follower->OnEntry(job, type, fields);
    // Without memory a line may have been lost: the record goes up to there, as its missing end tells.
    if (!_record.IsOpen() || _state.IsShortOfMemory()) return;
    const auto stamp =
        _state.hasTime ? std::optional(nxFeedTime::GetAsString(time)) : std::optional<std::string>();
    _record.Write(stamp, job, type, fields);
    if (_record.HasFailed()) _state.End("the record cannot be written");
}

void nxRunOutput::Complain(const std::string& text)
{
    const std::scoped_lock lock(_mutex);
    _progress.Erase();
    _err << text << "\n";
}

void nxRunOutput::WriteFailure(const nxJobStatistics::Failure& failure, const std::string& job)
{
    const std::scoped_lock lock(_mutex);
    _progress.Erase();
    _out.flush();
    nxRunSummary::WriteFailure(_err, failure, job);
}

void nxRunOutput::ShowProgress(const nxRecordedEvents& source)
{
    const std::scoped_lock lock(_mutex);
    _progress.Update(_state.statistics.GetEventCount(), source.GetBytesConsumed(), source.GetBytesTotal());
}

void nxRunOutput::EraseProgress()
{
    const std::scoped_lock lock(_mutex);
    _progress.Erase();
}

bool nxRunOutput::Flush()
{
    const std::scoped_lock lock(_mutex);
    return !_out.flush().fail();
}

void nxRunOutput::NoteStall(const nxCallWatch::Stall& stall)
{
    std::string text = fmt::format("{}{} has not returned for {} s",
                                   _state.IsAlone() ? "" : _state.options.jobs[stall.call.job].name + ": ",
                                   stall.call.GetName(), stall.since.count());
    const std::scoped_lock lock(_mutex);
    // A script's own print writes there.
    std::fflush(stdout);
    _out.flush();
    // Only where a stop has not helped there is something left for the person to do.
    if (!_state.IsInterrupted() || !stall.isStopped) return _progress.Show(text);
    text += "; Ctrl-C again to kill";
    _progress.Show(text);
    if (!_hasToldToKill && !_progress.IsEnabled()) _err << text << std::endl;
    _hasToldToKill = true;
}

#include "host/run/nxRunOutput.h"

#include <string_view>

#include "host/feed/nxFeedTime.h"
#include "host/jobs/nxHostJob.h"
#include "host/report/nxRunSummary.h"

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
    return _record.Open(_state.options.recordFile);
}

void nxRunOutput::LogText(const nxHostJob& job, const std::string& text)
{
    Log(_state.IsAlone() ? text : job.GetLogPrefix() + text);
}

void nxRunOutput::Log(const std::string& text)
{
    _progress.Erase();
    constexpr std::size_t toMilliseconds = std::string_view("YYYYMMDD:HH:MM:SS.mmm").size();
    const std::string stamp = _state.hasTime ? nxFeedTime::GetAsString(_clock.Get()) : std::string();
    _out << std::string_view(stamp).substr(0, toMilliseconds) << "  " << text << "\n";
}

void nxRunOutput::Record(const nxHostJob& job, const char* type, nxRunRecord::Fields fields)
{
    if (!_record.IsOpen()) return;
    const auto time =
        _state.hasTime ? std::optional(nxFeedTime::GetAsString(_clock.Get())) : std::optional<std::string>();
    _record.Write(time, job.GetName(), type, fields);
    if (_record.HasFailed()) _state.End("the record cannot be written");
}

void nxRunOutput::Complain(const std::string& text)
{
    _err << text << "\n";
}

void nxRunOutput::WriteFailure(const nxJobStatistics::Failure& failure, const std::string& job)
{
    _progress.Erase();
    _out.flush();
    nxRunSummary::WriteFailure(_err, failure, job);
}

void nxRunOutput::ShowProgress(const nxRecordedEvents& source)
{
    _progress.Update(_state.statistics.GetEventCount(), source.GetBytesConsumed(), source.GetBytesTotal());
}

#include "host/run/nxJobRunner.h"

bool nxJobRunner::Load(std::size_t memoryLimit)
{
    nxAlgoJobObject& object = _job.GetObject();
    object.SetMemoryLimit(memoryLimit);
    object.SetScriptHelper(_source.GetHelper());
    return object.LoadScript(_source.GetText()).IsSuccess();
}

void nxJobRunner::NoteDefinedCallbacks()
{
    for (std::size_t i = 0; i < nxCallbackNames.size(); ++i)
        _statistics.callbacks[i].defined = _job.GetObject().IsFunctionDefined(nxCallbackNames[i]);
}

bool nxJobRunner::Start()
{
    const auto start = std::chrono::steady_clock::now();
    const nxErrorEnum error = _job.Start();
    nxJobStatistics::Callback& counted = _statistics[nxCallback::OnInit];
    counted.count = counted.timed = 1;
    counted.nanoseconds = std::chrono::nanoseconds(std::chrono::steady_clock::now() - start).count();
    return error.IsSuccess();
}

void nxJobRunner::AskEnd(const std::string& reason)
{
    if (_endReason.empty()) _endReason = reason;
}

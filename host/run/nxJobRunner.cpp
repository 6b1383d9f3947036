#include "host/run/nxJobRunner.h"

#include "host/run/nxRunFollower.h"

namespace {

// FNV-1a: the same for the same text on every machine.
unsigned long long GetHash(const std::string& text)
{
    unsigned long long hash = 0xcbf29ce484222325;
    for (const char character : text)
        hash = (hash ^ static_cast<unsigned char>(character)) * 0x100000001b3;
    return hash;
}

}  // namespace

bool nxJobRunner::Load(const nxRunOptions& options, nxScriptPulse* pulse)
{
    nxAlgoJobObject& object = _job.GetObject();
    nxScriptLimits limits = options.limits;
    if (options.memoryLimit != 0) limits.memory = options.memoryLimit;
    object.Isolate(GetHash(_job.GetName()) + options.exchange.seed);
    object.SetProfile(options.profile);
    object.SetLimits(limits);
    object.SetPulse(pulse);
    if (options.follower != nullptr) object.SetDebugger(&options.follower->GetDebugger(_job.GetIndex()));
    object.SetScriptHelper(_source.GetHelper());
    if (_profiler == nullptr) return object.LoadScript(_source.GetText()).IsSuccess();
    object.SetSampler(_profiler->GetSampler());
    _profiler->Begin("(loading)");
    const nxErrorEnum error = object.LoadScript(_source.GetText());
    _profiler->End(object);
    return error.IsSuccess();
}

void nxJobRunner::NoteDefinedCallbacks()
{
    for (std::size_t i = 0; i < nxCallbackNames.size(); ++i)
        _statistics.callbacks[i].defined = _job.GetObject().IsFunctionDefined(nxCallbackNames[i]);
}

bool nxJobRunner::Start()
{
    const auto start = std::chrono::steady_clock::now();
    if (_profiler != nullptr) _profiler->Begin(nxGetCallbackName(nxCallback::OnInit));
    const nxErrorEnum error = _job.Start();
    if (_profiler != nullptr) _profiler->End(_job.GetObject());
    nxJobStatistics::Callback& counted = _statistics[nxCallback::OnInit];
    counted.count = counted.timed = 1;
    counted.nanoseconds = std::chrono::nanoseconds(std::chrono::steady_clock::now() - start).count();
    return error.IsSuccess();
}

void nxJobRunner::AskEnd(const std::string& reason)
{
    if (_endReason.empty()) _endReason = reason;
}

#include "bench/nxBenchJob.h"

#include <cstdio>
#include <cstdlib>

#include "base/log/nxLogManager.h"

nxBenchJob::nxBenchJob(const std::string& script, const nxScriptLimits& limits, nxScriptPulse* pulse)
{
    _object.SetLimits(limits);
    _object.SetPulse(pulse);
    nxLogManager::SetLevel(nxLogLevel::Error);
    _price.SetBidPrice(nxDecimal(10025, 100, 2));
    _price.SetAskPrice(nxDecimal(10050, 100, 2));
    _price.SetBidVolume(5u);
    _price.SetAskVolume(7u);
    _price.SetLastPrice(nxDecimal(10025, 100, 2));
    _price.SetLastVolume(3u);
    if (_object.LoadScript(script).IsSuccess() && _object.StartJob().IsSuccess()) return;
    std::fprintf(stderr, "%s\n", _object.GetErrorText().c_str());
    std::abort();
}

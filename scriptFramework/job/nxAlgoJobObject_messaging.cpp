#include "base/log/nxLogMessage.h"
#include "scriptFramework/job/nxAlgoJobInterface.h"
#include "scriptFramework/job/nxAlgoJobObject.h"

bool nxAlgoJobObject::logText(nxLuaParameters& parameters, nxLuaResults& results)
{
    if (parameters.Count() != 1) return results.Fail("logText requires 1 argument [text]");
    GetJob()->LogText(parameters.Parameter(1).GetString());
    return true;
}

bool nxAlgoJobObject::startTimer(nxLuaParameters& parameters, nxLuaResults& results)
{
    if (parameters.Count() != 2) return results.Fail("startTimer requires 2 arguments");
    const std::string name = parameters.Parameter(1).GetString();
    const unsigned int frequency = parameters.Parameter(2).GetUnsigned();
    if (frequency == 0)
        return results.Fail("stopTimer : " + name + " . Invalid frequency has to be creater than 0");  // sic
    GetJob()->StartTimer(name, frequency);
    return true;
}

bool nxAlgoJobObject::stopTimer(nxLuaParameters& parameters, nxLuaResults& results)
{
    if (parameters.Count() != 1) return results.Fail("stopTimer requires 1 argument");
    GetJob()->StopTimer(parameters.Parameter(1).GetString());
    return true;
}

// Legal from any callback. The mutex is the callback's already.
bool nxAlgoJobObject::shutdown(nxLuaParameters&, nxLuaResults&)
{
    nxLogMessage(nxLogLevel::Info, GetLogPrefix(), "Shutdown job");
    _shutdownRequested = true;
    static_cast<void>(_engine.Stop());
    GetJob()->Shutdown();
    return true;
}

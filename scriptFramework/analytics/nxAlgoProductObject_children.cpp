#include "base/log/nxLogMessage.h"
#include "scriptFramework/analytics/nxAlgoEventWindowObject.h"
#include "scriptFramework/analytics/nxAlgoTickDataCollectionObject.h"
#include "scriptFramework/market/nxAlgoProductObject.h"

bool nxAlgoProductObject::createTradeWindow(nxLuaParameters& parameters, nxLuaResults& results)
{
    if (parameters.Count() < 1 || parameters.Count() > 2)
        return results.Fail("createTradeWindow requires 1 or 2 parameters");
    const double duration = parameters.Parameter(1).GetNumber();
    const double frequency = parameters.Parameter(2).GetNumber();
    nxLogMessage(nxLogLevel::Info, GetLogPrefix(), "Create Trade Window.  Duration : ", duration,
                 " , Frequency : ", frequency);
    if (!results.Adds(nxScriptLimit::Windows) || !results.Charges(sizeof(nxAlgoEventWindowObject)))
        return false;
    nxAlgoEventWindowObject* const window = _CreateEventWindow(duration, frequency);
    _tradeWindows.push_back(window);
    if (window != nullptr) window->SetAccount(results.GetAccount());
    // A null is wrapped as it comes: its functions do nothing and its properties are nil.
    results.AddObject(window);
    return true;
}

void nxAlgoProductObject::_FreeOwned()
{
    for (nxAlgoEventWindowObject* window : _tradeWindows)
        delete window;
    _tradeWindows.clear();
    for (nxAlgoTickDataCollectionObject* collection : _tickDataCollections)
        delete collection;
    _tickDataCollections.clear();
}

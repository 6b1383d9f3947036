#include "host/author/nxScriptNames.h"

#include "host/author/nxAuthorTexts.h"
#include "scriptFramework/analytics/nxAlgoClockObject.h"
#include "scriptFramework/analytics/nxAlgoDataSeriesObject.h"
#include "scriptFramework/analytics/nxAlgoDataStoreObject.h"
#include "scriptFramework/analytics/nxAlgoDateObject.h"
#include "scriptFramework/analytics/nxAlgoEventWindowObject.h"
#include "scriptFramework/analytics/nxAlgoLibraryObject.h"
#include "scriptFramework/analytics/nxAlgoMatrixObject.h"
#include "scriptFramework/analytics/nxAlgoQuantObject.h"
#include "scriptFramework/analytics/nxAlgoTickDataCollectionObject.h"
#include "scriptFramework/job/nxAlgoJobObject.h"
#include "scriptFramework/job/nxQuietJobInterface.h"
#include "scriptFramework/market/nxAlgoMarketDepthObject.h"
#include "scriptFramework/market/nxAlgoPositionObject.h"
#include "scriptFramework/market/nxAlgoPriceObject.h"
#include "scriptFramework/market/nxAlgoPriceTradeVolumesObject.h"
#include "scriptFramework/market/nxAlgoProductObject.h"
#include "scriptFramework/market/nxAlgoStateObject.h"
#include "scriptFramework/orders/nxAlgoOrderCollectionObject.h"
#include "scriptFramework/orders/nxAlgoOrderObject.h"
#include "scriptFramework/orders/nxAlgoOrderStateObject.h"
#include "scriptFramework/orders/nxAlgoOrderUpdateObject.h"
#include "scriptFramework/supervision/nxAlgoVorantJobCollectionObject.h"
#include "scriptFramework/supervision/nxAlgoVorantJobObject.h"

namespace {

template <class T>
std::string Describe()
{
    std::string text = std::string("checker.bound.") + T::className + " = { functions = {";
    for (const auto* row = T::Functions; row->name != nullptr; ++row)
        text += std::string(row->name) + "=true,";
    text += "}, properties = {";
    for (const auto* row = T::Properties; row->name != nullptr; ++row)
        text += std::string(row->name) + (row->setter == nullptr ? "=\"r\"," : "=\"rw\",");
    return text + "} }\n";
}

template <class... T>
std::string DescribeAll()
{
    return (Describe<T>() + ...);
}

// Collects what the probe logs.
class ProbeHost : public nxQuietJobInterface
{
public:
    void LogText(const std::string& text) override { lines += text + "\n"; }

    std::string lines;
};

}  // namespace

std::string nxScriptNamesText()
{
    ProbeHost host;
    {
        nxAlgoJobObject job(&host);
        if (!job.LoadScript(nxAuthorProbeText()).IsSuccess() || !job.StartJob().IsSuccess()) return {};
    }
    return "checker = { bound = {} }\n"
           "environment = { registered = {}, standard = {}, removed = {}, bound = {} }\n" +
           DescribeAll<nxAlgoPositionObject, nxAlgoOrderUpdateObject, nxAlgoOrderObject, nxAlgoPriceObject,
                       nxAlgoMarketDepthObject, nxAlgoJobObject, nxAlgoProductObject,
                       nxAlgoOrderCollectionObject, nxAlgoClockObject, nxAlgoStateObject,
                       nxAlgoOrderStateObject, nxAlgoVorantJobCollectionObject, nxAlgoVorantJobObject,
                       nxAlgoPriceTradeVolumesObject, nxAlgoTickDataCollectionObject, nxAlgoTickDataObject,
                       nxAlgoIndicatorObject, nxAlgoDateObject, nxAlgoEventWindowObject,
                       nxAlgoDataSeriesObject, nxAlgoLibraryObject, nxAlgoMatrixObject, nxAlgoQuantObject,
                       nxAlgoDataStoreObject>() +
           host.lines;
}

#include "base/log/nxLogMessage.h"
#include "scriptFramework/analytics/nxAlgoDataSeriesObject.h"
#include "scriptFramework/analytics/nxAlgoDataStoreObject.h"
#include "scriptFramework/analytics/nxAlgoLibraryObject.h"
#include "scriptFramework/job/nxAlgoJobInterface.h"
#include "scriptFramework/job/nxAlgoJobObject.h"
#include "scriptFramework/lua/nxScriptAccount.h"
#include "scriptFramework/market/nxAlgoProductObject.h"
#include "scriptFramework/orders/nxAlgoOrderCollectionObject.h"
#include "scriptFramework/orders/nxAlgoOrderObject.h"
#include "scriptFramework/supervision/nxAlgoVorantJobCollectionObject.h"

bool nxAlgoJobObject::getProduct(nxLuaParameters& parameters, nxLuaResults& results)
{
    if (parameters.Count() != 1) return results.Fail("getProduct requires 1 argument [productID]");
    const std::string productID = parameters.Parameter(1).GetString();
    if (!results.Keeps(nxScriptLimit::Products, productID, sizeof(nxAlgoProductObject))) return false;
    nxAlgoProductObject* product = GetJob()->GetProduct(productID);
    if (product == nullptr) {
        results.GetAccount()->Drop(nxScriptLimit::Products, productID);
        return results.Fail("getProduct could not find product " + productID);
    }
    results.AddObject(product);
    return true;
}

bool nxAlgoJobObject::getExistingOrder(nxLuaParameters& parameters, nxLuaResults& results)
{
    if (parameters.Count() == 0) return results.Fail("getExistingOrder requires 1 argument [orderID]");
    const unsigned int id = parameters.Parameter(1).GetUnsigned();
    nxLogMessage(nxLogLevel::Info, GetLogPrefix(), "Get Existing Order ID : ", id);
    nxAlgoOrderObject* order = GetJob()->GetOrder(id);
    // An error with an empty text, which is kept: scripts count on it not being nil.
    if (order == nullptr) return false;
    results.AddObject(order);
    return true;
}

// Here and in the next three a null is wrapped as it comes: its functions do nothing and its properties are
// nil.
bool nxAlgoJobObject::getOrders(nxLuaParameters&, nxLuaResults& results)
{
    results.AddObject(GetJob()->GetOrders());
    return true;
}

bool nxAlgoJobObject::getJobOrders(nxLuaParameters&, nxLuaResults& results)
{
    results.AddObject(GetJob()->GetJobOrders());
    return true;
}

bool nxAlgoJobObject::getVorantJobs(nxLuaParameters&, nxLuaResults& results)
{
    results.AddObject(GetJob()->GetVorantJobs());
    return true;
}

bool nxAlgoJobObject::createDataSeries(nxLuaParameters&, nxLuaResults& results)
{
    if (!results.Charges(sizeof(nxAlgoDataSeriesObject))) return false;
    results.AddObject(GetJob()->CreateDataSeries());
    return true;
}

bool nxAlgoJobObject::getDataStore(nxLuaParameters& parameters, nxLuaResults& results)
{
    if (parameters.Count() < 1 || parameters.Count() > 2)
        return results.Fail("getDataStore requires at leastt 1 argument. name, [create]");  // sic
    const std::string name = parameters.Parameter(1).GetString();
    const bool create = parameters.Parameter(2).GetBool();
    if (!results.Keeps(nxScriptLimit::Memory, "getDataStore " + name)) return false;
    nxLogMessage(nxLogLevel::Info, GetLogPrefix(), "getDataStore. name: ", name, ", create: ", create);
    results.AddObjectOrNull(GetJob()->GetDataStore(name, create));
    return true;
}

bool nxAlgoJobObject::calculate(nxLuaParameters& parameters, nxLuaResults& results)
{
    std::vector<double> a;
    if (!parameters.Parameter(1).GetAsDoubleVector(a)) return true;
    a.push_back(10.0);
    a.push_back(11.0);
    std::vector<double> b;
    for (const double element : a)
        b.push_back(2.0 * element);
    results.Add(a);
    results.Add(b);
    return true;
}

bool nxAlgoJobObject::loadLibrary(nxLuaParameters& parameters, nxLuaResults& results)
{
    if (parameters.Count() != 1) return results.Fail("loadLibrary requires 1 argument [libraryname]");
    const std::string name = parameters.Parameter(1).GetString();
    nxAlgoLibraryObject* library = GetJob()->LoadLibrary(name);
    if (library == nullptr) return results.Fail("loadLibrary could not load library " + name);
    results.AddObject(library);
    return true;
}

#include "scriptFramework/job/nxAlgoJobInterface.h"
#include "scriptFramework/job/nxAlgoJobObject.h"
#include "scriptFramework/market/nxAlgoProductObject.h"

bool nxAlgoJobObject::getProduct(nxLuaParameters& parameters, nxLuaResults& results)
{
    if (parameters.Count() != 1) return results.Fail("getProduct requires 1 argument [productID]");
    const std::string productID = parameters.Parameter(1).GetString();
    nxAlgoProductObject* product = GetJob()->GetProduct(productID);
    if (product == nullptr) return results.Fail("getProduct could not find product " + productID);
    results.AddObject(product);
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

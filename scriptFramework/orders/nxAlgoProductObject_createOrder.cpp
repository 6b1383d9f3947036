#include <algorithm>
#include <initializer_list>
#include <string_view>

#include "base/log/nxLogMessage.h"
#include "scriptFramework/lua/nxScriptAccount.h"
#include "scriptFramework/market/nxAlgoProductObject.h"
#include "scriptFramework/orders/nxAlgoOrderObject.h"
#include "scriptFramework/orders/nxNamedValues.h"

namespace {

bool IsOneOf(std::string_view text, std::initializer_list<std::string_view> vocabulary)
{
    return std::ranges::find(vocabulary, text) != vocabulary.end();
}

// What a script asks for, as texts of a closed vocabulary; what they mean together is the host's to judge.
struct OrderRequest
{
    std::string side;
    std::string type;
    std::string exec;
    std::string time;
    std::string spreadSpec;
    std::string spreadInstance;
    bool hasShow = false;
    bool show = false;

    // createOrder(side, type [, spreadSpec]): the one form that knows "STOP" for a market order with a stop.
    bool ReadPositions(nxLuaParameters& parameters, nxLuaResults& results)
    {
        side = parameters.Parameter(1).GetString();
        const std::string_view kind = parameters.Parameter(2).GetString();
        if (!IsOneOf(kind, {"LIMIT", "MARKET", "STOP"})) return results.Fail("Invalid type in createOrder");
        type = kind == "LIMIT" ? "LIMIT" : "MARKET";
        if (kind == "STOP") exec = "STOP";
        if (parameters.Count() == 3) spreadSpec = parameters.Parameter(3).GetString();
        return true;
    }

    // createOrder{side = ..., type = ..., ...}
    bool ReadTable(const nxLuaParameter& parameter, nxLuaResults& results)
    {
        if (!parameter.IsTable())
            return results.Fail(
                "createOrder : One one argument that has to be a named value collection");  // sic
        const nxNamedValues table(parameter);
        if (!table.Get("side", side)) return results.Fail("createOrder : side not specified");
        if (!table.Get("type", type)) return results.Fail("createOrder : type not specified");
        table.Get("exec", exec);
        table.Get("spreadSpec", spreadSpec);
        table.Get("spreadInstance", spreadInstance);
        table.Get("time", time);
        hasShow = table.Get("show", show);
        return true;
    }

    bool Check(nxLuaResults& results)
    {
        if (!IsOneOf(side, {"BUY", "SELL"}))
            return results.Fail("createOrder : invalid side : [" + side + "] should be BUY or SELL");
        if (!IsOneOf(type, {"MARKET", "LIMIT"}))
            return results.Fail("createOrder : invalid type : [" + type + "] should be MARKET or LIMIT");
        if (!exec.empty() && !IsOneOf(exec, {"IOC", "FOK", "STOP", "ICEBERG", "TRAILING_STOP", "BRACKET"}))
            return results.Fail("createOrder : invalid exec : [" + exec +
                                "] should be IOC, FOK, STOP, ICEBERG, TRAILING_STOP or BRACKET");
        if (time.empty()) time = "GFD";
        if (!IsOneOf(time, {"GFD", "GTD", "GTC", "OPEN", "PREOPEN"}))
            return results.Fail("createOrder : invalid time : [" + time +
                                "] should be GFD, GTC, GTD, OPEN or PREOPEN");
        return true;
    }
};

// Whether the script may have one more order, which lives as long as the script. Until it is over it is open,
// also before it is worked.
bool MayCreate(nxLuaResults& results, const OrderRequest& order)
{
    constexpr std::size_t bytes = 1024;  // of an order at a host, without texts
    nxScriptAccount& account = *results.GetAccount();
    if (account.GetLimits().openOrders != 0) {
        std::erase_if(account.openOrders, [](nxAlgoOrderObject* made) { return made->IsOver(); });
        if (!results.Allows(nxScriptLimit::OpenOrders, account.openOrders.size() + 1)) return false;
    }
    return results.Adds(nxScriptLimit::Orders) &&
           results.Charges(bytes + order.spreadSpec.size() + order.spreadInstance.size());
}

}  // namespace

bool nxAlgoProductObject::createOrder(nxLuaParameters& parameters, nxLuaResults& results)
{
    const unsigned int count = parameters.Count();
    if (count < 1 || count > 3) return results.Fail("createOrder : Invalid number of parameters");
    OrderRequest order;
    if (!(count == 1 ? order.ReadTable(parameters.Parameter(1), results)
                     : order.ReadPositions(parameters, results)))
        return false;
    if (order.hasShow)
        nxLogMessage(nxLogLevel::Info, GetLogPrefix(), "createOrder. show set to ", order.show);
    if (!order.Check(results)) return false;
    if (!_IsStrategy()) {
        order.spreadSpec.clear();
        order.spreadInstance.clear();
    }
    if (!MayCreate(results, order)) return false;
    nxLogMessage(nxLogLevel::Info, GetLogPrefix(), "createOrder. side = ", order.side,
                 " , type = ", order.type, " , exec = ", order.exec, " , time = ", order.time,
                 " , spreadSpec = ", order.spreadSpec, " , spreadInstance = ", order.spreadInstance);
    nxAlgoOrderObject* created =
        _CreateOrder(order.side, order.type, order.exec, order.time, order.spreadSpec, order.spreadInstance);
    if (created == nullptr) {
        results.AddNull();
        return results.Fail("createOrder Failed");
    }
    nxScriptAccount& account = *results.GetAccount();
    if (account.GetLimits().openOrders != 0) account.openOrders.push_back(created);
    if (order.hasShow) created->SetShowOrder(order.show);
    results.AddObject(created);
    return true;
}

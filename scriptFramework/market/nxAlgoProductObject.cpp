#include "scriptFramework/market/nxAlgoProductObject.h"

#include <memory>

#include "api/nxProductCache.h"
#include "base/log/nxLogMessage.h"
#include "base/records/nxProductID.h"
#include "base/records/nxStrategyDefinition.h"
#include "scriptFramework/job/nxAlgoJobInterface.h"

using Self = nxAlgoProductObject;

constexpr nxLuaWrapper<Self>::FunctionType Self::Functions[] = {
    {"createOrder", &Self::createOrder},
    {"subscribe", &Self::subscribe},
    {"subscribePrice", &Self::subscribePrice},
    {"subscribeMarketDepth", &Self::subscribeMarketDepth},
    {"subscribePositions", &Self::subscribePositions},
    {"subscribeState", &Self::subscribeState},
    {"createTradeWindow", &Self::createTradeWindow},
    {"subscribePriceTradeVolumes", &Self::subscribePriceTradeVolumes},
    {"setFlattenOnExit", &Self::setFlattenOnExit},
    {"getLeg", &Self::getLeg},
    {"getLegPriceRatio", &Self::getLegPriceRatio},
    {"getLegTradeRatio", &Self::getLegTradeRatio},
    {"getLegSide", &Self::getLegSide},
    {"createTickDataCollection", &Self::createTickDataCollection},
    {nullptr, nullptr},
};
static_assert(nxIsBoundTable(Self::Functions));

constexpr nxLuaWrapper<Self>::PropertyType Self::Properties[] = {
    {"id", &Self::Get_id, nullptr},
    {"price", &Self::Get_price, nullptr},
    {"depth", &Self::Get_depth, nullptr},
    {"position", &Self::Get_position, nullptr},
    {"tickSize", &Self::Get_tickSize, nullptr},
    {"state", &Self::Get_state, nullptr},
    {"name", &Self::Get_name, nullptr},
    {"pointValue", &Self::Get_pointValue, nullptr},
    {"currency", &Self::Get_currency, nullptr},
    {"priceTradeVolumes", &Self::Get_priceTradeVolumes, nullptr},
    {"ownBestBid", &Self::Get_ownBestBid, nullptr},
    {"ownBestAsk", &Self::Get_ownBestAsk, nullptr},
    {"noLegs", &Self::Get_noLegs, nullptr},
    {"totalPandL", &Self::Get_totalPandL, nullptr},
    {"dayPandL", &Self::Get_dayPandL, nullptr},
    {"priceOffset", &Self::Get_priceOffset, nullptr},
    {nullptr, nullptr, nullptr},
};
static_assert(nxIsBoundTable(Self::Properties));

nxAlgoProductObject::nxAlgoProductObject(nxAlgoJobInterface* job, const nxGenericProductID& productID,
                                         unsigned int id)
    : nxAlgoObject(job),
      _id(id),
      _productID(productID),
      _priceTradeVolumes(job, id),
      _priceObject(job, id),
      _depthObject(job, id),
      _positionObject(job, id),
      _stateObject(job, id)
{
    _tickSize.SetNull();
    _pointValue.SetNull();
}

nxAlgoProductObject::~nxAlgoProductObject()
{
    nxLogMessage(nxLogLevel::Detail, GetLogPrefix(), "Deleting Product ");
    _FreeOwned();  // they look at the product, and go before what they stand on
    Unsubscribe();
    UnsubscribePositions();
    UnsubscribeState();
    UnsubscribePriceTradeVolumes();
}

void nxAlgoProductObject::SetPriceManipulator(const nxPriceManipulator& manipulator)
{
    _priceManipulator = manipulator;
    _depthObject.SetPriceManipulator(_priceManipulator);
}

void nxAlgoProductObject::SetTickSize(const nxDecimal& tickSize)
{
    _tickSize = tickSize;
    _priceTradeVolumes.SetTickSize(tickSize);
}

// A refusal is no error to the script: the subscription stays off, and the next call asks again.
bool nxAlgoProductObject::_SwitchOn(nxLuaResults& results, bool& subscribed, HostCall hostCall)
{
    if (subscribed) return true;
    if (!results.Adds(nxScriptLimit::Subscriptions)) return false;
    subscribed = (GetJob()->*hostCall)(this).IsSuccess();
    return true;
}

void nxAlgoProductObject::_SwitchOff(bool& subscribed, HostCall hostCall)
{
    if (!subscribed) return;
    static_cast<void>((GetJob()->*hostCall)(this));
    subscribed = false;
}

bool nxAlgoProductObject::Unsubscribe()
{
    _SwitchOff(_subscribed, &nxAlgoJobInterface::UnsubscribePrices);
    _SwitchOff(_priceSubscribed, &nxAlgoJobInterface::UnsubscribePrice);
    _SwitchOff(_depthSubscribed, &nxAlgoJobInterface::UnsubscribeMarketDepth);
    return true;
}

bool nxAlgoProductObject::UnsubscribePositions()
{
    _SwitchOff(_positionsSubscribed, &nxAlgoJobInterface::UnsubscribePositions);
    return true;
}

bool nxAlgoProductObject::UnsubscribeState()
{
    _SwitchOff(_stateSubscribed, &nxAlgoJobInterface::UnsubscribeState);
    return true;
}

bool nxAlgoProductObject::UnsubscribePriceTradeVolumes()
{
    _SwitchOff(_tradeVolumesSubscribed, &nxAlgoJobInterface::UnsubscribePriceTradeVolumes);
    return true;
}

bool nxAlgoProductObject::subscribe(nxLuaParameters&, nxLuaResults& results)
{
    if (_subscribed) return true;
    _priceWanted = true;
    _depthWanted = true;
    return _SwitchOn(results, _subscribed, &nxAlgoJobInterface::SubscribePrices);
}

bool nxAlgoProductObject::subscribePrice(nxLuaParameters&, nxLuaResults& results)
{
    if (_priceSubscribed) return true;
    _priceWanted = true;
    return _SwitchOn(results, _priceSubscribed, &nxAlgoJobInterface::SubscribePrice);
}

bool nxAlgoProductObject::subscribeMarketDepth(nxLuaParameters&, nxLuaResults& results)
{
    if (_depthSubscribed) return true;
    _depthWanted = true;
    return _SwitchOn(results, _depthSubscribed, &nxAlgoJobInterface::SubscribeMarketDepth);
}

bool nxAlgoProductObject::subscribePositions(nxLuaParameters&, nxLuaResults& results)
{
    return _SwitchOn(results, _positionsSubscribed, &nxAlgoJobInterface::SubscribePositions);
}

bool nxAlgoProductObject::subscribeState(nxLuaParameters&, nxLuaResults& results)
{
    return _SwitchOn(results, _stateSubscribed, &nxAlgoJobInterface::SubscribeState);
}

bool nxAlgoProductObject::subscribePriceTradeVolumes(nxLuaParameters&, nxLuaResults& results)
{
    return _SwitchOn(results, _tradeVolumesSubscribed, &nxAlgoJobInterface::SubscribePriceTradeVolumes);
}

nxAlgoOrderObject* nxAlgoProductObject::_CreateOrder(const std::string&, const std::string&,
                                                     const std::string&, const std::string&,
                                                     const std::string&, const std::string&)
{
    return nullptr;
}

nxAlgoEventWindowObject* nxAlgoProductObject::_CreateEventWindow(double, double)
{
    return nullptr;
}

nxAlgoTickDataCollectionObject* nxAlgoProductObject::_CreateTickDataCollection(const std::string&,
                                                                               unsigned int,
                                                                               const nxDateTime&,
                                                                               const nxDateTime&)
{
    return nullptr;
}

bool nxAlgoProductObject::setFlattenOnExit(nxLuaParameters& parameters, nxLuaResults& results)
{
    if (parameters.Count() != 1) return results.Fail("setFlattenOnExit requires 1 parameters");
    const bool flatten = parameters.Parameter(1).GetBool();
    nxLogMessage(nxLogLevel::Info, GetLogPrefix(), "setFlattenOnExit = ", flatten ? "true" : "false");
    _SetFlattenOnExit(flatten);
    return true;
}

void nxAlgoProductObject::_WithStrategy(const std::function<void(nxStrategyDefinition&)>& read)
{
    if (!_IsStrategy()) return;
    const std::unique_ptr<nxProductID> productID(_productID.GetAsProductID());
    if (productID == nullptr) return;
    const std::unique_ptr<nxProductDefinition> definition(
        nxProductCache::GetInstance().GetProductDefinition(*productID, true, 0));
    if (auto* strategy = dynamic_cast<nxStrategyDefinition*>(definition.get())) read(*strategy);
}

bool nxAlgoProductObject::_WithLeg(nxLuaParameters& parameters, nxLuaResults& results,
                                   const std::string& function,
                                   const std::function<void(const nxStrategyLeg&)>& read)
{
    if (parameters.Count() != 1) return results.Fail(function + " requires 1 parameter");
    const unsigned int index = parameters.Parameter(1).GetUnsigned();
    if (index == 0) return results.Fail(function + " has 1 based index");
    _WithStrategy([&](nxStrategyDefinition& strategy) {
        if (const nxStrategyLeg* leg = strategy.GetStrategyLeg(index - 1)) read(*leg);
    });
    return true;
}

bool nxAlgoProductObject::getLeg(nxLuaParameters& parameters, nxLuaResults& results)
{
    std::string leg;
    if (!_WithLeg(parameters, results, "getLeg", [&](const nxStrategyLeg& found) {
            if (const nxProductID* productID = found.GetProductID()) leg = productID->GetAsString();
        }))
        return false;
    if (!leg.empty() && !results.Keeps(nxScriptLimit::Products, leg, sizeof(nxAlgoProductObject)))
        return false;
    results.AddObjectOrNull(leg.empty() ? nullptr : GetJob()->GetProduct(leg));
    return true;
}

bool nxAlgoProductObject::getLegPriceRatio(nxLuaParameters& parameters, nxLuaResults& results)
{
    nxDecimal ratio;
    if (!_WithLeg(parameters, results, "getLegPriceRatio",
                  [&](const nxStrategyLeg& leg) { ratio = leg.GetPriceRatio(); }))
        return false;
    results.Add(ratio);
    return true;
}

bool nxAlgoProductObject::getLegTradeRatio(nxLuaParameters& parameters, nxLuaResults& results)
{
    nxDecimal ratio;
    if (!_WithLeg(parameters, results, "getLegTradeRatio",
                  [&](const nxStrategyLeg& leg) { ratio = leg.GetTradeRatio(); }))
        return false;
    results.Add(ratio);
    return true;
}

bool nxAlgoProductObject::getLegSide(nxLuaParameters& parameters, nxLuaResults& results)
{
    const char* side = nullptr;  // pushed as nil
    if (!_WithLeg(parameters, results, "getLegSide", [&](const nxStrategyLeg& leg) {
            side = leg.GetBuySell() == nxBuySell_Buy ? "BUY" : "SELL";
        }))
        return false;
    results.Add(side);
    return true;
}

bool nxAlgoProductObject::Get_id(nxLuaResults& results)
{
    results.Add(_id);
    return true;
}

bool nxAlgoProductObject::Get_price(nxLuaResults& results)
{
    _GetPriceSnapshot(_priceRecord);
    _priceObject.SetSnapshot(&_priceRecord);
    results.AddObject(&_priceObject);
    return true;
}

bool nxAlgoProductObject::Get_depth(nxLuaResults& results)
{
    _GetDepthSnapshot(_depthRecord);
    _depthObject.SetSnapshot(&_depthRecord);
    results.AddObject(&_depthObject);
    return true;
}

bool nxAlgoProductObject::Get_position(nxLuaResults& results)
{
    _positionObject.SetPosition(_position);
    results.AddObject(&_positionObject);
    return true;
}

bool nxAlgoProductObject::Get_tickSize(nxLuaResults& results)
{
    results.Add(_tickSize);
    return true;
}

bool nxAlgoProductObject::Get_state(nxLuaResults& results)
{
    nxProductStateBitMask state;
    _GetState(state);
    _stateObject.SetState(state);
    results.AddObject(&_stateObject);
    return true;
}

bool nxAlgoProductObject::Get_name(nxLuaResults& results)
{
    results.Add(_name);
    return true;
}

bool nxAlgoProductObject::Get_pointValue(nxLuaResults& results)
{
    results.Add(_pointValue.IsValid() ? _pointValue.GetDecimalValue() : nxDecimal());
    return true;
}

bool nxAlgoProductObject::Get_currency(nxLuaResults& results)
{
    results.Add(_pointValue.IsValid() ? _pointValue.GetCurrency().GetAsString().c_str() : nullptr);
    return true;
}

bool nxAlgoProductObject::Get_priceTradeVolumes(nxLuaResults& results)
{
    results.AddObject(&_priceTradeVolumes);
    return true;
}

bool nxAlgoProductObject::Get_ownBestBid(nxLuaResults& results)
{
    results.Add(_GetOwnBestBid());
    return true;
}

bool nxAlgoProductObject::Get_ownBestAsk(nxLuaResults& results)
{
    results.Add(_GetOwnBestAsk());
    return true;
}

bool nxAlgoProductObject::Get_noLegs(nxLuaResults& results)
{
    unsigned int count = 0;
    _WithStrategy([&](const nxStrategyDefinition& strategy) { count = strategy.GetStrategyLegCount(); });
    results.Add(count);
    return true;
}

bool nxAlgoProductObject::Get_totalPandL(nxLuaResults& results)
{
    results.Add(_GetTotalPandL());
    return true;
}

bool nxAlgoProductObject::Get_dayPandL(nxLuaResults& results)
{
    results.Add(_GetDayPandL());
    return true;
}

bool nxAlgoProductObject::Get_priceOffset(nxLuaResults& results)
{
    nxDecimal offset;
    _WithStrategy(
        [&](const nxStrategyDefinition& strategy) { offset = strategy.GetSyntheticStrategyPriceOffset(); });
    results.Add(offset);
    return true;
}

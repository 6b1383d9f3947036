#include "host/jobs/nxHostProduct.h"

#include "host/jobs/nxHostJob.h"
#include "host/jobs/nxHostServices.h"

nxHostProduct::nxHostProduct(nxAlgoJobInterface* job, const nxMarketProduct& market, unsigned int id)
    : nxAlgoProductObject(job, nxGenericProductID(market.GetName()), id),
      _market(market),
      _priceEvent(job, &market.GetPrice(), &market.GetPriceUpdate(), id),
      _depthEvent(job, &market.GetDepth(), id),
      _stateEvent(job, id),
      _positionEvent(job, id)
{
    SetName(market.GetName());
}

nxHostProduct::~nxHostProduct()
{
    Unsubscribe();
    UnsubscribePositions();
    UnsubscribeState();
    UnsubscribePriceTradeVolumes();
}

nxAlgoStateObject& nxHostProduct::GetStateEvent()
{
    _stateEvent.SetState(_market.GetState());
    return _stateEvent;
}

nxAlgoPositionObject& nxHostProduct::GetPositionEvent()
{
    _positionEvent.SetPosition(_GetPosition());
    return _positionEvent;
}

nxAlgoOrderObject* nxHostProduct::_CreateOrder(const std::string& side, const std::string& type,
                                               const std::string& exec, const std::string& time,
                                               const std::string& spreadSpec, const std::string&)
{
    return GetJob()->CreateOrder(this, side, type, exec, time, spreadSpec);
}

nxHostJob& nxHostProduct::GetOwner() const
{
    return static_cast<nxHostJob&>(*GetJob());  // who makes every product of the host
}

void nxHostProduct::ShowPosition(const nxProductAccount& everybody)
{
    everybody.FillTotal(_GetPosition());
    _account.FillLocal(_GetPosition());
}

void nxHostProduct::_SetFlattenOnExit(bool flatten)
{
    _flattens = flatten;
    nxHostJob& job = GetOwner();
    job.GetServices().Record(job, "flattenOnExit", {{"product", _market.GetName()}, {"value", flatten}});
}

double nxHostProduct::_GetTotalPandL() const
{
    return _account.GetKeeper().GetTotalProfit(GetMark()).GetAsDecimal().GetAsDouble();
}

double nxHostProduct::_GetDayPandL() const
{
    return _account.GetKeeper().GetDayProfit(GetMark()).GetAsDecimal().GetAsDouble();
}

nxDecimal nxHostProduct::_GetOwnBest(bool isBuy) const
{
    nxHostJob& job = GetOwner();
    nxHostServices& services = job.GetServices();
    if (!services.HasExchange()) return {};
    return services.GetExchange()
        .GetBook(services.GetExchangeProduct(*this))
        .GetOwnBest(isBuy, job.GetIndex());
}

void nxHostProduct::Describe(const nxDecimal& tickSize)
{
    const nxPriceManipulator manipulator(tickSize);
    SetTickSize(tickSize);
    SetPriceManipulator(manipulator);
    _depthEvent.SetPriceManipulator(manipulator);
}

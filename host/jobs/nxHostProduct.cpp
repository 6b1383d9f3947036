#include "host/jobs/nxHostProduct.h"

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

void nxHostProduct::Describe(const nxDecimal& tickSize)
{
    const nxPriceManipulator manipulator(tickSize);
    SetTickSize(tickSize);
    SetPriceManipulator(manipulator);
    _depthEvent.SetPriceManipulator(manipulator);
}

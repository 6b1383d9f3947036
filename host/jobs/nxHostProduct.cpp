#include "host/jobs/nxHostProduct.h"

#include <algorithm>

#include "host/exchange/nxVenue.h"
#include "host/jobs/nxBarServices.h"
#include "host/jobs/nxHostDefinitionService.h"
#include "host/jobs/nxHostOrder.h"
#include "host/jobs/nxHostTickDataCollection.h"
#include "host/jobs/nxMarketJob.h"
#include "host/jobs/nxOrderServices.h"
#include "scriptFramework/analytics/nxAlgoEventWindowObject.h"

nxHostProduct::nxHostProduct(nxAlgoJobInterface* job, const nxMarket& market, unsigned int id)
    : nxAlgoProductObject(
          job, nxHostDefinitionService::GetIdentity(market.product.GetName(), market.product.IsStrategy()),
          id),
      _market(market),
      _priceEvent(job, &GetMarket().GetPrice(), &GetMarket().GetPriceUpdate(), id),
      _depthEvent(job, id),
      _stateEvent(job, id),
      _positionEvent(job, id)
{
    SetName(GetMarket().GetName());
    SetExchange(market.description.exchange);
    if (market.description.pointValue.IsValid())
        SetPointValue(nxMoney(market.description.pointValue, market.description.currency));
    TakeTickSize();
}

nxHostProduct::~nxHostProduct()
{
    _FreeOwned();
    Unsubscribe();
    UnsubscribePositions();
    UnsubscribeState();
    UnsubscribePriceTradeVolumes();
}

nxAlgoMarketDepthObject& nxHostProduct::GetDepthEvent()
{
    _depthEvent.SetSnapshot(&GetMarket().GetDepth());
    return _depthEvent;
}

nxAlgoStateObject& nxHostProduct::GetStateEvent()
{
    _stateEvent.SetState(GetMarket().GetState());
    return _stateEvent;
}

nxAlgoPositionObject& nxHostProduct::GetPositionEvent()
{
    _positionEvent.SetPosition(_GetPosition());
    return _positionEvent;
}

nxAlgoOrderObject* nxHostProduct::_CreateOrder(const std::string& side, const std::string& type,
                                               const std::string& exec, const std::string& time,
                                               const std::string& spreadSpec,
                                               const std::string& spreadInstance)
{
    nxAlgoOrderObject* const order = GetJob()->CreateOrder(this, side, type, exec, time, spreadSpec);
    // The job's operation has no place for it.
    static_cast<nxHostOrder&>(*order).SetSpreadInstance(spreadInstance);
    return order;
}

bool nxHostProduct::_KnowsPeriod(const std::string& period) const
{
    return GetOwner().GetServices().bars->FindBarTerms(period) != nullptr;
}

nxAlgoTickDataCollectionObject* nxHostProduct::_CreateTickDataCollection(const std::string& period,
                                                                         unsigned int ticks,
                                                                         const nxDateTime& start,
                                                                         const nxDateTime& end)
{
    nxBarServices& bars = *GetOwner().GetServices().bars;
    nxTickDataPeriodEnum periodEnum;
    static_cast<void>(periodEnum.SetFromString(period));  // undefined under a name of this run
    nxBarOrigin origin = bars.GetBarOrigin(*this);
    const nxBarTerms* const terms = bars.FindBarTerms(period);
    origin.terms = terms == nullptr ? nxBarTerms(periodEnum) : *terms;
    auto collection =
        std::make_unique<nxHostTickDataCollection>(*this, period, periodEnum, ticks, start, end, origin);
    collection->LoadHistory();
    _collections.push_back(collection.get());
    return collection.release();
}

void nxHostProduct::SubscribePrices(nxAlgoTickDataCollectionObject* collection)
{
    GetOwner().NoteSubscribed();
    GetOwner().GetServices().bars->AttachCollection(static_cast<nxHostTickDataCollection&>(*collection));
}

void nxHostProduct::UnsubscribePrices(nxAlgoTickDataCollectionObject* collection)
{
    GetOwner().GetServices().bars->DetachCollection(static_cast<nxHostTickDataCollection&>(*collection));
}

nxAlgoEventWindowObject* nxHostProduct::_CreateEventWindow(double duration, double frequency)
{
    return new nxAlgoEventWindowObject(GetJob(), this, duration, frequency);
}

void nxHostProduct::SubscribePrices(nxAlgoEventWindowObject* window)
{
    _windowPlaces[window] = _windows.size();
    _windows.push_back(window);
    GetOwner().WantTrades(*this, 1);
}

void nxHostProduct::UnsubscribePrices(nxAlgoEventWindowObject* window)
{
    const auto place = _windowPlaces.find(window);
    if (place == _windowPlaces.end()) return;
    _windows[place->second] = nullptr;
    _windowPlaces.erase(place);
    _DropStoppedWindows();
    GetOwner().WantTrades(*this, -1);
}

void nxHostProduct::ForwardTrade()
{
    _isForwarding = true;
    const std::size_t count = _windows.size();
    for (std::size_t i = 0; i < count; ++i)
        if (_windows[i] != nullptr) _windows[i]->OnPrice(GetMarket().GetPriceUpdate());
    _isForwarding = false;
    _DropStoppedWindows();
}

// Once they are half of them, so that stopping one costs constant time, amortised.
void nxHostProduct::_DropStoppedWindows()
{
    if (_isForwarding || _windows.size() < 2 * _windowPlaces.size() + 16) return;
    std::erase(_windows, nullptr);
    for (std::size_t i = 0; i < _windows.size(); ++i)
        _windowPlaces[_windows[i]] = i;
}

nxMarketJob& nxHostProduct::GetOwner() const
{
    return static_cast<nxMarketJob&>(*GetJob());  // who makes every product of the host
}

void nxHostProduct::ShowPosition(const nxProductAccount& everybody)
{
    everybody.FillTotal(_GetPosition());
    _account.FillLocal(_GetPosition());
}

void nxHostProduct::_SetFlattenOnExit(bool flatten)
{
    _flattens = flatten;
    GetOwner().Record("flattenOnExit", {{"product", GetMarket().GetName()}, {"value", flatten}});
}

double nxHostProduct::_GetTotalPandL() const
{
    return _account.GetKeeper().GetTotalProfit(GetMark()).GetAsDecimal().GetAsDouble();
}

double nxHostProduct::_GetDayPandL() const
{
    return _account.GetKeeper().GetDayProfit(GetMark()).GetAsDecimal().GetAsDouble();
}

nxDecimal nxHostProduct::_GetOwnBest(nxSide side) const
{
    const nxMarketJob& job = GetOwner();
    nxOrderServices& orders = *job.GetServices().orders;
    const nxVenue* const venue = orders.GetVenue();
    return venue == nullptr ? nxDecimal()
                            : venue->GetOwnBest(orders.GetVenueProduct(*this), side, job.GetIndex());
}

void nxHostProduct::TakeTickSize()
{
    const nxPriceManipulator manipulator(_market.tickSize);
    SetTickSize(_market.tickSize);
    SetPriceManipulator(manipulator);
    _depthEvent.SetPriceManipulator(manipulator);
}

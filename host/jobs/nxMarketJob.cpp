#include "host/jobs/nxMarketJob.h"

#include "host/jobs/nxBarServices.h"
#include "host/jobs/nxMarketServices.h"
#include "host/jobs/nxTimerServices.h"
#include "scriptFramework/analytics/nxAlgoDataSeriesObject.h"
#include "scriptFramework/analytics/nxAlgoEventWindowObject.h"
#include "scriptFramework/analytics/nxAlgoLibraryObject.h"

nxAlgoProductObject* nxMarketJob::GetProduct(const std::string& productName)
{
    const auto known = _products.find(productName);
    if (known != _products.end()) return known->second.get();
    const nxMarket* const market = GetServices().markets->FindMarket(productName);
    if (market == nullptr) {
        GetServices().markets->NoteUnknownProduct(*this, productName);
        return nullptr;
    }
    const auto id = static_cast<unsigned int>(_products.size() + 1);
    std::unique_ptr<nxHostProduct>& product = _products[productName];
    product = std::make_unique<nxHostProduct>(this, *market, id);
    GetServices().markets->NoteProduct(*product);
    return product.get();
}

nxErrorEnum nxMarketJob::_Want(nxAlgoProductObject* object, std::initializer_list<nxMarketEvent> events,
                               int change)
{
    auto& product = static_cast<nxHostProduct&>(*object);  // every product of the job is one
    for (const nxMarketEvent event : events) {
        if (!product.Want(event, change)) continue;
        _subscribed = true;
        GetServices().markets->NoteSubscription(*this, product, event);
    }
    return {};
}

nxErrorEnum nxMarketJob::SubscribePrices(nxAlgoProductObject* product)
{
    return _Want(product, {nxMarketEvent::Price, nxMarketEvent::Depth}, 1);
}

nxErrorEnum nxMarketJob::UnsubscribePrices(nxAlgoProductObject* product)
{
    return _Want(product, {nxMarketEvent::Price, nxMarketEvent::Depth}, -1);
}

nxErrorEnum nxMarketJob::SubscribePrice(nxAlgoProductObject* product)
{
    return _Want(product, {nxMarketEvent::Price}, 1);
}

nxErrorEnum nxMarketJob::UnsubscribePrice(nxAlgoProductObject* product)
{
    return _Want(product, {nxMarketEvent::Price}, -1);
}

nxErrorEnum nxMarketJob::SubscribeMarketDepth(nxAlgoProductObject* product)
{
    return _Want(product, {nxMarketEvent::Depth}, 1);
}

nxErrorEnum nxMarketJob::UnsubscribeMarketDepth(nxAlgoProductObject* product)
{
    return _Want(product, {nxMarketEvent::Depth}, -1);
}

nxErrorEnum nxMarketJob::SubscribeState(nxAlgoProductObject* product)
{
    return _Want(product, {nxMarketEvent::State}, 1);
}

nxErrorEnum nxMarketJob::UnsubscribeState(nxAlgoProductObject* product)
{
    return _Want(product, {nxMarketEvent::State}, -1);
}

nxErrorEnum nxMarketJob::SubscribePriceTradeVolumes(nxAlgoProductObject* product)
{
    return _Want(product, {nxMarketEvent::TradeVolumes}, 1);
}

nxErrorEnum nxMarketJob::UnsubscribePriceTradeVolumes(nxAlgoProductObject* product)
{
    return _Want(product, {nxMarketEvent::TradeVolumes}, -1);
}

nxErrorEnum nxMarketJob::SubscribePositions(nxAlgoProductObject* product)
{
    return _Want(product, {nxMarketEvent::Position}, 1);
}

nxErrorEnum nxMarketJob::UnsubscribePositions(nxAlgoProductObject* product)
{
    return _Want(product, {nxMarketEvent::Position}, -1);
}

void nxMarketJob::WantTrades(nxHostProduct& product, int change)
{
    static_cast<void>(_Want(&product, {nxMarketEvent::TradeWindow}, change));
}

void nxMarketJob::OnTickData(nxAlgoTickDataObject& tick)
{
    GetServices().bars->DeliverTickData(*this, tick);
}

void nxMarketJob::StartEventWindowTimer(nxAlgoEventWindowObject* window, double seconds)
{
    GetServices().timers->StartTimer(*this, *window, seconds);
}

void nxMarketJob::StopEventWindowTimer(nxAlgoEventWindowObject* window)
{
    GetServices().timers->StopTimer(*this, *window);
}

void nxMarketJob::OnEventWindow(nxAlgoEventWindowObject& window)
{
    GetServices().bars->DeliverWindow(*this, window);
}

nxAlgoDataSeriesObject* nxMarketJob::CreateDataSeries()
{
    auto series = std::make_unique<nxAlgoDataSeriesObject>(this);
    nxAlgoDataSeriesObject* const result = series.get();
    _made.push_back(std::move(series));
    return result;
}

nxAlgoLibraryObject* nxMarketJob::LoadLibrary(const std::string&)
{
    auto library = std::make_unique<nxAlgoLibraryObject>(this);
    nxAlgoLibraryObject* const result = library.get();
    _made.push_back(std::move(library));
    return result;
}
